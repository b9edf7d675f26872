#include <kalmyr/base/SoError.h>

#include <cstdio>
#include <mutex>

namespace {

std::mutex s_handlerMutex;

void printError(const SoError* error, void*)
{
    std::fprintf(stderr, "%s\n", error->getPrintedText().getString());
    std::fflush(stderr);
}

constinit kalmyr::detail::ErrorHandlerSlot s_slot(nullptr, printError);

} // namespace

namespace kalmyr::detail {

void ErrorHandlerSlot::set(SoErrorCB* callback, void* userData)
{
    const std::lock_guard lock(s_handlerMutex);
    m_callback = callback ? callback : m_fallback;
    m_userData = callback ? userData : nullptr;
}

SoErrorCB* ErrorHandlerSlot::get(void*& userData) const
{
    const std::lock_guard lock(s_handlerMutex);
    const ErrorHandlerSlot* slot = this;
    while (!slot->m_callback) {
        slot = slot->m_parent;
    }
    userData = slot->m_userData;
    return slot->m_callback;
}

} // namespace kalmyr::detail

const kalmyr::detail::ErrorHandlerSlot& SoError::baseSlot()
{
    return s_slot;
}

void SoError::handle(const kalmyr::detail::ErrorHandlerSlot& slot) const
{
    void* userData = nullptr;
    SoErrorCB* callback = slot.get(userData);
    callback(this, userData);
}

void SoError::post(const char* pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    const SoError error(kalmyr::detail::formatArguments(pattern, arguments));
    va_end(arguments);
    error.handle(s_slot);
}

void SoError::setHandlerCallback(SoErrorCB* callback, void* userData)
{
    s_slot.set(callback, userData);
}

SoErrorCB* SoError::getHandlerCallback()
{
    void* userData = nullptr;
    return s_slot.get(userData);
}

void* SoError::getHandlerData()
{
    void* userData = nullptr;
    s_slot.get(userData);
    return userData;
}

const char* SoError::getTypeName() const
{
    return "SoError";
}

SbString SoError::getPrintedText() const
{
    return "Kalmyr error: " + m_text;
}
