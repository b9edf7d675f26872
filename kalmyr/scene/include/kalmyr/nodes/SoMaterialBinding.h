#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>

/// Says how materials go to the parts, faces or vertices of the shapes that follow.
class KALMYR_API SoMaterialBinding : public SoNode {
    SO_NODE_HEADER(SoMaterialBinding)

public:
    enum Binding {
        DEFAULT = 1, ///< the shape's own: OVERALL
        OVERALL = 2,
        PER_PART = 3,
        PER_PART_INDEXED = 4,
        PER_FACE = 5,
        PER_FACE_INDEXED = 6,
        PER_VERTEX = 7,
        PER_VERTEX_INDEXED = 8
    };

    SoMaterialBinding();
    static void initClass();

    SoSFEnum value;

    void doAction(SoAction* action) override;

protected:
    ~SoMaterialBinding() override;
};
