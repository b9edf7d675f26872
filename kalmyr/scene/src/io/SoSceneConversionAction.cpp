#include <kalmyr/io/SoSceneConversionAction.h>

#include "ConvertedOthers.h"
#include "shapes/MarkerBuilder.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoFontElement.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoTextureElement.h>
#include <kalmyr/lights/SoLight.h>
#include <kalmyr/nodes/SoLOD.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoGeometry.h>
#include <kalmyr/shapes/SoIndexedMarkerSet.h>
#include <kalmyr/shapes/SoMarkerSet.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLLight.h>
#include <kalmyr/vrml/SoVRMLLOD.h>
#include <kalmyr/vrml/SoVRMLParent.h>
#include <kalmyr/vrml/SoVRMLPointLight.h>
#include <kalmyr/vrml/SoVRMLSpotLight.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

namespace {

/// Groups without a state of their own are flattened: what they hold several times over is made as
/// often, and without end where that goes on level upon level.
constexpr int kMaxMade = 10'000'000;

SoSceneConversionAction* self(SoAction* action)
{
    return static_cast<SoSceneConversionAction*>(action);
}

bool isSame(const SbMatrix& a, const SbMatrix& b)
{
    for (int i = 0; i < 16; ++i)
        if (a[i / 4][i % 4] != b[i / 4][i % 4])
            return false;
    return true;
}

/// Lights of VRML97 that shine on everything.
bool isSceneLight(const SoNode* node)
{
    return node->isOfType(SoVRMLPointLight::getClassTypeId())
           || node->isOfType(SoVRMLSpotLight::getClassTypeId());
}

} // namespace

SoSceneConversionAction::SoSceneConversionAction() = default;
SoSceneConversionAction::~SoSceneConversionAction() = default;

void SoSceneConversionAction::addMethods(AddMethod add)
{
    add(SoNode::getClassTypeId(),
        [](SoAction* action, SoNode* node) { self(action)->convertNode(node); });
    const SoActionMethod group = [](SoAction* action, SoNode* node) {
        self(action)->convertGroup(node);
    };
    add(SoSeparator::getClassTypeId(), group);
    add(SoVRMLParent::getClassTypeId(), group);
    add(SoSwitch::getClassTypeId(), [](SoAction* action, SoNode* node) {
        self(action)->convertSwitch(node,
                                    static_cast<SoSwitch*>(node)->chooseChild(action->getState()));
    });
    add(SoVRMLSwitch::getClassTypeId(), [](SoAction* action, SoNode* node) {
        self(action)->convertSwitch(node, static_cast<SoVRMLSwitch*>(node)->whichChoice.getValue());
    });
    const SoActionMethod lod = [](SoAction* action, SoNode* node) {
        self(action)->convertLOD(node);
    };
    add(SoLOD::getClassTypeId(), lod);
    add(SoVRMLLOD::getClassTypeId(), lod);
    add(SoShape::getClassTypeId(), [](SoAction* action, SoNode* node) {
        self(action)->convertShape(static_cast<SoShape*>(node));
    });
    const SoActionMethod camera = [](SoAction* action, SoNode* node) {
        self(action)->convertCamera(node);
    };
    add(SoCamera::getClassTypeId(), camera);
    add(SoVRMLViewpoint::getClassTypeId(), camera);
    add(SoVRMLGeoViewpoint::getClassTypeId(), camera);
    const SoActionMethod light = [](SoAction* action, SoNode* node) {
        self(action)->convertLight(node);
    };
    add(SoLight::getClassTypeId(), light);
    add(SoVRMLLight::getClassTypeId(), light);
    const SoActionMethod inlined = [](SoAction* action, SoNode* node) {
        self(action)->convertInline(node);
    };
    add(SoWWWInline::getClassTypeId(), inlined);
    add(SoVRMLInline::getClassTypeId(), inlined);
}

void SoSceneConversionAction::beginTraversal(SoNode*)
{
    m_converted.clear();
    m_lost.clear();
    m_levels.clear();
    m_numMade = 0;
    m_numSceneLights = 0;
    m_result = makeRoot();
    open(m_result.get());
}

void SoSceneConversionAction::open(SoGroup* group)
{
    Level level;
    level.group = group;
    level.matrix = SoModelMatrixElement::get(getState());
    m_levels.push_back(level);
}

SoRef<SoGroup> SoSceneConversionAction::close()
{
    SoRef<SoGroup> group = m_levels.back().group;
    m_levels.pop_back();
    return group;
}

SoGroup* SoSceneConversionAction::place()
{
    const SbMatrix& model = SoModelMatrixElement::get(getState());
    Level& level = m_levels.back();
    if (isSame(model, level.matrix)) {
        level.moved = nullptr; // what comes next stands behind it in the group
        return level.group.get();
    }
    if (!level.moved || !isSame(model, level.movedMatrix)) {
        level.moved = makeTransform(model * level.matrix.inverse());
        level.movedMatrix = model;
        level.group->addChild(level.moved.get());
    }
    return level.moved.get();
}

void SoSceneConversionAction::emit(SoNode* node)
{
    if (!node)
        return;
    const SoRef<SoNode> held(node);
    place()->addChild(node);
    if (++m_numMade < kMaxMade)
        return;
    setTerminated(true);
    SoDebugError::post("SoSceneConversionAction::apply",
                       "stopped at %d nodes: they occur too often to be converted", kMaxMade);
}

bool SoSceneConversionAction::take(SoNode* node)
{
    SoNode* taken = takeOver(node);
    if (taken)
        emit(taken);
    return taken != nullptr;
}

void SoSceneConversionAction::convertNode(SoNode* node)
{
    if (take(node))
        return;
    if (SoNode* made = makeOther(node)) {
        if (!node->getName().isEmpty() && made->getName().isEmpty())
            made->setName(node->getName());
        emit(made);
        return;
    }
    if (kalmyr::detail::isLostWhenFlattened(node))
        noteLoss(node);
    node->doAction(this);
}

void SoSceneConversionAction::noteLoss(const SoNode* node)
{
    if (m_lost.insert(node->getTypeId().getIndex()).second)
        SoDebugError::postWarning("SoSceneConversionAction",
                                  "%s has no counterpart in the format and is left out",
                                  node->getTypeId().getName().getString());
}

std::uint64_t SoSceneConversionAction::stateId() const
{
    SoState* state = getState();
    const std::uint64_t ids[] = {
        state->get<SoMaterialElement>().getValueId(),
        state->get<SoTextureElement>().getValueId(),
        state->get<SoLightModelElement>().getValueId(),
        state->get<SoTextureMatrixElement>().getValueId(),
        state->get<SoMaterialBindingElement>().getValueId(),
        state->get<SoCoordinateElement>().getValueId(),
        state->get<SoNormalElement>().getValueId(),
        state->get<SoShapeHintsElement>().getValueId(),
        state->get<SoFontElement>().getValueId(),
        state->get<SoTextureCoordinateElement>().getValueId(),
        state->get<SoTextureCoordinateBindingElement>().getValueId(),
        state->get<SoTextureCoordinateSetsElement>().getValueId(),
        state->get<SoLookExtrasElement>().getValueId(),
    };
    std::uint64_t id = 1;
    for (const std::uint64_t one : ids)
        id = SoElement::mix(id, one);
    return id;
}

void SoSceneConversionAction::convertGroup(SoNode* node)
{
    if (take(node))
        return;
    const std::uint64_t key = SoElement::mix(
        stateId(), static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(node)));
    if (const auto found = m_converted.find(key);
        found != m_converted.end() && found->second.first == node) {
        emit(found->second.second.get());
        return;
    }
    const SoRef<SoGroup> made(makeGroup(node));
    if (!node->getName().isEmpty())
        made->setName(node->getName());
    emit(made.get());
    open(made.get());
    if (node->isOfType(SoVRMLParent::getClassTypeId()))
        static_cast<SoVRMLParent*>(node)->doActionLightsFirst(this);
    else
        node->doAction(this);
    close();
    m_converted[key] = {node, SoRef<SoNode>(made.get())};
}

void SoSceneConversionAction::beginGroupForRest()
{
    const SbMatrix& model = SoModelMatrixElement::get(getState());
    Level& level = m_levels.back();
    const SoRef<SoGroup> rest(isSame(model, level.matrix)
                                  ? makeGroup(nullptr)
                                  : makeTransform(model * level.matrix.inverse()));
    level.group->addChild(rest.get());
    level.group = rest;
    level.matrix = model;
    level.moved = nullptr;
}

void SoSceneConversionAction::convertSwitch(SoNode* node, int chosen)
{
    if (take(node))
        return;
    if (chosen == SO_SWITCH_ALL) {
        node->doAction(this);
        return;
    }
    const SoRef<SoGroup> made(makeSwitch(chosen));
    if (!node->getName().isEmpty())
        made->setName(node->getName());
    emit(made.get());
    const SoChildList* children = node->getChildren();
    for (int i = 0; i < children->getLength(); ++i) {
        const SoRef<SoGroup> level(makeGroup(nullptr));
        made->addChild(level.get());
        open(level.get());
        // The chosen child's effect on the state goes on behind the switch.
        if (i != chosen)
            getState()->push();
        traverse((*children)[i], i);
        if (i != chosen)
            getState()->pop();
        close();
    }
}

void SoSceneConversionAction::convertLevels(SoNode* node, SoGroup* made)
{
    const SoRef<SoGroup> held(made);
    if (!node->getName().isEmpty())
        made->setName(node->getName());
    emit(made);
    const SoChildList* children = node->getChildren();
    for (int i = 0; i < children->getLength(); ++i) {
        const SoRef<SoGroup> level(makeGroup(nullptr));
        made->addChild(level.get());
        open(level.get());
        getState()->push();
        traverse((*children)[i], i);
        getState()->pop();
        close();
    }
}

void SoSceneConversionAction::convertLOD(SoNode* node)
{
    if (take(node))
        return;
    const bool isVrml = node->isOfType(SoVRMLLOD::getClassTypeId());
    const SoMFFloat& range =
        isVrml ? static_cast<SoVRMLLOD*>(node)->range : static_cast<SoLOD*>(node)->range;
    const SbVec3f center = isVrml ? static_cast<SoVRMLLOD*>(node)->center.getValue()
                                  : static_cast<SoLOD*>(node)->center.getValue();
    const auto values = range.values();
    convertLevels(node, makeLOD({values.begin(), values.end()}, center));
}

void SoSceneConversionAction::convertShape(SoShape* shape)
{
    SoRef<SoGeometry> geometry = shape->getGeometry(getState());
    // The formats have nothing with a size in pixels but points.
    const bool isMarkers = shape->isOfType(SoMarkerSet::getClassTypeId())
                           || shape->isOfType(SoIndexedMarkerSet::getClassTypeId());
    if (geometry && isMarkers)
        geometry = kalmyr::detail::pointsOfMarkers(*geometry);
    if (!geometry || geometry->isEmpty())
        return;
    if (geometry->isSizedInPixels())
        return noteLoss(shape);
    SoNode* made = makeShape(shape, *geometry);
    if (made && !shape->getName().isEmpty() && made->getName().isEmpty())
        made->setName(shape->getName());
    emit(made);
}

void SoSceneConversionAction::convertCamera(SoNode* node)
{
    if (take(node))
        return;
    SoNode* made = makeCamera(node);
    if (made && !node->getName().isEmpty())
        made->setName(node->getName());
    emit(made);
}

void SoSceneConversionAction::convertLight(SoNode* node)
{
    if (take(node))
        return;
    const SoRef<SoNode> made(makeLight(node));
    if (!made)
        return;
    if (!node->getName().isEmpty())
        made->setName(node->getName());
    if (isSceneLight(node) && !isSceneLight(made.get())) {
        m_result->insertChild(made.get(), m_numSceneLights++);
        return;
    }
    if (node->isOfType(SoLight::getClassTypeId()) && !isSceneLight(made.get())) {
        // It shines on what follows, wherever that stands; in VRML97 on what came before, too.
        const Level& level = m_levels.back();
        const bool ordered = !made->isOfType(SoVRMLLight::getClassTypeId());
        if (!isSame(SoModelMatrixElement::get(getState()), level.matrix)
            || (!ordered && level.group->getNumChildren() > 0))
            beginGroupForRest();
    }
    emit(made.get());
}

void SoSceneConversionAction::convertInline(SoNode* node)
{
    if (take(node))
        return;
    if (node->isOfType(SoVRMLInline::getClassTypeId())) {
        auto* from = static_cast<SoVRMLInline*>(node);
        emit(makeInline(from->url.getNum() > 0 ? from->url[0] : SbString(), from->getDirectory(),
                        from->getChildData()));
    } else {
        auto* from = static_cast<SoWWWInline*>(node);
        emit(makeInline(from->name.getValue(), from->getDirectory(), from->getChildData()));
    }
}
