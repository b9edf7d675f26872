#pragma once

#include <kalmyr/base/SoError.h>

/// A critical error that knows the calls that led to it: the program's own state is no longer what
/// the toolkit relies on (an object released once too often, a state that a node left in disorder).
/// Not for faults of a file, of a user or of a refused call; see SoReadError and SoDebugError.
///
/// Only errors posted here reach this class's handler; plain SoError and SoDebugError posts never
/// do. Calls are recorded while the preference KMR_DEBUG_STACKERROR is true, else the stack is
/// empty.
class KALMYRBASE_API SoErrorStack final : public SoError {
public:
    /// Deeper stacks are cut off.
    static constexpr int kMaxFrames = 128;

    static void post(const char* pattern, ...) KALMYR_PRINTF(1, 2);

    static void setHandlerCallback(SoErrorCB* callback, void* userData = nullptr);
    static SoErrorCB* getHandlerCallback();
    static void* getHandlerData();

    /// One call a line, innermost first: `#N function (file:line)`, or the library where no line is
    /// known.
    const SbString& getStack() const { return m_stack; }
    const char* getTypeName() const override;
    SbString getPrintedText() const override;

    /// The calls of the current thread as such a text, without the `skip` innermost ones.
    static SbString currentStack(int skip = 0);

private:
    static kalmyr::detail::ErrorHandlerSlot& slot();
    SoErrorStack(SbString text, SbString stack);

    SbString m_stack;
};
