#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/fields/SoValueFields.h>

/// Counts triggers through a range, round and round.
class KALMYR_API SoCounter final : public SoEngine {
    SO_ENGINE_HEADER(SoCounter)

public:
    SoCounter();
    static void initClass();

    SoSFShort min;       ///< 0
    SoSFShort max;       ///< 1
    SoSFShort step;      ///< 1; negative steps count down
    SoSFTrigger trigger; ///< one step
    SoSFShort reset;     ///< sets the counter to a value, within the range
    SoSFShort output;    ///< output
    SoSFTrigger syncOut; ///< output: fires when the counter begins the range anew

protected:
    ~SoCounter() override;
    bool isReacting() const override { return true; }
    void inputChanged(SoField* input) override;

private:
    std::int16_t clamped(int value) const;
};
