#pragma once

namespace kalmyr::detail {

/// Which OpenGL context is current in the thread, whoever made it current; null when none is.
/// Safe to ask in any process, with or without OpenGL libraries at work.
void* currentGLContext();

/// What was current in a thread, of either window-system interface, so that it can be put back.
class SavedGLContext {
public:
    /// Remembers what is current, and makes nothing current where the other interface would refuse
    /// to take over.
    void saveAndRelease();
    void restore();

private:
    // Handles of EGL and GLX as plain words: their headers bring macros along.
    void* m_eglDisplay = nullptr;
    void* m_eglContext = nullptr;
    void* m_eglDraw = nullptr;
    void* m_eglRead = nullptr;
    void* m_glxDisplay = nullptr;
    void* m_glxContext = nullptr;
    unsigned long m_glxDraw = 0;
    unsigned long m_glxRead = 0;
};

} // namespace kalmyr::detail
