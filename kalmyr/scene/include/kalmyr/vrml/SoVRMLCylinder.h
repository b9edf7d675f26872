#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A cylinder about the y axis and the origin.
class KALMYR_API SoVRMLCylinder : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLCylinder)

public:
    SoVRMLCylinder();
    static void initClass();

    SoSFBool bottom;
    SoSFFloat height;
    SoSFFloat radius;
    SoSFBool side;
    SoSFBool top;

protected:
    ~SoVRMLCylinder() override;

    SoRef<SoGeometry> findShared(SoState* state) override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;

private:
    kalmyr::detail::SharedKey getKey() const;
};
