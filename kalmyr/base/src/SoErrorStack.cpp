#include <kalmyr/base/SoErrorStack.h>

#include <kalmyr/base/SoPreferences.h>

#include "CallStack.h"

SoErrorStack::SoErrorStack(SbString text, SbString stack)
    : SoError(std::move(text)), m_stack(std::move(stack))
{
}

void SoErrorStack::post(const char* pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    SbString text = kalmyr::detail::formatArguments(pattern, arguments);
    va_end(arguments);
    const bool record = SoPreferences::getBool("KMR_DEBUG_STACKERROR", false);
    const SoErrorStack error(std::move(text),
                             record ? kalmyr::detail::callStack(KALMYR_CALLER) : SbString());
    error.handle(slot());
}

SbString SoErrorStack::currentStack(int skip)
{
    return kalmyr::detail::callStack(KALMYR_CALLER, skip);
}

SbString SoErrorStack::getPrintedText() const
{
    SbString text = "Kalmyr critical error: " + m_text;
    if (!m_stack.isEmpty()) {
        text += "\n" + m_stack;
    }
    return text;
}

kalmyr::detail::ErrorHandlerSlot& SoErrorStack::slot()
{
    static kalmyr::detail::ErrorHandlerSlot s_slot(&baseSlot());
    return s_slot;
}

void SoErrorStack::setHandlerCallback(SoErrorCB* callback, void* userData)
{
    slot().set(callback, userData);
}

SoErrorCB* SoErrorStack::getHandlerCallback()
{
    void* userData = nullptr;
    return slot().get(userData);
}

void* SoErrorStack::getHandlerData()
{
    void* userData = nullptr;
    slot().get(userData);
    return userData;
}

const char* SoErrorStack::getTypeName() const
{
    return "SoErrorStack";
}
