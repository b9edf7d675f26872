#include <kalmyr/io/SoToVRML2Action.h>

#include "ConversionTools.h"
#include "ConvertedLook.h"
#include "ConvertedOthers.h"
#include "ConvertedText.h"
#include "ConvertedTextures.h"

#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/lights/SoPointLight.h>
#include <kalmyr/lights/SoSpotLight.h>
#include <kalmyr/nodes/SoWWWAnchor.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoCylinder.h>
#include <kalmyr/shapes/SoGeometry.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLAnchor.h>
#include <kalmyr/vrml/SoVRMLAppearance.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLColor.h>
#include <kalmyr/vrml/SoVRMLCone.h>
#include <kalmyr/vrml/SoVRMLCoordinate.h>
#include <kalmyr/vrml/SoVRMLCylinder.h>
#include <kalmyr/vrml/SoVRMLDirectionalLight.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLImageTexture.h>
#include <kalmyr/vrml/SoVRMLIndexedFaceSet.h>
#include <kalmyr/vrml/SoVRMLIndexedLineSet.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLLOD.h>
#include <kalmyr/vrml/SoVRMLMaterial.h>
#include <kalmyr/vrml/SoVRMLNormal.h>
#include <kalmyr/vrml/SoVRMLPixelTexture.h>
#include <kalmyr/vrml/SoVRMLPointLight.h>
#include <kalmyr/vrml/SoVRMLPointSet.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLSphere.h>
#include <kalmyr/vrml/SoVRMLSpotLight.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>
#include <kalmyr/vrml/SoVRMLTextureCoordinate.h>
#include <kalmyr/vrml/SoVRMLTextureTransform.h>
#include <kalmyr/vrml/SoVRMLTransform.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <cmath>

SO_ACTION_SOURCE(SoToVRML2Action, SoSceneConversionAction, "ToVRML2Action")

namespace {

/// Radius of lights that shine as far as there is anything.
constexpr float kEverywhere = 1e9f;

using namespace kalmyr::detail;

bool isVrml97(const SoNode* node)
{
    const bool isUnknown = node->isOfType(SoUnknownNode::getClassTypeId());
    const SbName& type = isUnknown ? static_cast<const SoUnknownNode*>(node)->getUnknownTypeName()
                                   : node->getTypeId().getName();
    return type.view().starts_with("VRML");
}

template <class Set>
void addCorners(Set& set, const SoGeometry& geometry)
{
    auto* points = new SoVRMLCoordinate;
    fill(points->point, geometry.positions);
    set.coord = points;
    if (geometry.colors.empty())
        return;
    set.color = kalmyr::detail::vrml97Colors(geometry);
}

SoNode* faceSet(const SoGeometry& geometry)
{
    auto* faces = new SoVRMLIndexedFaceSet;
    addCorners(*faces, geometry);
    fill(faces->coordIndex, faceIndices(geometry));
    faces->solid = geometry.solid;
    if (!geometry.normals.empty()) {
        auto* normals = new SoVRMLNormal;
        fill(normals->vector, geometry.normals);
        faces->normal = normals;
    }
    if (!geometry.texCoords.empty())
        faces->texCoord = kalmyr::detail::vrml97TexCoords(geometry);
    return faces;
}

SoNode* lineSet(const SoGeometry& geometry)
{
    auto* lines = new SoVRMLIndexedLineSet;
    addCorners(*lines, geometry);
    fill(lines->coordIndex, lineIndices(geometry));
    return lines;
}

SoNode* pointSet(const SoGeometry& geometry)
{
    auto* points = new SoVRMLPointSet;
    addCorners(*points, geometry);
    return points;
}

SoNode* solid(const SoShape* shape)
{
    if (shape->isOfType(SoCube::getClassTypeId())) {
        const auto* cube = static_cast<const SoCube*>(shape);
        auto* box = new SoVRMLBox;
        box->size.setValue(cube->width.getValue(), cube->height.getValue(), cube->depth.getValue());
        return box;
    }
    if (shape->isOfType(SoSphere::getClassTypeId())) {
        auto* ball = new SoVRMLSphere;
        ball->radius = static_cast<const SoSphere*>(shape)->radius.getValue();
        return ball;
    }
    if (shape->isOfType(SoCone::getClassTypeId())) {
        const auto* from = static_cast<const SoCone*>(shape);
        auto* cone = new SoVRMLCone;
        cone->bottomRadius = from->bottomRadius.getValue();
        cone->height = from->height.getValue();
        cone->side = (from->parts.getValue() & SoCone::SIDES) != 0;
        cone->bottom = (from->parts.getValue() & SoCone::BOTTOM) != 0;
        return cone;
    }
    const auto* from = static_cast<const SoCylinder*>(shape);
    auto* cylinder = new SoVRMLCylinder;
    cylinder->radius = from->radius.getValue();
    cylinder->height = from->height.getValue();
    cylinder->side = (from->parts.getValue() & SoCylinder::SIDES) != 0;
    cylinder->top = (from->parts.getValue() & SoCylinder::TOP) != 0;
    cylinder->bottom = (from->parts.getValue() & SoCylinder::BOTTOM) != 0;
    return cylinder;
}

/// The format has no parallel view: one from afar through a narrow angle looks the same.
void placeFarAway(SoVRMLViewpoint& viewpoint, const SoOrthographicCamera& camera)
{
    constexpr float kAngle = 0.002f; // depth of n heights moves things by n thousandths of a height
    const float distance = camera.height.getValue() / (2 * std::tan(kAngle / 2));
    const float back = distance - camera.focalDistance.getValue();
    const SbVec3f behind = camera.orientation.getValue().rotated(SbVec3f(0, 0, back));
    viewpoint.position = camera.position.getValue() + behind;
    viewpoint.fieldOfView = kAngle;
}

/// Whether a texture is all that is seen: it paints the glow of a surface that shines back nothing.
bool isPaintedGlow(SoState* state)
{
    const SbColor black(0, 0, 0);
    const SoMaterialValues& material = SoMaterialElement::get(state);
    return state->get<SoTextureElement>().value().model != SoTextureValues::SURFACE
           && material.getDiffuse() == black && material.specular == black
           && material.ambient == black;
}

} // namespace

void SoToVRML2Action::initMethods()
{
    addMethods(addMethod);
}

SoToVRML2Action::SoToVRML2Action() = default;
SoToVRML2Action::~SoToVRML2Action() = default;

SoVRMLGroup* SoToVRML2Action::getVRML2SceneGraph() const
{
    SoGroup* result = getResult();
    // A root that was a group already needs no other around it.
    if (result && result->getNumChildren() == 1) {
        SoNode* only = result->getChild(0);
        if (only->getTypeId() == SoVRMLGroup::getClassTypeId())
            result = static_cast<SoVRMLGroup*>(only);
    }
    return static_cast<SoVRMLGroup*>(result);
}

void SoToVRML2Action::beginTraversal(SoNode* root)
{
    m_appearances.clear();
    m_materials.clear();
    m_textures.clear();
    m_geometries.clear();
    m_holdOthers.clear();
    SoSceneConversionAction::beginTraversal(root);
}

/// Whether children further down are of other families; groups of VRML97 may hold anything.
bool SoToVRML2Action::holdsOthers(const SoNode* node)
{
    // What an inline shows stands in another file.
    const bool isInline = node->isOfType(SoVRMLInline::getClassTypeId());
    const SoChildList* children = isInline ? nullptr : node->getChildren();
    if (!children || children->getLength() == 0)
        return false;
    // Asked for at each level, and of nodes that occur several times.
    if (const auto known = m_holdOthers.find(node); known != m_holdOthers.end())
        return known->second;
    bool holds = false;
    for (int i = 0; !holds && i < children->getLength(); ++i)
        holds = !isVrml97((*children)[i]) || holdsOthers((*children)[i]);
    return m_holdOthers[node] = holds;
}

SoNode* SoToVRML2Action::takeOver(SoNode* node)
{
    return isVrml97(node) && !holdsOthers(node) ? node : nullptr;
}

SoGroup* SoToVRML2Action::makeRoot()
{
    return new SoVRMLGroup;
}

SoGroup* SoToVRML2Action::makeGroup(const SoNode* source)
{
    if (!source || !source->isOfType(SoWWWAnchor::getClassTypeId()))
        return new SoVRMLGroup;
    const auto* from = static_cast<const SoWWWAnchor*>(source);
    auto* anchor = new SoVRMLAnchor;
    anchor->url = from->name.getValue();
    anchor->description = from->description.getValue();
    return anchor;
}

SoGroup* SoToVRML2Action::makeTransform(const SbMatrix& matrix)
{
    auto* made = new SoVRMLTransform;
    setTransform(*made, made->scale, matrix);
    return made;
}

SoGroup* SoToVRML2Action::makeSwitch(int chosen)
{
    auto* made = new SoVRMLSwitch;
    made->whichChoice = chosen;
    return made;
}

SoGroup* SoToVRML2Action::makeLOD(const std::vector<float>& ranges, const SbVec3f& center)
{
    auto* made = new SoVRMLLOD;
    fill(made->range, ranges);
    made->center = center;
    return made;
}

SoNode* SoToVRML2Action::makeMaterial(bool isLit)
{
    const auto& element = getState()->get<SoMaterialElement>();
    const std::uint64_t key = SoElement::mix(element.getValueId(), isLit);
    SoRef<SoNode>& known = m_materials[key];
    if (known && m_reuseProperties)
        return known.get();
    const SoMaterialValues& values = element.value();
    auto* made = new SoVRMLMaterial;
    const SbColor diffuse = values.getDiffuse();
    if (isLit) {
        made->diffuseColor = diffuse;
        made->emissiveColor = values.emissive;
        made->specularColor = values.specular;
        made->shininess = values.shininess;
        const float brightness = diffuse[0] + diffuse[1] + diffuse[2];
        const float ambient = values.ambient[0] + values.ambient[1] + values.ambient[2];
        made->ambientIntensity = brightness > 0 ? std::min(ambient / brightness, 1.0f) : 0.0f;
    } else {
        made->diffuseColor.setValue(0, 0, 0);
        made->ambientIntensity = 0;
        made->emissiveColor = diffuse;
    }
    if (values.getTransparency() > 0)
        made->transparency = values.getTransparency();
    known = made;
    return made;
}

SoNode* SoToVRML2Action::makeTexture()
{
    const auto& element = getState()->get<SoTextureElement>();
    if (!kalmyr::detail::hasFileTexture(getState()))
        return nullptr;
    SoRef<SoNode>& known = m_textures[element.getValueId()];
    if (known && m_reuseProperties)
        return known.get();
    const SbString file = textureFile(getState());
    SoVRMLTexture* made = nullptr;
    if (file.isEmpty()) {
        auto* pixels = new SoVRMLPixelTexture;
        pixels->image = element.value().image;
        made = pixels;
    } else {
        auto* image = new SoVRMLImageTexture;
        image->url = file;
        image->setDirectory(textureFolder(getState()));
        made = image;
    }
    made->repeatS = element.value().wrapS == SoTextureValues::REPEAT;
    made->repeatT = element.value().wrapT == SoTextureValues::REPEAT;
    known = made;
    return made;
}

SoNode* SoToVRML2Action::makeAppearance(bool isLit)
{
    SoState* state = getState();
    const auto& matrix = state->get<SoTextureMatrixElement>();
    std::uint64_t key = state->get<SoMaterialElement>().getValueId();
    key = SoElement::mix(key, state->get<SoTextureElement>().getValueId());
    key = SoElement::mix(key, isLit);
    key = SoElement::mix(key, matrix.getValueId());
    key = SoElement::mix(key, state->get<SoLookExtrasElement>().getValueId());
    SoRef<SoNode>& known = m_appearances[key];
    if (known && m_reuseAppearances)
        return known.get();
    auto* made = new SoVRMLAppearance;
    known = made;
    const bool isSeveral = kalmyr::detail::hasSeveralTextures(state);
    SoNode* first = makeTexture();
    made->texture = isSeveral ? kalmyr::detail::multiTexture(state, first) : first;
    // A texture does not paint what glows: without a material the picture is seen as it is.
    if (!made->texture.getValue() || isSeveral || (isLit && !isPaintedGlow(state)))
        made->material = makeMaterial(isLit);
    if (!made->texture.getValue())
        return made;
    SoNode* transform = kalmyr::detail::vrml97TextureTransform(matrix.value());
    made->textureTransform =
        isSeveral ? kalmyr::detail::multiTextureTransform(state, transform) : transform;
    return made;
}

SoNode* SoToVRML2Action::makeGeometry(SoShape* shape, const SoGeometry& geometry)
{
    SoRef<SoNode>& known = m_geometries[geometry.getId()];
    if (known && m_reuseGeometries)
        return known.get();
    SoNode* text = vrml97Text(shape, getState());
    known = text                            ? text
            : isPlainSolid(shape, geometry) ? solid(shape)
            : !geometry.triangles.empty()   ? faceSet(geometry)
            : !geometry.lines.empty()       ? lineSet(geometry)
                                            : pointSet(geometry);
    return known.get();
}

SoNode* SoToVRML2Action::makeShape(SoShape* shape, const SoGeometry& geometry)
{
    auto* made = new SoVRMLShape;
    // Lines and points shine in one colour, whatever lights there are.
    const auto model = getState()->get<SoLightModelElement>().value().model;
    const bool isLit = model == SoLightModelValue::PHONG && !geometry.triangles.empty();
    made->appearance = makeAppearance(isLit);
    made->geometry = makeGeometry(shape, geometry);
    return made;
}

SoNode* SoToVRML2Action::makeCamera(const SoNode* node)
{
    const auto* camera = static_cast<const SoCamera*>(node);
    auto* made = new SoVRMLViewpoint;
    made->position = camera->position.getValue();
    made->orientation = camera->orientation.getValue();
    made->description = SbString(camera->getName().getString());
    if (camera->isOfType(SoPerspectiveCamera::getClassTypeId()))
        made->fieldOfView = static_cast<const SoPerspectiveCamera*>(camera)->heightAngle.getValue();
    else
        placeFarAway(*made, static_cast<const SoOrthographicCamera&>(*camera));
    return made;
}

SoNode* SoToVRML2Action::makeLight(const SoNode* node)
{
    if (node->isOfType(SoSpotLight::getClassTypeId())) {
        const auto* from = static_cast<const SoSpotLight*>(node);
        auto* made = lightLike<SoVRMLSpotLight>(*from);
        made->radius = kEverywhere;
        made->location = from->location.getValue();
        made->direction = from->direction.getValue();
        made->cutOffAngle = from->cutOffAngle.getValue();
        made->beamWidth = from->cutOffAngle.getValue() * (1 - from->dropOffRate.getValue());
        return made;
    }
    if (node->isOfType(SoPointLight::getClassTypeId())) {
        const auto* from = static_cast<const SoPointLight*>(node);
        auto* made = lightLike<SoVRMLPointLight>(*from);
        made->radius = kEverywhere;
        made->location = from->location.getValue();
        return made;
    }
    if (!node->isOfType(SoDirectionalLight::getClassTypeId()))
        return nullptr;
    const auto* from = static_cast<const SoDirectionalLight*>(node);
    auto* made = lightLike<SoVRMLDirectionalLight>(*from);
    made->direction = from->direction.getValue();
    return made;
}

SoNode* SoToVRML2Action::makeOther(SoNode* node)
{
    return vrml97Other(node);
}

SoNode* SoToVRML2Action::makeInline(const SbString& url, const SbString& folder, SoNode* content)
{
    auto* made = new SoVRMLInline;
    made->url = url;
    made->setDirectory(folder);
    made->setChildData(content);
    return made;
}
