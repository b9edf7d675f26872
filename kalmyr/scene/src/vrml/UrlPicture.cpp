#include "UrlPicture.h"

#include "LocalUrl.h"

#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/core/SoNode.h>

#include "core/CacheLock.h"

#include <algorithm>

namespace kalmyr::detail {

const SbImage& UrlPicture::get(std::span<const SbString> urls, const SbString& directory,
                               const SoNode& node)
{
    SbString reason;
    if (!load(urls, directory, reason))
        SoError::post("%s \"%s\": %s: %s", node.getTypeId().getName().getString(),
                      node.getName().getString(), urls[0].getString(), reason.getString());
    return m_image;
}

/// False after the first failure with these urls.
bool UrlPicture::load(std::span<const SbString> urls, const SbString& directory, SbString& reason)
{
    const CacheLock lock;
    if (m_tried && std::equal(urls.begin(), urls.end(), m_urls.begin(), m_urls.end()))
        return true;
    m_tried = true;
    m_urls.assign(urls.begin(), urls.end());
    m_image.makeNull();
    for (const SbString& url : urls) {
        const SbString name = localFileName(url);
        SbString error;
        if (name.isEmpty())
            continue;
        if (SoImageFile::read(SoImageFile::findFile(name, directory), m_image, &error))
            return true;
        if (reason.isEmpty())
            reason = error;
    }
    if (reason.isEmpty())
        reason = "none of the urls is a local file";
    return urls.empty();
}

} // namespace kalmyr::detail
