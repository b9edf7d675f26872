#pragma once

#include <kalmyr/draggers/SoScaleDragger.h>

/// Scales evenly by the corners, along one axis by the arms. Shift keeps a corner to that one of
/// the axes in which the pointer has gone furthest.
class KALMYR_VISIBLE SoScale3Dragger final : public SoScaleDragger {
    SO_KIT_HEADER(SoScale3Dragger)

public:
    SoScale3Dragger();
    static void initClass();

protected:
    ~SoScale3Dragger() override;
};
