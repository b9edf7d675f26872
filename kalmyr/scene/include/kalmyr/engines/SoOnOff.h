#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/fields/SoValueFields.h>

/// A switch that triggers work.
class KALMYR_API SoOnOff final : public SoEngine {
    SO_ENGINE_HEADER(SoOnOff)

public:
    SoOnOff();
    static void initClass();

    SoSFTrigger on;
    SoSFTrigger off;
    SoSFTrigger toggle;
    SoSFBool isOn;  ///< output: FALSE at first
    SoSFBool isOff; ///< output: the opposite

protected:
    ~SoOnOff() override;
    bool isReacting() const override { return true; }
    void inputChanged(SoField* input) override;
};
