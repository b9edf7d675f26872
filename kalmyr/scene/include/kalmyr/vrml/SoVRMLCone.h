#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A cone about the y axis, the origin half way up.
class KALMYR_API SoVRMLCone : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLCone)

public:
    SoVRMLCone();
    static void initClass();

    SoSFFloat bottomRadius;
    SoSFFloat height;
    SoSFBool side;
    SoSFBool bottom;

protected:
    ~SoVRMLCone() override;

    SoRef<SoGeometry> findShared(SoState* state) override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;

private:
    kalmyr::detail::SharedKey getKey() const;
};
