#pragma once

#include "mirabo/extender/MrbExport.h"

namespace mirabo {

/// Marks that code of the tool is on the stack that may call out from there: slots and commands of
/// extensions, sensors of the host, the loops of dialogs. Whoever would destroy the tool asks for
/// open frames first and waits until the outermost is left.
///
/// Every way into the tool opens one: the exported functions, the services, events of its windows
/// (EventFrames), callbacks of the toolkit, calls of extensions, modal loops. Each thread has its
/// own count.
class MRBEXT_API Frame {
public:
    enum class Kind {
        /// Qt or the toolkit calls for an object of the tool, and may touch it afterwards.
        Callback,
        /// A plain call from outside. Once the outermost one is left nothing on the stack belongs
        /// to the tool.
        Call
    };
    using LeftCallback = void (*)(Kind outermost);

    explicit Frame(Kind kind = Kind::Callback);
    ~Frame();
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    static bool isOpen();
    /// Called when the outermost frame of a thread has been left; null: nobody is.
    static void setLeftCallback(LeftCallback callback);

    /// The tool was told to end and waits for its frames: loops end, nothing new begins.
    static bool isEnding();
    static void setEnding(bool on);
};

} // namespace mirabo
