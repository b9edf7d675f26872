#include <kalmyr/io/SoToVRMLAction.h>

#include "ConversionTools.h"
#include "ConvertedLook.h"
#include "ConvertedOthers.h"
#include "ConvertedText.h"
#include "ConvertedTextures.h"

#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/lights/SoPointLight.h>
#include <kalmyr/lights/SoSpotLight.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoLOD.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoNormal.h>
#include <kalmyr/nodes/SoNormalBinding.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoTexture2Transform.h>
#include <kalmyr/nodes/SoTextureCoordinate2.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoWWWAnchor.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoCylinder.h>
#include <kalmyr/shapes/SoGeometry.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>
#include <kalmyr/shapes/SoIndexedLineSet.h>
#include <kalmyr/shapes/SoPointSet.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLAnchor.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLCone.h>
#include <kalmyr/vrml/SoVRMLCylinder.h>
#include <kalmyr/vrml/SoVRMLDirectionalLight.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLPointLight.h>
#include <kalmyr/vrml/SoVRMLSphere.h>
#include <kalmyr/vrml/SoVRMLSpotLight.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <algorithm>
#include <iterator>
#include <unordered_set>

SO_ACTION_SOURCE(SoToVRMLAction, SoSceneConversionAction, "ToVRMLAction")

namespace {

using namespace kalmyr::detail;

constexpr std::string_view kTypes[] = {"AsciiText",
                                       "Cone",
                                       "Coordinate3",
                                       "Cube",
                                       "Cylinder",
                                       "DirectionalLight",
                                       "FontStyle",
                                       "Group",
                                       "IndexedFaceSet",
                                       "IndexedLineSet",
                                       "Info",
                                       "LOD",
                                       "Material",
                                       "MaterialBinding",
                                       "MatrixTransform",
                                       "Normal",
                                       "NormalBinding",
                                       "OrthographicCamera",
                                       "PerspectiveCamera",
                                       "PointLight",
                                       "PointSet",
                                       "Rotation",
                                       "Scale",
                                       "Separator",
                                       "ShapeHints",
                                       "Sphere",
                                       "SpotLight",
                                       "Switch",
                                       "Texture2",
                                       "Texture2Transform",
                                       "TextureCoordinate2",
                                       "Transform",
                                       "TransformSeparator",
                                       "Translation",
                                       "UnknownNode",
                                       "WWWAnchor",
                                       "WWWInline"};

/// The format lets files have types of their own. Text that may hold nodes would be read otherwise
/// there than where it comes from.
bool isOwnNode(const SoUnknownNode& node)
{
    const std::string& body = node.getBody();
    return !node.getUnknownTypeName().view().starts_with("VRML") && body.find('{') == body.npos
           && body.find("USE") == body.npos;
}

/// Whether a node and everything below it can be written as it is.
bool isPure(const SoNode* node, std::unordered_set<const SoNode*>& seen)
{
    if (!seen.insert(node).second)
        return true;
    const bool isUnknown = node->isOfType(SoUnknownNode::getClassTypeId());
    if (isUnknown ? !isOwnNode(static_cast<const SoUnknownNode&>(*node))
                  : !SoToVRMLAction::isVrml1Type(node->getTypeId()))
        return false;
    const bool isInline = node->isOfType(SoWWWInline::getClassTypeId());
    const SoChildList* children = isInline ? nullptr : node->getChildren();
    for (int i = 0; children && i < children->getLength(); ++i)
        if (!isPure((*children)[i], seen))
            return false;
    const SoFieldData* data = node->getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(node, i);
        if (!field->isOfType(SoSFNode::getClassTypeId()))
            continue;
        const SoNode* held = static_cast<const SoSFNode*>(field)->getValue();
        if (held && !isPure(held, seen))
            return false;
    }
    return true;
}

SoNode* cone(float radius, float height, bool side, bool bottom)
{
    auto* made = new SoCone;
    made->bottomRadius = radius;
    made->height = height;
    if (!side || !bottom)
        made->parts = (side ? SoCone::SIDES : 0) | (bottom ? SoCone::BOTTOM : 0);
    return made;
}

SoNode* cylinder(const SoVRMLCylinder& from)
{
    auto* made = new SoCylinder;
    made->radius = from.radius.getValue();
    made->height = from.height.getValue();
    const int parts = (from.side.getValue() ? SoCylinder::SIDES : 0)
                      | (from.top.getValue() ? SoCylinder::TOP : 0)
                      | (from.bottom.getValue() ? SoCylinder::BOTTOM : 0);
    if (parts != SoCylinder::ALL)
        made->parts = parts;
    return made;
}

/// A solid that the format has; null for other shapes.
SoNode* solid(SoShape* shape, const SoGeometry& geometry)
{
    if (isPlainSolid(shape, geometry))
        return shape;
    if (shape->isOfType(SoVRMLBox::getClassTypeId())) {
        const SbVec3f size = static_cast<SoVRMLBox*>(shape)->size.getValue();
        auto* made = new SoCube;
        made->width = size[0];
        made->height = size[1];
        made->depth = size[2];
        return made;
    }
    if (shape->isOfType(SoVRMLSphere::getClassTypeId())) {
        auto* made = new SoSphere;
        made->radius = static_cast<SoVRMLSphere*>(shape)->radius.getValue();
        return made;
    }
    if (shape->isOfType(SoVRMLCone::getClassTypeId())) {
        const auto* from = static_cast<SoVRMLCone*>(shape);
        return cone(from->bottomRadius.getValue(), from->height.getValue(), from->side.getValue(),
                    from->bottom.getValue());
    }
    if (shape->isOfType(SoVRMLCylinder::getClassTypeId()))
        return cylinder(*static_cast<SoVRMLCylinder*>(shape));
    return nullptr;
}

} // namespace

void SoToVRMLAction::initMethods()
{
    addMethods(addMethod);
}

SoToVRMLAction::SoToVRMLAction() = default;
SoToVRMLAction::~SoToVRMLAction() = default;

bool SoToVRMLAction::isVrml1Type(SoType type)
{
    return std::find(std::begin(kTypes), std::end(kTypes), type.getName().view())
           != std::end(kTypes);
}

void SoToVRMLAction::apply(SoNode* root)
{
    m_whole = nullptr;
    std::unordered_set<const SoNode*> seen;
    if (root && isPure(root, seen)) {
        m_whole = root;
    } else {
        SoAction::apply(root);
    }
}

void SoToVRMLAction::apply(SoPath* path)
{
    m_whole = nullptr;
    SoAction::apply(path);
}

SoNode* SoToVRMLAction::getVRMLSceneGraph() const
{
    SoGroup* result = getResult();
    if (m_whole || !result)
        return m_whole.get();
    SoNode* only = result->getNumChildren() == 1 ? result->getChild(0) : nullptr;
    return only && only->getTypeId() == SoSeparator::getClassTypeId() ? only : result;
}

SoGroup* SoToVRMLAction::makeRoot()
{
    return new SoSeparator;
}

SoGroup* SoToVRMLAction::makeGroup(const SoNode* source)
{
    if (source && source->isOfType(SoVRMLAnchor::getClassTypeId())) {
        const auto* from = static_cast<const SoVRMLAnchor*>(source);
        auto* made = new SoWWWAnchor;
        if (from->url.getNum() > 0)
            made->name = from->url[0];
        made->description = from->description.getValue();
        return made;
    }
    if (source && source->isOfType(SoWWWAnchor::getClassTypeId())) {
        const auto* from = static_cast<const SoWWWAnchor*>(source);
        auto* made = new SoWWWAnchor;
        made->name = from->name.getValue();
        made->description = from->description.getValue();
        made->map = from->map.getValue();
        return made;
    }
    return new SoSeparator;
}

SoGroup* SoToVRMLAction::makeTransform(const SbMatrix& matrix)
{
    auto* made = new SoTransform;
    setTransform(*made, made->scaleFactor, matrix);
    auto* group = new SoSeparator;
    group->addChild(made);
    return group;
}

SoGroup* SoToVRMLAction::makeSwitch(int chosen)
{
    auto* made = new SoSwitch;
    made->whichChild = chosen;
    return made;
}

SoGroup* SoToVRMLAction::makeLOD(const std::vector<float>& ranges, const SbVec3f& center)
{
    auto* made = new SoLOD;
    fill(made->range, ranges);
    made->center = center;
    return made;
}

void SoToVRMLAction::addLook(SoGroup& group, const SoGeometry& geometry)
{
    SoState* state = getState();
    const SoMaterialValues& values = SoMaterialElement::get(state);
    // Lines and points have no light to shine back, and what shines by itself has one colour.
    const bool lit = state->get<SoLightModelElement>().value().model == SoLightModelValue::PHONG
                     || geometry.triangles.empty() || !geometry.colors.empty();
    auto* material = new SoMaterial;
    group.addChild(material);
    if (lit) {
        material->ambientColor = values.ambient;
        material->diffuseColor = values.getDiffuse();
        material->specularColor = values.specular;
        material->emissiveColor = values.emissive;
        material->shininess = values.shininess;
    } else {
        // The format has no unlit shapes but those that only shine.
        material->ambientColor.setValue(0, 0, 0);
        material->diffuseColor.setValue(0, 0, 0);
        material->emissiveColor = values.getDiffuse();
    }
    if (values.getTransparency() > 0)
        material->transparency = values.getTransparency();
    if (!geometry.colors.empty()) {
        fill(material->diffuseColor, colorsOf(geometry));
        auto* binding = new SoMaterialBinding;
        binding->value = SoMaterialBinding::PER_VERTEX_INDEXED;
        group.addChild(binding);
    }
    const SoTextureValues& texture = state->get<SoTextureElement>().value();
    if (!kalmyr::detail::hasFileTexture(state))
        return;
    auto* picture = new SoTexture2;
    group.addChild(picture);
    const SbString file = textureFile(state);
    if (file.isEmpty()) {
        picture->image = texture.image;
    } else {
        picture->filename = file;
        picture->setDirectory(textureFolder(state));
    }
    picture->wrapS = texture.wrapS;
    picture->wrapT = texture.wrapT;
    const SbMatrix& matrix = SoTextureMatrixElement::get(state);
    if (matrix == SbMatrix::identity())
        return;
    const TextureTransform factors = factorOldTextureMatrix(matrix);
    auto* transform = new SoTexture2Transform;
    transform->translation.setValue(factors.translation[0], factors.translation[1]);
    transform->rotation = factors.rotation;
    transform->scaleFactor.setValue(factors.scale[0], factors.scale[1]);
    group.addChild(transform);
}

void SoToVRMLAction::addGeometry(SoGroup& group, SoShape* shape, const SoGeometry& geometry)
{
    if (addVrml1Text(group, shape, getState()))
        return;
    if (SoNode* plain = solid(shape, geometry)) {
        group.addChild(plain);
        return;
    }
    auto* points = new SoCoordinate3;
    fill(points->point, geometry.positions);
    group.addChild(points);
    if (geometry.triangles.empty()) {
        if (geometry.lines.empty()) {
            group.addChild(new SoPointSet);
            return;
        }
        auto* lines = new SoIndexedLineSet;
        fill(lines->coordIndex, lineIndices(geometry));
        group.addChild(lines);
        return;
    }
    auto* hints = new SoShapeHints;
    hints->vertexOrdering = SoShapeHints::COUNTERCLOCKWISE;
    if (geometry.solid)
        hints->shapeType = SoShapeHints::SOLID;
    group.addChild(hints);
    if (!geometry.normals.empty()) {
        auto* normals = new SoNormal;
        fill(normals->vector, geometry.normals);
        group.addChild(normals);
        auto* binding = new SoNormalBinding;
        binding->value = SoNormalBinding::PER_VERTEX_INDEXED;
        group.addChild(binding);
    }
    const std::vector<std::int32_t> indices = faceIndices(geometry);
    auto* faces = new SoIndexedFaceSet;
    fill(faces->coordIndex, indices);
    if (!geometry.texCoords.empty()) {
        auto* coords = new SoTextureCoordinate2;
        fill(coords->point, geometry.texCoords);
        group.addChild(coords);
        fill(faces->textureCoordIndex, indices);
    }
    group.addChild(faces);
}

SoNode* SoToVRMLAction::makeShape(SoShape* shape, const SoGeometry& geometry)
{
    auto* group = new SoSeparator;
    addLook(*group, geometry);
    addGeometry(*group, shape, geometry);
    return group;
}

SoNode* SoToVRMLAction::makeCamera(const SoNode* node)
{
    if (node->isOfType(SoVRMLGeoViewpoint::getClassTypeId())) {
        const auto* from = static_cast<const SoVRMLGeoViewpoint*>(node);
        SbVec3f place;
        SbRotation turn;
        if (!from->getView(place, turn))
            return nullptr;
        auto* made = new SoPerspectiveCamera;
        made->position = place;
        made->orientation = turn;
        made->heightAngle = from->fieldOfView.getValue();
        return made;
    }
    if (!node->isOfType(SoVRMLViewpoint::getClassTypeId()))
        return isVrml1Type(node->getTypeId()) ? const_cast<SoNode*>(node) : nullptr;
    const auto* from = static_cast<const SoVRMLViewpoint*>(node);
    auto* made = new SoPerspectiveCamera;
    made->position = from->position.getValue();
    made->orientation = from->orientation.getValue();
    made->heightAngle = from->getHeightAngle(1.0f);
    return made;
}

SoNode* SoToVRMLAction::makeLight(const SoNode* node)
{
    if (node->isOfType(SoVRMLSpotLight::getClassTypeId())) {
        const auto* from = static_cast<const SoVRMLSpotLight*>(node);
        auto* made = lightLike<SoSpotLight>(*from);
        const SbMatrix& toRoot = SoModelMatrixElement::get(getState());
        made->location = toRoot.point(from->location.getValue());
        made->direction = toRoot.direction(from->direction.getValue());
        made->cutOffAngle = from->cutOffAngle.getValue();
        if (from->cutOffAngle.getValue() > 0)
            made->dropOffRate = std::clamp(
                1 - from->beamWidth.getValue() / from->cutOffAngle.getValue(), 0.0f, 1.0f);
        return made;
    }
    if (node->isOfType(SoVRMLPointLight::getClassTypeId())) {
        const auto* from = static_cast<const SoVRMLPointLight*>(node);
        auto* made = lightLike<SoPointLight>(*from);
        made->location = SoModelMatrixElement::get(getState()).point(from->location.getValue());
        return made;
    }
    if (node->isOfType(SoVRMLDirectionalLight::getClassTypeId())) {
        const auto* from = static_cast<const SoVRMLDirectionalLight*>(node);
        auto* made = lightLike<SoDirectionalLight>(*from);
        made->direction = from->direction.getValue();
        return made;
    }
    return isVrml1Type(node->getTypeId()) ? const_cast<SoNode*>(node) : nullptr;
}

SoNode* SoToVRMLAction::makeOther(SoNode* node)
{
    return vrml1Other(node);
}

SoNode* SoToVRMLAction::makeInline(const SbString& url, const SbString& folder, SoNode* content)
{
    auto* made = new SoWWWInline;
    made->name = url;
    made->setDirectory(folder);
    made->setChildData(content);
    return made;
}
