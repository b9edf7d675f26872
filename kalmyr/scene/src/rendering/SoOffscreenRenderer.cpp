#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include "rendering/RasterWriters.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbFileReplacement.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <epoxy/gl.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

using kalmyr::detail::RasterFormat;
using kalmyr::detail::writeRaster;

namespace {

constexpr int kMaxSamples = 8;
/// Of the buffers that are drawn into; larger pictures are drawn in tiles.
constexpr std::size_t kMaxTargetBytes = std::size_t(256) << 20;
/// Of the rows that are drawn before they are written.
constexpr std::size_t kMaxBandBytes = std::size_t(64) << 20;
/// Tiles begin at multiples of this, with which all patterns fit together.
constexpr int kTileStep = 64;
constexpr int kLargeTile = 2048;
constexpr int kSmallTile = 1024; // with many samples a pixel
/// What is drawn around a tile: outlines look so far for their object.
constexpr int kTileMargin = 64;

/// Makes the shared context current for a scope.
class CurrentContext {
public:
    CurrentContext() : m_ok(SoOffscreenContext::shared().makeCurrent()) {}
    ~CurrentContext()
    {
        if (m_ok) {
            SoOffscreenContext::shared().doneCurrent();
        }
    }
    CurrentContext(const CurrentContext&) = delete;
    CurrentContext& operator=(const CurrentContext&) = delete;
    explicit operator bool() const { return m_ok; }

private:
    bool m_ok;
};

bool postError(const char* what)
{
    SoError::post("offscreen rendering: %s", what);
    return false;
}

} // namespace

/// The framebuffers of one size: one that is drawn into, and one to resolve its samples into.
struct SoOffscreenRenderer::Target {
    int width = 0;
    int height = 0;
    int samples = 0;
    GLuint drawn = 0;
    GLuint resolved = 0;
    GLuint buffers[3] = {};

    bool resize(int newWidth, int newHeight, int wantedSamples);
    void free();
    /// Copies a part, whose rows begin `stride` pixels after each other.
    void read(const SbVec2i32& origin, const SbVec2i32& size, int components, int stride,
              unsigned char* out) const;

private:
    bool attach(GLuint framebuffer, GLuint color, GLuint depth, int bufferSamples) const;
};

bool SoOffscreenRenderer::Target::attach(GLuint framebuffer, GLuint color, GLuint depth,
                                         int bufferSamples) const
{
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, color);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, bufferSamples, GL_RGBA8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color);
    if (depth) {
        glBindRenderbuffer(GL_RENDERBUFFER, depth);
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, bufferSamples, GL_DEPTH_COMPONENT24,
                                         width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
    }
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

bool SoOffscreenRenderer::Target::resize(int newWidth, int newHeight, int wantedSamples)
{
    GLint limit = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &limit);
    const int newSamples =
        std::clamp(wantedSamples, 1, std::min<int>(kMaxSamples, std::max(limit, 1)));
    if (drawn && width == newWidth && height == newHeight && samples == newSamples) {
        glBindFramebuffer(GL_FRAMEBUFFER, drawn);
        return true;
    }
    free();
    width = newWidth;
    height = newHeight;
    samples = newSamples;
    glGenRenderbuffers(3, buffers);
    glGenFramebuffers(1, &drawn);
    bool ok = true;
    if (samples > 1) {
        glGenFramebuffers(1, &resolved);
        ok = attach(resolved, buffers[2], 0, 0);
    }
    return attach(drawn, buffers[0], buffers[1], samples > 1 ? samples : 0) && ok;
}

void SoOffscreenRenderer::Target::free()
{
    for (GLuint* framebuffer : {&drawn, &resolved}) {
        if (*framebuffer) {
            glDeleteFramebuffers(1, framebuffer);
            *framebuffer = 0;
        }
    }
    glDeleteRenderbuffers(3, buffers);
    std::fill(std::begin(buffers), std::end(buffers), 0u);
}

void SoOffscreenRenderer::Target::read(const SbVec2i32& origin, const SbVec2i32& size,
                                       int components, int stride, unsigned char* out) const
{
    if (resolved) {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, drawn);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved);
        glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT,
                          GL_NEAREST);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, resolved);
    }
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, stride);
    glReadPixels(origin[0], origin[1], size[0], size[1], components == 3 ? GL_RGB : GL_RGBA,
                 GL_UNSIGNED_BYTE, out);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

/// One drawing of a scene, in one piece or in rows of tiles. The context is current and the action
/// set up while it lives.
struct SoOffscreenRenderer::Drawing {
    Drawing(SoOffscreenRenderer& renderer, const std::function<void()>& applyAction);
    ~Drawing();
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    /// False, with an error posted, when nothing can be drawn. `maxRows`: of a band
    bool begin(std::size_t maxRows);
    /// The height of bands; the uppermost one may be lower.
    int getBandRows() const { return m_tile[1]; }
    /// Draws the rows from `bottom` on, a multiple of the height of bands.
    bool drawBand(int bottom, unsigned char* out);

    const SbVec2i32 size; ///< of the picture

private:
    void chooseTiles(std::size_t maxRows);

    SoOffscreenRenderer& m_renderer;
    const std::function<void()>& m_apply;
    const CurrentContext m_current;
    SoGLRenderAction& m_action;
    const SbViewportRegion m_region; ///< the action's
    const SbColorRGBA m_background;  ///< the action's
    const SbVec2i32 m_partOrigin;    ///< the action's
    const SbVec2i32 m_partSize;      ///< the action's
    const SbColorRGBA m_clear;
    SbVec2i32 m_tile; ///< of the picture
    int m_margin = 0;
};

SoOffscreenRenderer::Drawing::Drawing(SoOffscreenRenderer& renderer,
                                      const std::function<void()>& applyAction)
    : size(renderer.m_region.getWindowSize()[0], renderer.m_region.getWindowSize()[1]),
      m_renderer(renderer),
      m_apply(applyAction),
      m_action(*renderer.m_action),
      m_region(m_action.getViewportRegion()),
      m_background(m_action.getBackgroundColor()),
      m_partOrigin(m_action.getWindowPartOrigin()),
      m_partSize(m_action.getWindowPartSize()),
      m_clear(renderer.m_backgroundColor, renderer.m_components == RGB ? 1.0f : 0.0f)
{
    m_action.setBackgroundColor(m_clear);
    m_action.setViewportRegion(renderer.m_region);
}

SoOffscreenRenderer::Drawing::~Drawing()
{
    m_action.setWindowPart(m_partOrigin, m_partSize);
    m_action.setViewportRegion(m_region);
    m_action.setBackgroundColor(m_background);
}

void SoOffscreenRenderer::Drawing::chooseTiles(std::size_t maxRows)
{
    GLint limit = 0;
    GLint samples = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &limit);
    glGetIntegerv(GL_MAX_SAMPLES, &samples);
    samples = std::clamp(m_renderer.m_samples, 1, std::min<int>(samples, kMaxSamples));
    const std::size_t bytes = samples > 1 ? 8 * static_cast<std::size_t>(samples) + 4 : 8;
    const int wanted = m_renderer.m_tileSize;
    const std::size_t pixels =
        static_cast<std::size_t>(size[0]) * static_cast<std::size_t>(size[1]);
    m_margin = 0;
    m_tile = size;
    const int largest = std::max(size[0], size[1]);
    if (wanted <= 0 ? pixels * bytes <= kMaxTargetBytes && largest <= limit : largest <= wanted) {
        return;
    }
    int side = wanted > 0 ? wanted : samples > 4 ? kSmallTile : kLargeTile;
    side = std::min<int>(side, limit - 2 * kTileMargin) / kTileStep * kTileStep;
    side = std::max(side, kTileStep);
    const int rows = static_cast<int>(std::min<std::size_t>(maxRows, 1 << 15));
    m_margin = kTileMargin;
    m_tile = SbVec2i32(side, std::clamp(rows / kTileStep * kTileStep, kTileStep, side));
}

bool SoOffscreenRenderer::Drawing::begin(std::size_t maxRows)
{
    const SbVec2s limit = getMaximumResolution();
    if (!m_current) {
        return postError(SoOffscreenContext::shared().getError());
    }
    if (size[0] > limit[0] || size[1] > limit[1]) {
        SoError::post("offscreen rendering: a picture of %d by %d pixels is too large; OpenGL can "
                      "address %d by %d",
                      size[0], size[1], limit[0], limit[1]);
        return false;
    }
    chooseTiles(maxRows);
    return true;
}

bool SoOffscreenRenderer::Drawing::drawBand(int bottom, unsigned char* out)
{
    if (!m_renderer.m_target) {
        m_renderer.m_target = std::make_unique<Target>();
    }
    Target& target = *m_renderer.m_target;
    const int components = m_renderer.m_components;
    const int rows = std::min(m_tile[1], size[1] - bottom);
    const SbVec2i32 whole(m_tile[0] + 2 * m_margin, m_tile[1] + 2 * m_margin);
    for (int left = 0; left < size[0]; left += m_tile[0]) {
        if (!target.resize(whole[0], whole[1], m_renderer.m_samples)) {
            return postError("the picture's buffers cannot be made");
        }
        glClearColor(m_clear[0], m_clear[1], m_clear[2], m_clear[3]);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        m_action.setWindowPart(SbVec2i32(left - m_margin, bottom - m_margin), whole);
        m_apply();
        if (!m_action.hasDrawn()) {
            return false;
        }
        const int columns = std::min(m_tile[0], size[0] - left);
        target.read(SbVec2i32(m_margin, m_margin), SbVec2i32(columns, rows), components, size[0],
                    out + static_cast<std::size_t>(left) * static_cast<std::size_t>(components));
    }
    return true;
}

SoOffscreenRenderer::SoOffscreenRenderer(const SbViewportRegion& region)
    : m_region(region), m_action(nullptr)
{
    setGLRenderAction(nullptr);
}

SoOffscreenRenderer::SoOffscreenRenderer(SoGLRenderAction* action) : m_action(nullptr)
{
    setGLRenderAction(action);
    m_region = m_action->getViewportRegion();
}

SoOffscreenRenderer::~SoOffscreenRenderer()
{
    const CurrentContext current;
    if (m_target && current) {
        m_target->free();
    }
}

void SoOffscreenRenderer::setGLRenderAction(SoGLRenderAction* action)
{
    if (!action && !m_ownAction) {
        m_ownAction = std::make_unique<SoGLRenderAction>(m_region);
    }
    m_action = action ? action : m_ownAction.get();
}

SoGLRenderAction* SoOffscreenRenderer::getGLRenderAction() const
{
    return m_action;
}

void SoOffscreenRenderer::setViewportRegion(const SbViewportRegion& region)
{
    m_region = region;
}

SbVec2s SoOffscreenRenderer::getMaximumResolution()
{
    const CurrentContext current;
    if (!current) {
        return SbVec2s(0, 0);
    }
    GLint viewport[2] = {};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    const auto limit = static_cast<short>(std::min({viewport[0], viewport[1], 32767}));
    return SbVec2s(limit, limit);
}

bool SoOffscreenRenderer::renderScene(const std::function<void()>& apply)
{
    m_buffer.clear();
    Drawing drawing(*this, apply);
    if (!drawing.begin(static_cast<std::size_t>(drawing.size[1]))) {
        return false;
    }
    const std::size_t row = static_cast<std::size_t>(drawing.size[0]) * m_components;
    m_buffer.resize(row * static_cast<std::size_t>(drawing.size[1]));
    m_drawnSize = m_region.getWindowSize();
    for (int bottom = 0; bottom < drawing.size[1]; bottom += drawing.getBandRows()) {
        if (!drawing.drawBand(bottom, &m_buffer[row * static_cast<std::size_t>(bottom)])) {
            m_buffer.clear();
            return false;
        }
    }
    return true;
}

bool SoOffscreenRenderer::render(SoNode* root)
{
    if (!root) {
        m_buffer.clear();
        return postError("there is no scene");
    }
    const SoRef<SoNode> held(root);
    const SoRef<SoNode> seen =
        m_defaultCamera ? kalmyr::withDefaultCamera(root, m_region) : SoRef<SoNode>(root);
    return renderScene([&] { m_action->apply(seen.get()); });
}

bool SoOffscreenRenderer::render(SoPath* path)
{
    if (!path) {
        m_buffer.clear();
        return postError("there is no scene");
    }
    const SoRef<SoPath> held(path);
    return renderScene([&] { m_action->apply(path); });
}

bool SoOffscreenRenderer::renderToFile(SoNode* root, std::FILE* file, Format format, float quality)
{
    using namespace kalmyr::detail;
    static_assert(static_cast<int>(Format::POSTSCRIPT)
                  == static_cast<int>(RasterFormat::POSTSCRIPT));
    const auto kind = static_cast<RasterFormat>(format);
    m_buffer.clear();
    if (!root) {
        return postError("there is no scene");
    }
    if (!file) {
        return failToWrite(kind, nullptr);
    }
    const SoRef<SoNode> held(root);
    const SoRef<SoNode> seen =
        m_defaultCamera ? kalmyr::withDefaultCamera(root, m_region) : SoRef<SoNode>(root);
    const std::function<void()> apply = [&] { m_action->apply(seen.get()); };
    Drawing drawing(*this, apply);
    const std::size_t row = static_cast<std::size_t>(drawing.size[0]) * m_components;
    if (!drawing.begin(kMaxBandBytes / row)) {
        return false;
    }
    errno = 0;
    const auto writer = makeRasterWriter(kind, file, {quality, true});
    const int height = drawing.size[1];
    const int step = drawing.getBandRows();
    const bool isStraight = m_components == RGB_TRANSPARENCY && writer->keepsOpacity();
    std::vector<unsigned char> band(row * static_cast<std::size_t>(std::min(step, height)));
    bool ok = writer->begin(drawing.size[0], height, m_components);
    const int numBands = (height + step - 1) / step;
    for (int i = 0; i < numBands && ok; ++i) {
        const int bottom = (writer->isBottomUp() ? i : numBands - 1 - i) * step;
        const int rows = std::min(step, height - bottom);
        if (!drawing.drawBand(bottom, band.data())) {
            return false;
        }
        if (isStraight) {
            straighten(band.data(), band.size() / RGB_TRANSPARENCY);
        }
        for (int y = 0; y < rows && ok; ++y) {
            const int at = writer->isBottomUp() ? y : rows - 1 - y;
            ok = writer->put(&band[row * static_cast<std::size_t>(at)]);
        }
    }
    return (ok && writer->end() && !std::ferror(file)) || failToWrite(kind, file);
}

bool SoOffscreenRenderer::renderToFile(SoNode* root, const char* fileName, Format format,
                                       float quality)
{
    return kalmyr::holds(fileName, "a file name")
           && SbFileReplacement::write(fileName, [&](std::FILE* file) {
                  return renderToFile(root, file, format, quality);
              });
}

SbImage SoOffscreenRenderer::getImage() const
{
    SbImage image;
    if (!m_buffer.empty()) {
        const int width = m_drawnSize[0];
        const int height = m_drawnSize[1];
        const std::size_t pixels =
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        image.setValue(SbVec2i32(width, height), static_cast<int>(m_buffer.size() / pixels),
                       m_buffer.data());
    }
    return image;
}

/// The buffer holds colours as they lie over the background; files hold those of the things alone.
void SoOffscreenRenderer::straighten(unsigned char* pixels, std::size_t count) const
{
    float behind[3];
    for (int c = 0; c < 3; ++c) {
        behind[c] = 255 * std::clamp(m_backgroundColor[c], 0.0f, 1.0f);
    }
    unsigned char* const end = pixels + count * RGB_TRANSPARENCY;
    for (unsigned char* pixel = pixels; pixel < end; pixel += RGB_TRANSPARENCY) {
        const float alpha = static_cast<float>(pixel[3]) / 255;
        for (int c = 0; c < 3 && pixel[3] != 255; ++c) {
            const float own =
                alpha > 0 ? (static_cast<float>(pixel[c]) - behind[c] * (1 - alpha)) / alpha : 0;
            pixel[c] = static_cast<unsigned char>(std::lround(std::clamp(own, 0.0f, 255.0f)));
        }
    }
}

SbImage SoOffscreenRenderer::getStraightImage() const
{
    SbImage image = getImage();
    if (image.getComponents() == RGB_TRANSPARENCY) {
        straighten(image.edit(), image.getByteCount() / RGB_TRANSPARENCY);
    }
    return image;
}

bool SoOffscreenRenderer::writeToPNG(std::FILE* file) const
{
    return writeRaster(RasterFormat::PNG, file, getStraightImage());
}

bool SoOffscreenRenderer::writeToPNG(const char* fileName) const
{
    return kalmyr::holds(fileName, "a file name")
           && SbFileReplacement::write(fileName,
                                       [this](std::FILE* file) { return writeToPNG(file); });
}

bool SoOffscreenRenderer::writeToJPEG(std::FILE* file, float quality) const
{
    return writeRaster(RasterFormat::JPEG, file, getImage(), {quality, true});
}

bool SoOffscreenRenderer::writeToBMP(std::FILE* file) const
{
    return writeRaster(RasterFormat::BMP, file, getImage());
}

bool SoOffscreenRenderer::writeToTIFF(std::FILE* file, bool compressed) const
{
    return writeRaster(RasterFormat::TIFF, file, getStraightImage(), {0, compressed});
}

bool SoOffscreenRenderer::writeToRGB(std::FILE* file) const
{
    return writeRaster(RasterFormat::RGB, file, getStraightImage());
}

bool SoOffscreenRenderer::writeToPostScript(std::FILE* file) const
{
    return writeRaster(RasterFormat::POSTSCRIPT, file, getImage());
}
