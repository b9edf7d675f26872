#include "Relocation.h"

#include "vrml/LocalUrl.h"

#include <kalmyr/nodes/SoImageBackground.h>
#include <kalmyr/nodes/SoShaderObject.h>
#include <kalmyr/nodes/SoStackTexture.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoImage.h>
#include <kalmyr/vrml/SoVRMLBackground.h>
#include <kalmyr/vrml/SoVRMLImageTexture.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLMovieTexture.h>

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
    const SbString* origin = nullptr;
    const auto find = [&]<class Node>(auto... fields) {
        if (!origin && node->isOfType(Node::getClassTypeId())) {
            const auto* one = static_cast<const Node*>(node);
            origin = ((field == &(one->*fields)) || ...) ? &one->getDirectory() : nullptr;
        }
    };
    find.template operator()<SoVRMLInline>(&SoVRMLInline::url);
    find.template operator()<SoWWWInline>(&SoWWWInline::name);
    find.template operator()<SoTexture2>(&SoTexture2::filename);
    find.template operator()<SoImage>(&SoImage::filename);
    find.template operator()<SoStackTexture>(&SoStackTexture::filenames);
    find.template operator()<SoImageBackground>(&SoImageBackground::filename);
    find.template operator()<SoShaderObject>(&SoShaderObject::filename);
    find.template operator()<SoVRMLImageTexture>(&SoVRMLImageTexture::url);
    find.template operator()<SoVRMLMovieTexture>(&SoVRMLMovieTexture::url);
    find.template operator()<SoVRMLBackground>(
        &SoVRMLBackground::frontUrl, &SoVRMLBackground::backUrl, &SoVRMLBackground::leftUrl,
        &SoVRMLBackground::rightUrl, &SoVRMLBackground::topUrl, &SoVRMLBackground::bottomUrl);
    return origin;
}

} // namespace kalmyr::detail
