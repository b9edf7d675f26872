#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A cone about the y axis, its middle at the origin, its tip up. Material parts: sides, bottom.
class KALMYR_API SoCone : public SoShape {
    SO_NODE_HEADER(SoCone)

public:
    enum Part { SIDES = 1, BOTTOM = 2, ALL = 3 };

    SoCone();
    static void initClass();

    SoSFBitMask parts;
    SoSFFloat bottomRadius;
    SoSFFloat height;

    void computeBBox(SoState* state, SbBox3f& box, SbVec3f& center) override;

protected:
    ~SoCone() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
    SoRef<SoGeometry> findShared(SoState* state) override;

private:
    kalmyr::detail::SharedKey getKey(SoState* state) const;
};
