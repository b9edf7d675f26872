#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

namespace kalmyr::detail {
struct SharedKey;
}

/// A sphere about the origin.
class KALMYR_API SoVRMLSphere : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLSphere)

public:
    SoVRMLSphere();
    static void initClass();

    SoSFFloat radius;

protected:
    ~SoVRMLSphere() override;

    SoRef<SoGeometry> findShared(SoState* state) override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;

private:
    kalmyr::detail::SharedKey getKey() const;
};
