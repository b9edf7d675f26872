#pragma once

#include <kalmyr/base/SbPlane.h>
#include <kalmyr/draggers/SoDragger.h>

/// Moves in its own xy plane.
class KALMYR_VISIBLE SoTranslate2Dragger final : public SoDragger {
    SO_KIT_HEADER(SoTranslate2Dragger)

public:
    SoTranslate2Dragger();
    static void initClass();

    SoSFVec3f translation;

    SbMatrix getMotionMatrix() const override;

protected:
    ~SoTranslate2Dragger() override;
    void begin(const SbVec3f& hit, const Pointer& pointer) override;
    void follow(const Pointer& pointer) override;

private:
    SbVec3f m_hit;
    SbVec3f m_before;
};
