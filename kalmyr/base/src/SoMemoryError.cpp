#include <kalmyr/base/SoMemoryError.h>

void SoMemoryError::post(const char* what)
{
    const SoMemoryError error(SbString("not enough memory for ") + what);
    error.handle(slot());
}

kalmyr::detail::ErrorHandlerSlot& SoMemoryError::slot()
{
    static kalmyr::detail::ErrorHandlerSlot s_slot(&baseSlot());
    return s_slot;
}

void SoMemoryError::setHandlerCallback(SoErrorCB* callback, void* userData)
{
    slot().set(callback, userData);
}

SoErrorCB* SoMemoryError::getHandlerCallback()
{
    void* userData = nullptr;
    return slot().get(userData);
}

void* SoMemoryError::getHandlerData()
{
    void* userData = nullptr;
    slot().get(userData);
    return userData;
}

const char* SoMemoryError::getTypeName() const
{
    return "SoMemoryError";
}
