#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <cstdarg>

class SoError;

/// Receives an error while it is being posted, in the thread that posted it. The error lives for
/// this call only.
using SoErrorCB = void(const SoError* error, void* userData);

#if defined(__GNUC__)
#define KALMYR_PRINTF(pattern, arguments) __attribute__((format(printf, pattern, arguments)))
#else
#define KALMYR_PRINTF(pattern, arguments)
#endif

namespace kalmyr::detail {

/// Formats as by vprintf.
KALMYRBASE_API SbString formatArguments(const char* pattern, std::va_list arguments);

/// The handler of one error class. Safe in any thread.
class KALMYRBASE_API ErrorHandlerSlot {
public:
    /// A slot without a callback uses its parent's.
    explicit constexpr ErrorHandlerSlot(const ErrorHandlerSlot* parent,
                                        SoErrorCB* fallback = nullptr)
        : m_parent(parent), m_callback(fallback), m_fallback(fallback)
    {
    }
    void set(SoErrorCB* callback, void* userData);
    /// The callback that is in force, with its data; never null.
    SoErrorCB* get(void*& userData) const;

private:
    // Not owned; another class's static.
    const ErrorHandlerSlot* m_parent;
    SoErrorCB* m_callback;
    SoErrorCB* m_fallback;
    void* m_userData = nullptr;
};

} // namespace kalmyr::detail

/// A failed operation, posted to a handler as text.
/// Each error class has its own handler; a class without one uses the handler of its base class.
/// The default handler of SoError prints to the standard error stream.
class KALMYRBASE_API SoError {
public:
    virtual ~SoError() = default;

    /// Posts a failed operation; the pattern is that of printf, without a line end.
    static void post(const char* pattern, ...) KALMYR_PRINTF(1, 2);

    /// Null returns to the default.
    static void setHandlerCallback(SoErrorCB* callback, void* userData = nullptr);
    static SoErrorCB* getHandlerCallback();
    static void* getHandlerData();

    /// The whole text.
    const SbString& getDebugString() const { return m_text; }
    /// The class: "SoError", "SoDebugError" and so on.
    virtual const char* getTypeName() const;
    /// Returns the text that the default handler prints, without the line end.
    virtual SbString getPrintedText() const;

protected:
    explicit SoError(SbString text) : m_text(std::move(text)) {}

    /// Calls the handler in force for a slot with this error. Does not allocate.
    void handle(const kalmyr::detail::ErrorHandlerSlot& slot) const;
    static const kalmyr::detail::ErrorHandlerSlot& baseSlot();
    SbString m_text;
};
