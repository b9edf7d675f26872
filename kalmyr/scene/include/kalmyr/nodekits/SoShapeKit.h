#pragma once

#include <kalmyr/nodekits/SoSeparatorKit.h>

/// A shape, a cube from the beginning, with everything that it may need before it.
class KALMYR_API SoShapeKit : public SoSeparatorKit {
    SO_KIT_HEADER(SoShapeKit)

public:
    SoShapeKit();
    static void initClass();

    SoSFNode materialBinding;
    SoSFNode normalBinding;
    SoSFNode textureCoordinateBinding;
    SoSFNode shapeHints;
    SoSFNode coordinate4;
    SoSFNode coordinate3;
    SoSFNode normal;
    SoSFNode textureCoordinate2;
    SoSFNode shapeSeparator; ///< private
    SoSFNode localTransform; ///< of the shape, not of the list
    SoSFNode shape;

protected:
    ~SoShapeKit() override;
};
