#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A ball about the origin, as fine as the complexity asks for.
class KALMYR_API SoSphere : public SoShape {
    SO_NODE_HEADER(SoSphere)

public:
    SoSphere();
    static void initClass();

    SoSFFloat radius;

    void computeBBox(SoState* state, SbBox3f& box, SbVec3f& center) override;

protected:
    ~SoSphere() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
    SoRef<SoGeometry> findShared(SoState* state) override;

private:
    kalmyr::detail::SharedKey getKey(SoState* state) const;
};
