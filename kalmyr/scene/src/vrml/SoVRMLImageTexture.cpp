#include <kalmyr/vrml/SoVRMLImageTexture.h>

#include "LocalUrl.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "core/CacheLock.h"

#include <algorithm>

SO_NODE_SOURCE(SoVRMLImageTexture)

SoVRMLImageTexture::SoVRMLImageTexture()
{
    SO_NODE_CONSTRUCTOR(SoVRMLTexture);
    SO_VRML_EXPOSED_EMPTY(url);
}

SoVRMLImageTexture::~SoVRMLImageTexture() = default;

void SoVRMLImageTexture::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLImageTexture, SoVRMLTexture, "VRMLImageTexture");
}

void SoVRMLImageTexture::setDirectory(const SbString& directory)
{
    m_directory = directory;
    m_tried = false;
}

const SbImage& SoVRMLImageTexture::getPicture()
{
    const auto urls = url.values();
    SbString reason;
    if (!load(urls, reason) && !urls.empty())
        SoError::post("texture \"%s\": %s", urls[0].getString(),
                      reason.isEmpty() ? "none of its urls is a local file" : reason.getString());
    return m_loaded;
}

/// False after the first failure with these urls.
bool SoVRMLImageTexture::load(std::span<const SbString> urls, SbString& reason)
{
    const kalmyr::detail::CacheLock lock;
    if (m_tried && std::equal(urls.begin(), urls.end(), m_loadedUrls.begin(), m_loadedUrls.end()))
        return true;
    m_tried = true;
    m_loadedUrls.assign(urls.begin(), urls.end());
    m_loaded.makeNull();
    for (const SbString& one : urls) {
        const SbString name = kalmyr::detail::localFileName(one);
        if (name.isEmpty())
            continue;
        SbString error;
        if (SoImageFile::read(SoImageFile::findFile(name, m_directory), m_loaded, &error))
            return true;
        if (reason.isEmpty())
            reason = error;
    }
    return false;
}

bool SoVRMLImageTexture::findPicture()
{
    const auto urls = url.values();
    const auto isThere = [this](const SbString& one) {
        const SbString name = kalmyr::detail::localFileName(one);
        return !name.isEmpty()
               && SbFileHelper::isAccessible(SoImageFile::findFile(name, m_directory));
    };
    if (urls.empty() || std::any_of(urls.begin(), urls.end(), isThere))
        return true;
    m_tried = true;
    m_loadedUrls.assign(urls.begin(), urls.end());
    m_loaded.makeNull();
    return false;
}

void SoVRMLImageTexture::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoVRMLTexture::copyContents(from, copier);
    setDirectory(static_cast<const SoVRMLImageTexture*>(from)->m_directory);
}
