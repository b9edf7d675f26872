#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/fields/SoValueFields.h>

/// Runs for a set time each time it is triggered.
class KALMYR_API SoOneShot final : public SoEngine {
    SO_ENGINE_HEADER(SoOneShot)

public:
    enum Flags {
        RETRIGGERABLE = 1, ///< a trigger while it runs starts it anew; otherwise that is ignored
        HOLD_FINAL = 2     ///< the outputs keep their last value; otherwise they go back to zero
    };

    SoOneShot();
    static void initClass();

    SoSFTime timeIn;     ///< follows the global field realTime
    SoSFTime duration;   ///< 1 second
    SoSFTrigger trigger; ///< starts it
    SoSFBitMask flags;   ///< none
    SoSFBool disable;    ///< FALSE; TRUE stops it and lets no trigger through
    SoSFTime timeOut;    ///< output: 0 to `duration`
    SoSFBool isActive;   ///< output
    SoSFFloat ramp;      ///< output: 0 to 1

protected:
    ~SoOneShot() override;
    void evaluate() override;
    bool isReacting() const override { return true; }
    void inputChanged(SoField* input) override;

private:
    double elapsed() const;
    void stop();

    double m_start = 0;
    double m_final = 0; ///< time shown while it does not run
    bool m_active = false;
};
