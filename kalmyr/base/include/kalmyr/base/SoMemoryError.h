#pragma once

#include <kalmyr/base/SoError.h>

/// Memory could not be had.
class KALMYRBASE_API SoMemoryError final : public SoError {
public:
    /// `what` names the thing that there was no room for.
    static void post(const char* what);

    static void setHandlerCallback(SoErrorCB* callback, void* userData = nullptr);
    static SoErrorCB* getHandlerCallback();
    static void* getHandlerData();

    const char* getTypeName() const override;

private:
    static kalmyr::detail::ErrorHandlerSlot& slot();
    explicit SoMemoryError(SbString text) : SoError(std::move(text)) {}
};
