#pragma once

#include <kalmyr/draggers/SoTranslateDragger.h>

/// Moves in its own xy plane by the plate, along x or y by the arrows. Shift keeps the plate to
/// that one of the two axes in which the pointer has gone further.
class KALMYR_VISIBLE SoTranslate2Dragger final : public SoTranslateDragger {
    SO_KIT_HEADER(SoTranslate2Dragger)

public:
    SoTranslate2Dragger();
    static void initClass();

protected:
    ~SoTranslate2Dragger() override;
};
