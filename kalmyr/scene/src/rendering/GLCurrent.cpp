#include "rendering/GLCurrent.h"

#include <dlfcn.h>
#include <EGL/egl.h>

namespace kalmyr::detail {

namespace {

/// GLX is asked only when somebody loaded it already: without it no GLX context can be current,
/// and the toolkit itself does not need an X library.
struct Glx {
    void* (*currentContext)() = nullptr;
    void* (*currentDisplay)() = nullptr;
    unsigned long (*currentDrawable)() = nullptr;
    unsigned long (*currentReadDrawable)() = nullptr;
    int (*makeContextCurrent)(void*, unsigned long, unsigned long, void*) = nullptr;
};

template <class Function>
void resolve(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
}

const Glx* glx()
{
    static Glx functions;
    static bool found = false;
    if (found) {
        return &functions;
    }
    void* library = dlopen("libGLX.so.0", RTLD_LAZY | RTLD_NOLOAD);
    if (!library) {
        library = dlopen("libGL.so.1", RTLD_LAZY | RTLD_NOLOAD);
    }
    if (!library) {
        return nullptr;
    }
    resolve(library, "glXGetCurrentContext", functions.currentContext);
    resolve(library, "glXGetCurrentDisplay", functions.currentDisplay);
    resolve(library, "glXGetCurrentDrawable", functions.currentDrawable);
    resolve(library, "glXGetCurrentReadDrawable", functions.currentReadDrawable);
    resolve(library, "glXMakeContextCurrent", functions.makeContextCurrent);
    found = functions.currentContext && functions.currentDisplay && functions.currentDrawable
            && functions.currentReadDrawable && functions.makeContextCurrent;
    return found ? &functions : nullptr;
}

} // namespace

void* currentGLContext()
{
    if (void* context = eglGetCurrentContext()) {
        return context;
    }
    const Glx* functions = glx();
    return functions ? functions->currentContext() : nullptr;
}

void SavedGLContext::saveAndRelease()
{
    *this = {};
    m_eglContext = eglGetCurrentContext();
    if (m_eglContext) {
        m_eglDisplay = eglGetCurrentDisplay();
        m_eglDraw = eglGetCurrentSurface(EGL_DRAW);
        m_eglRead = eglGetCurrentSurface(EGL_READ);
        return;
    }
    const Glx* functions = glx();
    if (!functions || !functions->currentContext()) {
        return;
    }
    m_glxContext = functions->currentContext();
    m_glxDisplay = functions->currentDisplay();
    m_glxDraw = functions->currentDrawable();
    m_glxRead = functions->currentReadDrawable();
    functions->makeContextCurrent(m_glxDisplay, 0, 0, nullptr);
}

void SavedGLContext::restore()
{
    if (m_eglContext) {
        eglMakeCurrent(m_eglDisplay, m_eglDraw, m_eglRead, m_eglContext);
    } else if (m_glxContext) {
        glx()->makeContextCurrent(m_glxDisplay, m_glxDraw, m_glxRead, m_glxContext);
    }
    *this = {};
}

} // namespace kalmyr::detail
