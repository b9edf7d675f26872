#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// Points, each with its colour when there are any. Points are not lit.
class KALMYR_API SoVRMLPointSet : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLPointSet)

public:
    SoVRMLPointSet();
    static void initClass();

    SoSFNode color;
    SoSFNode coord;

    bool isLit() const override { return false; }

protected:
    ~SoVRMLPointSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
    std::uint64_t stateKey(SoState* state) const override;
};
