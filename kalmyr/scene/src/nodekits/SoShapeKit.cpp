#include <kalmyr/nodekits/SoShapeKit.h>

#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoCoordinate4.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoNormal.h>
#include <kalmyr/nodes/SoNormalBinding.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTextureCoordinate2.h>
#include <kalmyr/nodes/SoTextureCoordinateBinding.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoShape.h>

SO_KIT_SOURCE(SoShapeKit)

SoShapeKit::SoShapeKit()
{
    SO_NODE_CONSTRUCTOR(SoSeparatorKit);
    SO_KIT_PART(materialBinding);
    SO_KIT_PART(normalBinding);
    SO_KIT_PART(textureCoordinateBinding);
    SO_KIT_PART(shapeHints);
    SO_KIT_PART(coordinate4);
    SO_KIT_PART(coordinate3);
    SO_KIT_PART(normal);
    SO_KIT_PART(textureCoordinate2);
    SO_KIT_PART(shapeSeparator);
    SO_KIT_PART(localTransform);
    SO_KIT_PART(shape);
    SO_KIT_MAKE_PARTS();
}

SoShapeKit::~SoShapeKit() = default;

void SoShapeKit::initClass()
{
    SO_KIT_INIT_CLASS(SoShapeKit, SoSeparatorKit, "ShapeKit");
    // Before the list, so that kits below inherit them.
    s_catalog->addPart("materialBinding", SoMaterialBinding::getClassTypeId(),
                       SoMaterialBinding::getClassTypeId(), {"topSeparator", "childList"});
    s_catalog->addPart("normalBinding", SoNormalBinding::getClassTypeId(),
                       SoNormalBinding::getClassTypeId(), {"topSeparator", "childList"});
    s_catalog->addPart("textureCoordinateBinding", SoTextureCoordinateBinding::getClassTypeId(),
                       SoTextureCoordinateBinding::getClassTypeId(), {"topSeparator", "childList"});
    s_catalog->addPart("shapeHints", SoShapeHints::getClassTypeId(), SoShapeHints::getClassTypeId(),
                       {"topSeparator", "childList"});
    s_catalog->addPart("coordinate4", SoCoordinate4::getClassTypeId(),
                       SoCoordinate4::getClassTypeId(), {"topSeparator", "childList"});
    s_catalog->addPart("coordinate3", SoCoordinate3::getClassTypeId(),
                       SoCoordinate3::getClassTypeId(), {"topSeparator", "childList"});
    s_catalog->addPart("normal", SoNormal::getClassTypeId(), SoNormal::getClassTypeId(),
                       {"topSeparator", "childList"});
    s_catalog->addPart("textureCoordinate2", SoTextureCoordinate2::getClassTypeId(),
                       SoTextureCoordinate2::getClassTypeId(), {"topSeparator", "childList"});
    s_catalog->addGroup("shapeSeparator", SoSeparator::getClassTypeId(),
                        {"topSeparator", "childList"}, true);
    s_catalog->addPart("localTransform", SoTransform::getClassTypeId(),
                       SoTransform::getClassTypeId(), {"shapeSeparator", ""});
    s_catalog->addPart("shape", SoShape::getClassTypeId(), SoCube::getClassTypeId(),
                       {"shapeSeparator", ""});
    s_catalog->setNullByDefault("shape", false);
}
