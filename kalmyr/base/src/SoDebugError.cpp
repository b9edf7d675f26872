#include <kalmyr/base/SoDebugError.h>

#include <utility>

SoDebugError::SoDebugError(Severity severity, const char* source, SbString text)
    : SoError(std::move(text)), m_severity(severity), m_source(source)
{
}

void SoDebugError::send(Severity severity, const char* source, const char* pattern,
                        std::va_list arguments)
{
    const SoDebugError error(severity, source, kalmyr::detail::formatArguments(pattern, arguments));
    error.handle(slot());
}

void SoDebugError::post(const char* source, const char* pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    send(SEV_ERROR, source, pattern, arguments);
    va_end(arguments);
}

void SoDebugError::postWarning(const char* source, const char* pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    send(SEV_WARNING, source, pattern, arguments);
    va_end(arguments);
}

void SoDebugError::postInfo(const char* source, const char* pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    send(SEV_INFO, source, pattern, arguments);
    va_end(arguments);
}

SbString SoDebugError::getPrintedText() const
{
    constexpr const char* kWords[] = {"error", "warning", "info"};
    return SbString("Kalmyr ") + kWords[m_severity] + " in " + m_source + ": " + m_text;
}

kalmyr::detail::ErrorHandlerSlot& SoDebugError::slot()
{
    static kalmyr::detail::ErrorHandlerSlot s_slot(&baseSlot());
    return s_slot;
}

void SoDebugError::setHandlerCallback(SoErrorCB* callback, void* userData)
{
    slot().set(callback, userData);
}

SoErrorCB* SoDebugError::getHandlerCallback()
{
    void* userData = nullptr;
    return slot().get(userData);
}

void* SoDebugError::getHandlerData()
{
    void* userData = nullptr;
    slot().get(userData);
    return userData;
}

const char* SoDebugError::getTypeName() const
{
    return "SoDebugError";
}
