#include "Drawing.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbNumber.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/SoRenderingInit.h>

namespace {

using Format = SoOffscreenRenderer::Format;

struct PictureFormat {
    const char* extension;
    Format format;
    bool hasAlpha; ///< can leave the background transparent
};
constexpr PictureFormat kFormats[] = {
    {"png", Format::PNG, true},     {"jpg", Format::JPEG, false},
    {"jpeg", Format::JPEG, false},  {"bmp", Format::BMP, false},
    {"tif", Format::TIFF, true},    {"tiff", Format::TIFF, true},
    {"rgb", Format::SGI_RGB, true}, {"ps", Format::POSTSCRIPT, false},
};
constexpr float kQuality = 0.9f; // of JPEG

const PictureFormat* formatOf(const std::string& name)
{
    const std::string extension = extensionOf(name);
    for (const PictureFormat& format : kFormats)
        if (extension == format.extension)
            return &format;
    return nullptr;
}

struct Style {
    const char* name;
    SoGLRenderAction::DrawStyle style;
};
constexpr Style kStyles[] = {
    {"as-is", SoGLRenderAction::AS_IS},
    {"no-texture", SoGLRenderAction::NO_TEXTURE},
    {"hidden-line", SoGLRenderAction::HIDDEN_LINE},
    {"wireframe", SoGLRenderAction::WIREFRAME},
    {"points", SoGLRenderAction::POINTS},
    {"boxes", SoGLRenderAction::BOUNDING_BOX},
    {"flat", SoGLRenderAction::FLAT},
};

const Style* styleOf(const std::string& name)
{
    for (const Style& style : kStyles)
        if (name == style.name)
            return &style;
    return nullptr;
}

struct RenderOptions {
    int transparency = -1; ///< the action's own
    SoGLRenderAction::DrawStyle style = SoGLRenderAction::AS_IS;
    int samples = 4;
    bool isTransparent = false;
};

bool render(SoNode* seen, const std::string& name, const DrawOptions& options,
            const RenderOptions& how)
{
    SoOffscreenRenderer renderer(options.region);
    renderer.setBackgroundColor(options.background.value_or(SbColor(0, 0, 0)));
    renderer.setComponents(how.isTransparent ? SoOffscreenRenderer::RGB_TRANSPARENCY
                                             : SoOffscreenRenderer::RGB);
    renderer.setDefaultCamera(true);
    renderer.setNumSamples(how.samples);
    renderer.getGLRenderAction()->setDrawStyle(how.style);
    if (how.transparency >= 0)
        renderer.getGLRenderAction()->setTransparencyType(how.transparency);
    return renderer.renderToFile(seen, name.c_str(), formatOf(name)->format, kQuality);
}

} // namespace

int runRender(const Arguments& given)
{
    Arguments arguments = given;
    DrawOptions options;
    RenderOptions how;
    std::string transparency, samples, style, reason;
    how.isTransparent = takeFlag(arguments, "--transparent-background");
    if (!takeOption(arguments, "--transparency", transparency)
        || !takeOption(arguments, "--samples", samples) || !takeOption(arguments, "--style", style))
        return wrongUsage("an option needs a value");
    if (!takeDrawOptions(arguments, options, reason))
        return wrongUsage(reason);
    constexpr int kMaxTransparency = 13, kMaxSamples = 8;
    if (!transparency.empty()
        && (!SbNumber::toInt(transparency, how.transparency) || how.transparency < 0
            || how.transparency > kMaxTransparency))
        return wrongUsage("--transparency is a number from 0 to 13, not " + transparency);
    if (!samples.empty()
        && (!SbNumber::toInt(samples, how.samples) || how.samples < 1 || how.samples > kMaxSamples))
        return wrongUsage("--samples is a number from 1 to 8, not " + samples);
    if (!style.empty() && !styleOf(style))
        return wrongUsage("--style is as-is, no-texture, hidden-line, wireframe, points, boxes or "
                          "flat, not "
                          + style);
    if (!style.empty())
        how.style = styleOf(style)->style;
    for (const auto& [in, out] : options.files) {
        const PictureFormat* format = formatOf(out);
        if (!format)
            return wrongUsage("the picture's name must end in png, jpg, bmp, tif, rgb or ps");
        if (how.isTransparent && !format->hasAlpha)
            return wrongUsage("only png, tif and rgb pictures can have a transparent background");
    }
    kalmyr::initRendering();
    return drawEach(options, [&](SoNode* seen, const std::string& name) {
        return render(seen, name, options, how);
    });
}
