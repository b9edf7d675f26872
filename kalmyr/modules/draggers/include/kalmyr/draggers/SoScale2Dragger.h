#pragma once

#include <kalmyr/draggers/SoScaleDragger.h>

/// Scales along its own x and y axes: both by the corners, one by the sides. Shift keeps a corner
/// to that one of the axes in which the pointer has gone further.
class KALMYR_VISIBLE SoScale2Dragger final : public SoScaleDragger {
    SO_KIT_HEADER(SoScale2Dragger)

public:
    SoScale2Dragger();
    static void initClass();

protected:
    ~SoScale2Dragger() override;
};
