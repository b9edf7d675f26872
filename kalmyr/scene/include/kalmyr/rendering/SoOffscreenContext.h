#pragma once

#include <kalmyr/base/Export.h>

#include <memory>

/// An OpenGL context of the toolkit's own that needs neither window nor display.
///
/// It may live in one process with contexts of a window system: makeCurrent() remembers what was
/// current in the thread, doneCurrent() brings it back. Calls nest.
class KALMYR_API SoOffscreenContext {
public:
    /// Makes the context; isValid() tells whether that worked. A failure is not posted here.
    SoOffscreenContext();
    ~SoOffscreenContext();
    SoOffscreenContext(const SoOffscreenContext&) = delete;
    SoOffscreenContext& operator=(const SoOffscreenContext&) = delete;

    bool isValid() const;
    /// Why there is no context; empty when there is one.
    const char* getError() const;

    /// False, with nothing changed, when there is no context.
    bool makeCurrent();
    void doneCurrent();

    /// The one context that all offscreen renderers share, made on first use; its buffers serve
    /// them all. A failed attempt is not repeated before finish().
    static SoOffscreenContext& shared();
    /// Destroys the shared context with everything in it.
    static void finish();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
