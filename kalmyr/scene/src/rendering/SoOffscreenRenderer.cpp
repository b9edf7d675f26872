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
#include <cmath>

namespace {

constexpr int kMaxSamples = 8;

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
    void read(int components, std::vector<unsigned char>& out) const;

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

void SoOffscreenRenderer::Target::read(int components, std::vector<unsigned char>& out) const
{
    if (resolved) {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, drawn);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved);
        glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT,
                          GL_NEAREST);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, resolved);
    }
    out.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)
               * static_cast<std::size_t>(components));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, components == 3 ? GL_RGB : GL_RGBA, GL_UNSIGNED_BYTE,
                 out.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
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
    GLint side = 0;
    GLint viewport[2] = {};
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &side);
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    const auto limit = static_cast<short>(std::min({side, viewport[0], viewport[1], 32767}));
    return SbVec2s(limit, limit);
}

bool SoOffscreenRenderer::draw(SoNode* root)
{
    const SoRef<SoNode> held(root);
    m_action->apply(m_defaultCamera ? kalmyr::withDefaultCamera(root, m_region).get() : root);
    return m_action->hasDrawn();
}

bool SoOffscreenRenderer::draw(SoPath* path)
{
    m_action->apply(path);
    return m_action->hasDrawn();
}

template <class Scene>
bool SoOffscreenRenderer::renderScene(Scene* scene)
{
    m_buffer.clear();
    if (!scene) {
        return postError("there is no scene");
    }
    const SbVec2s size = m_region.getWindowSize();
    const SbVec2s limit = getMaximumResolution();
    const CurrentContext current;
    if (!current) {
        return postError(SoOffscreenContext::shared().getError());
    }
    if (size[0] > limit[0] || size[1] > limit[1]) {
        return postError("the picture is too large");
    }
    if (!m_target) {
        m_target = std::make_unique<Target>();
    }
    if (!m_target->resize(size[0], size[1], m_samples)) {
        return postError("the picture's buffers cannot be made");
    }
    const SbColorRGBA clear(m_backgroundColor, m_components == RGB ? 1.0f : 0.0f);
    glClearColor(clear[0], clear[1], clear[2], clear[3]);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    const SbViewportRegion region = m_action->getViewportRegion();
    const SbColorRGBA background = m_action->getBackgroundColor();
    m_action->setBackgroundColor(clear);
    m_action->setViewportRegion(m_region);
    const bool drawn = draw(scene);
    m_action->setViewportRegion(region);
    m_action->setBackgroundColor(background);
    if (drawn) {
        m_target->read(m_components, m_buffer);
    }
    return drawn;
}

bool SoOffscreenRenderer::render(SoNode* root)
{
    return renderScene(root);
}

bool SoOffscreenRenderer::render(SoPath* path)
{
    return renderScene(path);
}

SbImage SoOffscreenRenderer::getImage() const
{
    SbImage image;
    if (!m_buffer.empty() && m_target) {
        image.setValue(SbVec2i32(m_target->width, m_target->height),
                       static_cast<int>(m_buffer.size()) / (m_target->width * m_target->height),
                       m_buffer.data());
    }
    return image;
}

/// The buffer holds colours as they lie over the background; files hold those of the things alone.
SbImage SoOffscreenRenderer::getStraightImage() const
{
    SbImage image = getImage();
    if (image.getComponents() != RGB_TRANSPARENCY) {
        return image;
    }
    float behind[3];
    for (int c = 0; c < 3; ++c) {
        behind[c] = 255 * std::clamp(m_backgroundColor[c], 0.0f, 1.0f);
    }
    unsigned char* pixel = image.edit();
    unsigned char* const end = pixel + image.getByteCount();
    for (; pixel < end; pixel += RGB_TRANSPARENCY) {
        const float alpha = static_cast<float>(pixel[3]) / 255;
        for (int c = 0; c < 3 && pixel[3] != 255; ++c) {
            const float own =
                alpha > 0 ? (static_cast<float>(pixel[c]) - behind[c] * (1 - alpha)) / alpha : 0;
            pixel[c] = static_cast<unsigned char>(std::lround(std::clamp(own, 0.0f, 255.0f)));
        }
    }
    return image;
}

bool SoOffscreenRenderer::writeToPNG(std::FILE* file) const
{
    return kalmyr::detail::writePNG(file, getStraightImage());
}

bool SoOffscreenRenderer::writeToPNG(const char* fileName) const
{
    if (!kalmyr::holds(fileName, "a file name"))
        return false;
    SbFileReplacement file;
    SbString reason;
    if (!file.open(fileName, &reason)) {
        SoError::post("%s: cannot be created: %s", fileName, reason.getString());
        return false;
    }
    if (!writeToPNG(file.getFile())) {
        return false;
    }
    if (!file.commit(&reason)) {
        SoError::post("%s: cannot be written: %s", fileName, reason.getString());
        return false;
    }
    return true;
}

bool SoOffscreenRenderer::writeToJPEG(std::FILE* file, float quality) const
{
    return kalmyr::detail::writeJPEG(file, getImage(), quality);
}

bool SoOffscreenRenderer::writeToBMP(std::FILE* file) const
{
    return kalmyr::detail::writeBMP(file, getImage());
}

bool SoOffscreenRenderer::writeToTIFF(std::FILE* file, bool compressed) const
{
    return kalmyr::detail::writeTIFF(file, getStraightImage(), compressed);
}

bool SoOffscreenRenderer::writeToRGB(std::FILE* file) const
{
    return kalmyr::detail::writeRGB(file, getStraightImage());
}

bool SoOffscreenRenderer::writeToPostScript(std::FILE* file) const
{
    return kalmyr::detail::writePostScript(file, getImage());
}
