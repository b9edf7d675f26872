#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A cylinder about the y axis, its middle at the origin. Material parts: sides, top, bottom.
class KALMYR_API SoCylinder : public SoShape {
    SO_NODE_HEADER(SoCylinder)

public:
    enum Part { SIDES = 1, TOP = 2, BOTTOM = 4, ALL = 7 };

    SoCylinder();
    static void initClass();

    SoSFBitMask parts;
    SoSFFloat radius;
    SoSFFloat height;

    void computeBBox(SoState* state, SbBox3f& box, SbVec3f& center) override;

protected:
    ~SoCylinder() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
    SoRef<SoGeometry> findShared(SoState* state) override;

private:
    kalmyr::detail::SharedKey getKey(SoState* state) const;
};
