#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/fields/SoValueFields.h>

/// A stopwatch: the time since it was started, or since its last reset.
class KALMYR_API SoElapsedTime final : public SoEngine {
    SO_ENGINE_HEADER(SoElapsedTime)

public:
    SoElapsedTime();
    static void initClass();

    SoSFTime timeIn;   ///< follows the global field realTime
    SoSFFloat speed;   ///< 1; negative values run backwards
    SoSFBool on;       ///< TRUE; switched on again it starts at zero
    SoSFBool pause;    ///< FALSE; while TRUE the output stands still, and then goes on from there
    SoSFTrigger reset; ///< back to zero
    SoSFTime timeOut;  ///< output

protected:
    ~SoElapsedTime() override;
    void evaluate() override;
    bool isReacting() const override { return true; }
    void inputChanged(SoField* input) override;

private:
    void advance();

    double m_elapsed = 0;
    double m_last; ///< input time up to which m_elapsed counts
    float m_speed = 1;
    bool m_running = true;
};
