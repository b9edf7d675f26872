#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A box about the origin. Equal boxes share their geometry. Material parts: front (+z), back,
/// left, right, top, bottom.
class KALMYR_API SoCube : public SoShape {
    SO_NODE_HEADER(SoCube)

public:
    SoCube();
    static void initClass();

    SoSFFloat width;  ///< along x
    SoSFFloat height; ///< along y
    SoSFFloat depth;  ///< along z

    void computeBBox(SoState* state, SbBox3f& box, SbVec3f& center) override;

protected:
    ~SoCube() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
    SoRef<SoGeometry> findShared(SoState* state) override;

private:
    kalmyr::detail::SharedKey getKey(SoState* state) const;
};
