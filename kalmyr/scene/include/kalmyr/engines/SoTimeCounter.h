#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/fields/SoValueFields.h>

#include <limits>

/// Counts through a range in time, again and again.
class KALMYR_API SoTimeCounter final : public SoEngine {
    SO_ENGINE_HEADER(SoTimeCounter)

public:
    SoTimeCounter();
    static void initClass();

    SoSFTime timeIn;     ///< follows the global field realTime
    SoSFShort min;       ///< 0
    SoSFShort max;       ///< 1
    SoSFShort step;      ///< 1; negative steps count down from `max`
    SoSFBool on;         ///< TRUE; while FALSE the output stands still
    SoSFFloat frequency; ///< 1: whole cycles a second
    /// Share of a cycle that each value lasts, in any unit; the last one serves all further values.
    SoMFFloat duty;
    SoSFShort reset;     ///< sets the counter to a value
    SoSFTrigger syncIn;  ///< starts a cycle anew
    SoSFShort output;    ///< output
    SoSFTrigger syncOut; ///< output: fires when a cycle begins

protected:
    ~SoTimeCounter() override;
    bool isReacting() const override { return true; }
    void inputChanged(SoField* input) override;

private:
    int numStages() const;
    double shareBefore(int stage) const;
    int stageAt(double phase) const;
    std::int16_t valueOf(int stage) const;
    void advance();
    void show(bool newCycle);

    double m_phase = 0; ///< part of the present cycle that has passed
    /// Input time up to which time was counted; none has passed before the first look.
    double m_last = std::numeric_limits<double>::max();
    float m_frequency = 1;
    bool m_running = true;
};
