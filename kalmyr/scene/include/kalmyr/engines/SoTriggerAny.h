#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoSFTrigger.h>

/// Passes on whichever of its inputs fires. A change that reaches several inputs passes once.
class KALMYR_API SoTriggerAny final : public SoEngine {
    SO_ENGINE_HEADER(SoTriggerAny)

public:
    SoTriggerAny();
    static void initClass();

    SoSFTrigger input0, input1, input2, input3, input4, input5, input6, input7, input8, input9;
    SoSFTrigger output; ///< output

protected:
    ~SoTriggerAny() override;
};
