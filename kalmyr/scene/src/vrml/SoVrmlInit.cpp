#include <kalmyr/vrml/SoVrmlInit.h>

#include <kalmyr/vrml/SoVRMLAnchor.h>
#include <kalmyr/vrml/SoVRMLAppearance.h>
#include <kalmyr/vrml/SoVRMLBackground.h>
#include <kalmyr/vrml/SoVRMLBillboard.h>
#include <kalmyr/vrml/SoVRMLBindable.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLCollision.h>
#include <kalmyr/vrml/SoVRMLColor.h>
#include <kalmyr/vrml/SoVRMLCone.h>
#include <kalmyr/vrml/SoVRMLCoordinate.h>
#include <kalmyr/vrml/SoVRMLCoordinateDeformer.h>
#include <kalmyr/vrml/SoVRMLCylinder.h>
#include <kalmyr/vrml/SoVRMLDirectionalLight.h>
#include <kalmyr/vrml/SoVRMLElevationGrid.h>
#include <kalmyr/vrml/SoVRMLExtraNodes.h>
#include <kalmyr/vrml/SoVRMLExtrusion.h>
#include <kalmyr/vrml/SoVRMLFog.h>
#include <kalmyr/vrml/SoVRMLFontStyle.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLImageTexture.h>
#include <kalmyr/vrml/SoVRMLIndexedFaceSet.h>
#include <kalmyr/vrml/SoVRMLIndexedLineSet.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLInterpolators.h>
#include <kalmyr/vrml/SoVRMLLight.h>
#include <kalmyr/vrml/SoVRMLLineSet.h>
#include <kalmyr/vrml/SoVRMLLOD.h>
#include <kalmyr/vrml/SoVRMLMaterial.h>
#include <kalmyr/vrml/SoVRMLMovieTexture.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>
#include <kalmyr/vrml/SoVRMLNormal.h>
#include <kalmyr/vrml/SoVRMLNurbs.h>
#include <kalmyr/vrml/SoVRMLNurbsPositionInterpolator.h>
#include <kalmyr/vrml/SoVRMLParent.h>
#include <kalmyr/vrml/SoVRMLPixelTexture.h>
#include <kalmyr/vrml/SoVRMLPointLight.h>
#include <kalmyr/vrml/SoVRMLPointSet.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>
#include <kalmyr/vrml/SoVRMLSensors.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLSound.h>
#include <kalmyr/vrml/SoVRMLSphere.h>
#include <kalmyr/vrml/SoVRMLSpotLight.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>
#include <kalmyr/vrml/SoVRMLText.h>
#include <kalmyr/vrml/SoVRMLTexture.h>
#include <kalmyr/vrml/SoVRMLTextureCoordinate.h>
#include <kalmyr/vrml/SoVRMLTextureTransform.h>
#include <kalmyr/vrml/SoVRMLTransform.h>
#include <kalmyr/vrml/SoVRMLTrimmedSurface.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>
#include <kalmyr/vrml/SoVRMLWorldInfo.h>

#include <iterator>

namespace {

struct Class {
    void (*init)();
    SoType (*type)();
};

template <class T>
constexpr Class entry()
{
    return {T::initClass, T::getClassTypeId};
}

/// Parents first.
constexpr Class kClasses[] = {
    entry<SoVRMLParent>(),
    entry<SoVRMLGroup>(),
    entry<SoVRMLTransform>(),
    entry<SoVRMLAnchor>(),
    entry<SoVRMLBillboard>(),
    entry<SoVRMLCollision>(),
    entry<SoVRMLSwitch>(),
    entry<SoVRMLLOD>(),
    entry<SoVRMLInline>(),
    entry<SoVRMLScript>(),
    entry<SoVRMLProtoInstance>(),
    entry<SoVRMLShape>(),
    entry<SoVRMLAppearance>(),
    entry<SoVRMLMaterial>(),
    entry<SoVRMLTexture>(),
    entry<SoVRMLImageTexture>(),
    entry<SoVRMLPixelTexture>(),
    entry<SoVRMLMovieTexture>(),
    entry<SoVRMLTextureTransform>(),
    entry<SoVRMLGeometry>(),
    entry<SoVRMLBox>(),
    entry<SoVRMLCone>(),
    entry<SoVRMLCylinder>(),
    entry<SoVRMLSphere>(),
    entry<SoVRMLIndexedFaceSet>(),
    entry<SoVRMLIndexedLineSet>(),
    entry<SoVRMLPointSet>(),
    entry<SoVRMLElevationGrid>(),
    entry<SoVRMLExtrusion>(),
    entry<SoVRMLText>(),
    entry<SoVRMLCoordinate>(),
    entry<SoVRMLNormal>(),
    entry<SoVRMLColor>(),
    entry<SoVRMLTextureCoordinate>(),
    entry<SoVRMLLight>(),
    entry<SoVRMLDirectionalLight>(),
    entry<SoVRMLPointLight>(),
    entry<SoVRMLSpotLight>(),
    entry<SoVRMLBindable>(),
    entry<SoVRMLViewpoint>(),
    entry<SoVRMLNavigationInfo>(),
    entry<SoVRMLBackground>(),
    entry<SoVRMLFog>(),
    entry<SoVRMLWorldInfo>(),
    entry<SoVRMLFontStyle>(),
    entry<SoVRMLSound>(),
    entry<SoVRMLAudioClip>(),
    entry<SoVRMLCylinderSensor>(),
    entry<SoVRMLPlaneSensor>(),
    entry<SoVRMLProximitySensor>(),
    entry<SoVRMLSphereSensor>(),
    entry<SoVRMLTimeSensor>(),
    entry<SoVRMLTouchSensor>(),
    entry<SoVRMLVisibilitySensor>(),
    entry<SoVRMLInterpolator>(),
    entry<SoVRMLColorInterpolator>(),
    entry<SoVRMLCoordinateInterpolator>(),
    entry<SoVRMLNormalInterpolator>(),
    entry<SoVRMLOrientationInterpolator>(),
    entry<SoVRMLPositionInterpolator>(),
    entry<SoVRMLScalarInterpolator>(),
    entry<SoVRMLLineSet>(),
    entry<SoVRMLColorRGBA>(),
    entry<SoVRMLMultiTexture>(),
    entry<SoVRMLMultiTextureCoordinate>(),
    entry<SoVRMLMultiTextureTransform>(),
    entry<SoVRMLTextureBackground>(),
    entry<SoVRMLNurbsCurve>(),
    entry<SoVRMLNurbsSurface>(),
    entry<SoVRMLNurbsTextureSurface>(),
    entry<SoVRMLTrimmedSurface>(),
    entry<SoVRMLContour2D>(),
    entry<SoVRMLNurbsCurve2D>(),
    entry<SoVRMLPolyline2D>(),
    entry<SoVRMLNurbsPositionInterpolator>(),
    entry<SoVRMLNurbsGroup>(),
    entry<SoVRMLCoordinateDeformer>(),
    entry<SoVRMLGeoOrigin>(),
    entry<SoVRMLGeoCoordinate>(),
    entry<SoVRMLGeoElevationGrid>(),
    entry<SoVRMLGeoLocation>(),
    entry<SoVRMLGeoLOD>(),
    entry<SoVRMLGeoMetadata>(),
    entry<SoVRMLGeoPositionInterpolator>(),
    entry<SoVRMLGeoTouchSensor>(),
    entry<SoVRMLGeoViewpoint>(),
    entry<SoVRMLInlineLoadControl>(),
};

} // namespace

void kalmyr::initVrml()
{
    for (const Class& one : kClasses)
        one.init();
}

void kalmyr::finishVrml()
{
    for (auto one = std::rbegin(kClasses); one != std::rend(kClasses); ++one)
        SoType::removeType(one->type());
}
