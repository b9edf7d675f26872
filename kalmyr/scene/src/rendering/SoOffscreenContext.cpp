#include <kalmyr/rendering/SoOffscreenContext.h>

#include "rendering/GLCurrent.h"
#include "rendering/GLDevice.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <vector>

struct SoOffscreenContext::Impl {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface surface = EGL_NO_SURFACE; ///< only where contexts cannot be current without one
    const char* error = "";
    std::vector<kalmyr::detail::SavedGLContext> saved; ///< one for each makeCurrent() under way

    bool open(EGLDisplay candidate, EGLint surfaceType);
    void close();
};

namespace {

EGLDisplay surfacelessDisplay()
{
    const auto getDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    return getDisplay ? getDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr)
                      : EGL_NO_DISPLAY;
}

EGLContext createContext(EGLDisplay display, EGLConfig config)
{
    // The version is a minimum: drivers hand out the newest one that is compatible.
    const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION,
                                 3,
                                 EGL_CONTEXT_MINOR_VERSION,
                                 3,
                                 EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                 EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                 EGL_NONE};
    return eglCreateContext(display, config, EGL_NO_CONTEXT, attributes);
}

} // namespace

bool SoOffscreenContext::Impl::open(EGLDisplay candidate, EGLint surfaceType)
{
    EGLint major = 0;
    EGLint minor = 0;
    if (candidate == EGL_NO_DISPLAY || !eglInitialize(candidate, &major, &minor)) {
        error = "no EGL display can be opened";
        return false;
    }
    const EGLenum api = eglQueryAPI();
    const EGLint wanted[] = {EGL_SURFACE_TYPE, surfaceType, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                             EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglBindAPI(EGL_OPENGL_API) || !eglChooseConfig(candidate, wanted, &config, 1, &count)
        || count == 0) {
        error = "EGL offers no OpenGL";
    } else if ((context = createContext(candidate, config)) == EGL_NO_CONTEXT) {
        error = "EGL offers no OpenGL 3.3 core context";
    } else if (surfaceType == EGL_PBUFFER_BIT) {
        const EGLint size[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        surface = eglCreatePbufferSurface(candidate, config, size);
    }
    eglBindAPI(api);
    display = candidate;
    return context != EGL_NO_CONTEXT;
}

void SoOffscreenContext::Impl::close()
{
    // The display stays initialised: it is one object for the whole process, and others may use it.
    if (surface != EGL_NO_SURFACE) {
        eglDestroySurface(display, surface);
    }
    if (context != EGL_NO_CONTEXT) {
        eglDestroyContext(display, context);
    }
}

SoOffscreenContext::SoOffscreenContext() : m_impl(std::make_unique<Impl>())
{
    if (m_impl->open(surfacelessDisplay(), 0)
        || m_impl->open(eglGetDisplay(EGL_DEFAULT_DISPLAY), EGL_PBUFFER_BIT)) {
        m_impl->error = "";
        if (!makeCurrent()) {
            m_impl->error = "the EGL context cannot be made current";
        } else {
            doneCurrent();
        }
    }
}

SoOffscreenContext::~SoOffscreenContext()
{
    if (isValid() && makeCurrent()) {
        kalmyr::detail::GLDevice::releaseCurrent();
        doneCurrent();
    }
    m_impl->close();
}

bool SoOffscreenContext::isValid() const
{
    return m_impl->context != EGL_NO_CONTEXT && !*m_impl->error;
}

const char* SoOffscreenContext::getError() const
{
    return m_impl->error;
}

bool SoOffscreenContext::makeCurrent()
{
    if (!isValid()) {
        return false;
    }
    kalmyr::detail::SavedGLContext saved;
    saved.saveAndRelease();
    eglBindAPI(EGL_OPENGL_API);
    if (!eglMakeCurrent(m_impl->display, m_impl->surface, m_impl->surface, m_impl->context)) {
        saved.restore();
        return false;
    }
    m_impl->saved.push_back(saved);
    return true;
}

void SoOffscreenContext::doneCurrent()
{
    if (m_impl->saved.empty()) {
        return;
    }
    kalmyr::detail::SavedGLContext saved = m_impl->saved.back();
    m_impl->saved.pop_back();
    if (!m_impl->saved.empty() && eglGetCurrentContext() == m_impl->context) {
        return;
    }
    eglMakeCurrent(m_impl->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    saved.restore();
}

namespace {

std::unique_ptr<SoOffscreenContext>& sharedContext()
{
    // Reachable to the end of the process, and not destroyed by it: the driver may be gone by then.
    static auto* const context = new std::unique_ptr<SoOffscreenContext>;
    return *context;
}

} // namespace

SoOffscreenContext& SoOffscreenContext::shared()
{
    auto& context = sharedContext();
    if (!context) {
        context = std::make_unique<SoOffscreenContext>();
    }
    return *context;
}

void SoOffscreenContext::finish()
{
    sharedContext().reset();
}
