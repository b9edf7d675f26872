#pragma once

#include <kalmyr/draggers/SoTranslateDragger.h>

/// Moves along its axes by the arrows, in its planes by the plates between them, and across the
/// line of sight by the ball in the middle. Shift keeps a plate or the ball to one axis.
class KALMYR_VISIBLE SoTranslate3Dragger final : public SoTranslateDragger {
    SO_KIT_HEADER(SoTranslate3Dragger)

public:
    SoTranslate3Dragger();
    static void initClass();

protected:
    ~SoTranslate3Dragger() override;
};
