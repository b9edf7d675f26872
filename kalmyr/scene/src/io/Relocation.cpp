#include "Relocation.h"

#include "vrml/LocalUrl.h"

#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoImage.h>
#include <kalmyr/vrml/SoVRMLImageTexture.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <filesystem>

namespace kalmyr::detail {

namespace {

namespace fs = std::filesystem;

/// A percent sign begins an escape in urls.
std::string escaped(const std::string& path)
{
    std::string url;
    for (const char c : path)
        url += c == '%' ? std::string("%25") : std::string(1, c);
    return url;
}

bool isThere(const fs::path& path)
{
    std::error_code ignored;
    return fs::exists(path, ignored);
}

} // namespace

SbString relocated(const SbString& url, const SbString& origin, const SbString& folder)
{
    if (origin.isEmpty() || folder.isEmpty() || url.isEmpty())
        return url;
    const std::string whole = url.toStdString();
    const std::size_t hash = whole.find('#');
    const std::string name = localFileName(SbString(whole.substr(0, hash))).toStdString();
    const fs::path from(origin.toStdString()), to(folder.toStdString());
    if (name.empty() || fs::path(name).is_absolute() || !isThere(from / name) || isThere(to / name))
        return url;
    std::error_code error;
    const fs::path way = fs::relative(from / name, to, error);
    if (error || way.empty())
        return url;
    return SbString(escaped(way.generic_string())
                    + (hash == std::string::npos ? "" : whole.substr(hash)));
}

const SbString* originOf(const SoNode* node, const SoField* field)
{
    if (node->isOfType(SoVRMLInline::getClassTypeId())) {
        const auto* content = static_cast<const SoVRMLInline*>(node);
        return field == &content->url ? &content->getDirectory() : nullptr;
    }
    if (node->isOfType(SoWWWInline::getClassTypeId())) {
        const auto* content = static_cast<const SoWWWInline*>(node);
        return field == &content->name ? &content->getDirectory() : nullptr;
    }
    if (node->isOfType(SoTexture2::getClassTypeId())) {
        const auto* texture = static_cast<const SoTexture2*>(node);
        return field == &texture->filename ? &texture->getDirectory() : nullptr;
    }
    if (node->isOfType(SoImage::getClassTypeId())) {
        const auto* picture = static_cast<const SoImage*>(node);
        return field == &picture->filename ? &picture->getDirectory() : nullptr;
    }
    if (node->isOfType(SoVRMLImageTexture::getClassTypeId())) {
        const auto* texture = static_cast<const SoVRMLImageTexture*>(node);
        return field == &texture->url ? &texture->getDirectory() : nullptr;
    }
    return nullptr;
}

} // namespace kalmyr::detail
