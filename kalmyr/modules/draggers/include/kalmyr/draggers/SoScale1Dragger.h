#pragma once

#include <kalmyr/draggers/SoScaleDragger.h>

/// Scales along its own x axis.
class KALMYR_VISIBLE SoScale1Dragger final : public SoScaleDragger {
    SO_KIT_HEADER(SoScale1Dragger)

public:
    SoScale1Dragger();
    static void initClass();

protected:
    ~SoScale1Dragger() override;
};
