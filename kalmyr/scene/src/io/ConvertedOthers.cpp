#include "ConvertedOthers.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/nodes/SoAlphaTest.h>
#include <kalmyr/nodes/SoCallback.h>
#include <kalmyr/nodes/SoClipPlane.h>
#include <kalmyr/nodes/SoDepthBuffer.h>
#include <kalmyr/nodes/SoEnvironment.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoImageBackground.h>
#include <kalmyr/nodes/SoInfo.h>
#include <kalmyr/nodes/SoPolygonOffset.h>
#include <kalmyr/nodes/SoShaderProgram.h>
#include <kalmyr/nodes/SoStackTexture.h>
#include <kalmyr/nodes/SoTexture3Transform.h>
#include <kalmyr/nodes/SoTextureCoordinateCube.h>
#include <kalmyr/nodes/SoTextureCoordinateEnvironment.h>
#include <kalmyr/nodes/SoVertexAttribute.h>
#include <kalmyr/vrml/SoVRMLBackground.h>
#include <kalmyr/vrml/SoVRMLExtraNodes.h>
#include <kalmyr/vrml/SoVRMLFog.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>
#include <kalmyr/vrml/SoVRMLScript.h>
#include <kalmyr/vrml/SoVRMLSound.h>
#include <kalmyr/vrml/SoVRMLWorldInfo.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <numbers>
#include <string_view>

namespace kalmyr::detail {

namespace {

/// Types of which, as of those derived from them, nothing is left.
constexpr SoType (*kLost[])() = {
    SoCallback::getClassTypeId,
    SoClipPlane::getClassTypeId,
    SoEventCallback::getClassTypeId,
    SoUnknownNode::getClassTypeId,
    SoVRMLBackground::getClassTypeId,
    SoVRMLFog::getClassTypeId,
    SoVRMLNavigationInfo::getClassTypeId,
    SoVRMLScript::getClassTypeId,
    SoVRMLSound::getClassTypeId,
    SoVRMLWorldInfo::getClassTypeId,
    SoVRMLTextureBackground::getClassTypeId,
    SoAlphaTest::getClassTypeId,
    SoDepthBuffer::getClassTypeId,
    SoImageBackground::getClassTypeId,
    SoPolygonOffset::getClassTypeId,
    SoShaderProgram::getClassTypeId,
    SoStackTexture::getClassTypeId,
    SoTexture3Transform::getClassTypeId,
    SoTextureCoordinateCube::getClassTypeId,
    SoTextureCoordinateEnvironment::getClassTypeId,
    SoVertexAttribute::getClassTypeId,
};

SoNode* fogOf(const SoEnvironment& from)
{
    const int kind = from.fogType.getValue();
    if (kind == SoEnvironment::NONE)
        return nullptr;
    auto* made = new SoVRMLFog;
    made->color = from.fogColor.getValue();
    made->fogType = SbString(kind == SoEnvironment::HAZE ? "LINEAR" : "EXPONENTIAL");
    made->visibilityRange = from.fogVisibility.getValue();
    return made;
}

SoNode* backgroundOf(const SoGradientBackground& from)
{
    const bool swapped = from.swapColors.getValue();
    const SbColor top = (swapped ? from.color1 : from.color0).getValue();
    const SbColor bottom = (swapped ? from.color0 : from.color1).getValue();
    auto* made = new SoVRMLBackground;
    made->skyColor.setValues(0, std::array{top, bottom});
    made->skyAngle = std::numbers::pi_v<float>;
    return made;
}

} // namespace

SoNode* vrml97Other(const SoNode* node)
{
    if (node->isOfType(SoInfo::getClassTypeId())) {
        auto* made = new SoVRMLWorldInfo;
        made->info = static_cast<const SoInfo*>(node)->string.getValue();
        return made;
    }
    if (node->isOfType(SoEnvironment::getClassTypeId()))
        return fogOf(*static_cast<const SoEnvironment*>(node));
    if (node->isOfType(SoGradientBackground::getClassTypeId()))
        return backgroundOf(*static_cast<const SoGradientBackground*>(node));
    return nullptr;
}

SoNode* vrml1Other(const SoNode* node)
{
    if (node->isOfType(SoInfo::getClassTypeId()))
        return const_cast<SoNode*>(node);
    if (!node->isOfType(SoVRMLWorldInfo::getClassTypeId()))
        return nullptr;
    const auto* from = static_cast<const SoVRMLWorldInfo*>(node);
    std::string text = from->title.getValue().toStdString();
    for (const SbString& line : from->info.values())
        text.append(text.empty() ? "" : "\n").append(line.view());
    auto* made = new SoInfo;
    made->string = SbString(text);
    return made;
}

bool isLostWhenFlattened(const SoNode* node)
{
    if (node->isOfType(SoEnvironment::getClassTypeId()))
        return static_cast<const SoEnvironment*>(node)->fogType.getValue() != SoEnvironment::NONE;
    const std::string_view type = node->getTypeId().getName().view();
    return type.ends_with("Interpolator") || (type.starts_with("VRML") && type.ends_with("Sensor"))
           || std::any_of(std::begin(kLost), std::end(kLost),
                          [node](auto lost) { return node->isOfType(lost()); });
}

} // namespace kalmyr::detail
