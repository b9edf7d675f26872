#pragma once

#include <kalmyr/draggers/SoTranslateDragger.h>

/// Moves along its own x axis.
class KALMYR_VISIBLE SoTranslate1Dragger final : public SoTranslateDragger {
    SO_KIT_HEADER(SoTranslate1Dragger)

public:
    SoTranslate1Dragger();
    static void initClass();

protected:
    ~SoTranslate1Dragger() override;
};
