#include <kalmyr/rendering/SoRenderingInit.h>

#include "rendering/GLDevice.h"
#include "rendering/RenderTraversal.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoTextureElement.h>
#include <kalmyr/nodes/SoAnnotation.h>
#include <kalmyr/nodes/SoClipPlane.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoImageBackground.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoLineHighlightRenderAction.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/shapes/SoImage.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLBackground.h>
#include <kalmyr/vrml/SoVRMLExtraNodes.h>
#include <kalmyr/vrml/SoVRMLFog.h>
#include <kalmyr/vrml/SoVRMLPointLight.h>
#include <kalmyr/vrml/SoVRMLSpotLight.h>

#include <algorithm>
#include <numbers>

namespace kalmyr {

namespace {

using detail::RenderTraversal;

SoGLRenderAction& actionOf(SoAction* action)
{
    return *static_cast<SoGLRenderAction*>(action);
}

/// Any node that keeps its effects to itself and has children is worth a list of its own.
void renderNode(SoAction* action, SoNode* node)
{
    if (!node->affectsState() && node->getInternalChildren()) {
        actionOf(action).traversal().separator(node, true);
    } else {
        node->doAction(action);
    }
}

void renderSeparator(SoAction* action, SoNode* node)
{
    const bool mayCache =
        static_cast<SoSeparator*>(node)->renderCaching.getValue() != SoSeparator::OFF;
    actionOf(action).traversal().separator(node, mayCache);
}

void renderAnnotation(SoAction* action, SoNode* node)
{
    actionOf(action).traversal().annotation(node);
}

void renderSelection(SoAction* action, SoNode* node)
{
    actionOf(action).traversal().selection(node);
    renderSeparator(action, node);
}

void renderShape(SoAction* action, SoNode* node)
{
    actionOf(action).traversal().shape(static_cast<SoShape*>(node));
}

/// A picture brings its own colours: those of the state would be painted on it.
void renderImage(SoAction* action, SoNode* node)
{
    SoState* state = action->getState();
    state->push();
    auto& element = state->write<SoTextureElement>();
    element.value() = {};
    element.value().image = static_cast<SoImage*>(node)->getPicture();
    element.value().wrapS = element.value().wrapT = SoTextureValues::CLAMP;
    element.value().model = SoTextureValues::REPLACE;
    element.setBy(node);
    state->write<SoTextureMatrixElement>().set(node, SbMatrix::identity());
    renderShape(action, node);
    state->pop();
}

/// What the node's class would do, but never from a kept list.
void renderViewDependent(SoAction* action, SoNode* node)
{
    RenderTraversal& traversal = actionOf(action).traversal();
    traversal.setViewDependent();
    if (node->isOfType(SoShape::getClassTypeId())) {
        traversal.shape(static_cast<SoShape*>(node));
    } else if (node->isOfType(SoAnnotation::getClassTypeId())) {
        traversal.annotation(node, false);
    } else {
        if (node->isOfType(SoSelection::getClassTypeId())) {
            traversal.selection(node);
        }
        traversal.visit(node);
    }
}

void renderGradient(SoAction* action, SoNode* node)
{
    const auto* background = static_cast<SoGradientBackground*>(node);
    actionOf(action).traversal().background(background->getTopColor(),
                                            background->getBottomColor());
}

/// The colours as they are down to the angle.
void cutAt(std::vector<detail::BackgroundStop>& stops, float angle)
{
    if (stops.empty())
        return;
    const auto behind = std::find_if(stops.begin() + 1, stops.end(),
                                     [angle](const auto& stop) { return stop.angle > angle; });
    detail::BackgroundStop last{(behind - 1)->color, std::max(angle, (behind - 1)->angle)};
    if (behind != stops.end()) {
        const float part = (angle - (behind - 1)->angle) / (behind->angle - (behind - 1)->angle);
        last.color += (behind->color - last.color) * std::clamp(part, 0.0f, 1.0f);
    }
    stops.erase(behind, stops.end());
    stops.push_back(last);
}

/// The sky from the zenith down, then the ground from its edge to the nadir. Angles that do not
/// rise are taken as far as they do.
template <class Background>
std::vector<detail::BackgroundStop> skyStops(const Background& node)
{
    constexpr float kNadir = std::numbers::pi_v<float>;
    std::vector<detail::BackgroundStop> stops;
    float angle = 0;
    for (int i = 0; i < node.skyColor.getNum(); ++i) {
        if (i > 0 && i <= node.skyAngle.getNum())
            angle = std::clamp(node.skyAngle[i - 1], angle, kNadir);
        stops.push_back({node.skyColor[i], angle});
    }
    const int rings = std::min(node.groundColor.getNum(), node.groundAngle.getNum() + 1);
    if (rings == 0)
        return stops;
    const float horizon = kNadir - (rings > 1 ? node.groundAngle[rings - 2] : 0);
    cutAt(stops, horizon);
    angle = stops.empty() ? 0 : stops.back().angle;
    for (int i = rings - 1; i >= 0; --i) {
        angle = std::clamp(kNadir - (i > 0 ? node.groundAngle[i - 1] : 0), angle, kNadir);
        stops.push_back({node.groundColor[i], angle});
    }
    return stops;
}

/// The pictures that a background has; null without any.
template <class Background>
std::shared_ptr<const detail::BackgroundPictures> picturesOf(Background& node)
{
    auto pictures = std::make_shared<detail::BackgroundPictures>();
    bool any = false;
    for (int side = 0; side < detail::BackgroundPictures::NUM_SIDES; ++side) {
        pictures->sides[static_cast<std::size_t>(side)] = node.getPicture(side);
        any = any || !node.getPicture(side).isNull();
    }
    return any ? pictures : nullptr;
}

template <class Background>
void renderSky(SoAction* action, SoNode* node)
{
    auto& background = *static_cast<Background*>(node);
    if (!background.isInForce())
        return;
    auto pictures = picturesOf(background);
    if (background.skyColor.getNum() > 0 || pictures)
        actionOf(action).traversal().sky(skyStops(background), std::move(pictures));
}

void renderImageBackground(SoAction* action, SoNode* node)
{
    auto* background = static_cast<SoImageBackground*>(node);
    auto picture = std::make_shared<detail::BackgroundPictures>();
    picture->screen = background->getPicture();
    picture->style = static_cast<detail::BackgroundPictures::Style>(background->style.getValue());
    if (!picture->screen.isNull())
        actionOf(action).traversal().backgroundPicture(std::move(picture));
}

/// Point and spot lights shine on everything, wherever they stand.
void renderSceneLight(SoAction* action, SoNode* node)
{
    SoLightRecord record;
    if (static_cast<SoVRMLLight*>(node)->getRecord(action->getState(), record))
        actionOf(action).traversal().sceneLight(record);
}

/// The fog in force lies over everything, wherever it stands.
void renderFog(SoAction* action, SoNode* node)
{
    const auto& fog = *static_cast<SoVRMLFog*>(node);
    const SoFogValues values = fog.getValues();
    if (values.type != SoEnvironmentValues::NONE && fog.isInForce())
        actionOf(action).traversal().sceneFog({values, fog.isBound.getValue()});
}

void renderClipPlane(SoAction* action, SoNode* node)
{
    actionOf(action).traversal().visit(node); // what belongs to the node itself is not cut
    const auto* clip = static_cast<SoClipPlane*>(node);
    if (clip->on.getValue() && !clip->on.isIgnored()) {
        const SbPlane& plane = clip->plane.getValue();
        actionOf(action).traversal().clipPlane(
            node, SbVec4f(plane.getNormal(), -plane.getDistanceFromOrigin()));
    }
}

/// Types of an optional module that was not started yet are bad.
void addIfKnown(SoType type, SoActionMethod method)
{
    if (!type.isBad()) {
        SoGLRenderAction::addMethod(type, method);
    }
}

} // namespace

void initRendering()
{
    // Types are only ever added, so their number tells whether there is anything to do. An action
    // may be made before the toolkit was started; it is applied later.
    static int knownTypes = -1;
    if (SoSelection::getClassTypeId().isBad() || knownTypes == SoType::getNumTypes()) {
        return;
    }
    SoGLRenderAction::initClass();
    SoLineHighlightRenderAction::initClass();
    SoGLRenderAction::addMethod(SoNode::getClassTypeId(), renderNode);
    SoGLRenderAction::addMethod(SoSeparator::getClassTypeId(), renderSeparator);
    SoGLRenderAction::addMethod(SoAnnotation::getClassTypeId(), renderAnnotation);
    SoGLRenderAction::addMethod(SoSelection::getClassTypeId(), renderSelection);
    SoGLRenderAction::addMethod(SoShape::getClassTypeId(), renderShape);
    SoGLRenderAction::addMethod(SoImage::getClassTypeId(), renderImage);
    SoGLRenderAction::addMethod(SoGradientBackground::getClassTypeId(), renderGradient);
    SoGLRenderAction::addMethod(SoClipPlane::getClassTypeId(), renderClipPlane);
    SoGLRenderAction::addMethod(SoImageBackground::getClassTypeId(), renderImageBackground);
    addIfKnown(SoVRMLBackground::getClassTypeId(), renderSky<SoVRMLBackground>);
    addIfKnown(SoVRMLTextureBackground::getClassTypeId(), renderSky<SoVRMLTextureBackground>);
    addIfKnown(SoVRMLFog::getClassTypeId(), renderFog);
    addIfKnown(SoVRMLPointLight::getClassTypeId(), renderSceneLight);
    addIfKnown(SoVRMLSpotLight::getClassTypeId(), renderSceneLight);
    SoGeometry::setDeathObserver(&detail::GLDevice::geometryDied);
    knownTypes = SoType::getNumTypes();
}

void finishRendering()
{
    SoOffscreenContext::finish();
}

} // namespace kalmyr

void SoGLRenderAction::addViewDependentType(SoType type)
{
    addMethod(type, kalmyr::renderViewDependent);
}
