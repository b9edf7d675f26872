#pragma once

#include <kalmyr/draggers/SoScaleDragger.h>

/// Scales evenly.
class KALMYR_VISIBLE SoScaleUniformDragger final : public SoScaleDragger {
    SO_KIT_HEADER(SoScaleUniformDragger)

public:
    SoScaleUniformDragger();
    static void initClass();

protected:
    ~SoScaleUniformDragger() override;
};
