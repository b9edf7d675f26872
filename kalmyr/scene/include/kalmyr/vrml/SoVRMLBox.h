#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A box about the origin.
class KALMYR_API SoVRMLBox : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLBox)

public:
    SoVRMLBox();
    static void initClass();

    SoSFVec3f size;

protected:
    ~SoVRMLBox() override;

    SoRef<SoGeometry> findShared(SoState* state) override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;

private:
    kalmyr::detail::SharedKey getKey() const;
};
