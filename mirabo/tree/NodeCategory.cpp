#include "mirabo/tree/NodeCategory.h"

#include <kalmyr/base/SbName.h>

#include <QFile>
#include <QHash>

#include <algorithm>
#include <vector>

namespace mirabo {

namespace {

using C = NodeCategory;

/// A type below `within` (any, when empty) and at or below `type` is of that category.
struct Rule {
    const char* within;
    const char* type;
    C category;
};

// The first rule that fits decides. Types are given by name: modules that are not loaded have none.
constexpr Rule kRules[] = {
    {"", "Dragger", C::Dragger},
    {"Separator", "Selection", C::Selection},
    {"Group", "Separator", C::Separator},
    {"Group", "Switch", C::Switch},
    {"", "Group", C::Group},
    {"Transformation", "TransformManip", C::Manipulator},
    {"", "Transformation", C::Transform},
    {"", "VRMLMultiTextureTransform", C::Transform},
    {"", "VRMLTextureTransform", C::Transform},
    {"", "Texture2Transform", C::Transform},
    {"", "Callback", C::Callback},
    {"", "EventCallback", C::Callback},
    {"", "Shape", C::Shape},
    {"", "VRMLShape", C::Shape},
    {"", "VRMLLineSet", C::Shape},
    {"", "Camera", C::Camera},
    {"", "VRMLViewpoint", C::Camera},
    {"Light", "DirectionalLightManip", C::Manipulator},
    {"Light", "PointLightManip", C::Manipulator},
    {"Light", "SpotLightManip", C::Manipulator},
    {"", "Light", C::Light},
    {"", "ClipPlaneManip", C::Manipulator},
    {"", "VRMLLight", C::Light},
    {"", "Coordinate3", C::Topology},
    {"", "Coordinate4", C::Topology},
    {"", "Normal", C::Topology},
    {"", "VRMLNormal", C::Topology},
    {"", "VRMLCoordinate", C::Topology},
    {"", "VRMLTextureCoordinate", C::Topology},
    {"", "VRMLMultiTextureCoordinate", C::Topology},
    {"", "TextureCoordinate2", C::Topology},
    {"", "TextureCoordinate3", C::Topology},
    {"", "VertexProperty", C::Topology},
    {"", "Material", C::Appearance},
    {"", "Background", C::Appearance},
    {"", "MaterialBinding", C::Appearance},
    {"", "BaseColor", C::Appearance},
    {"", "ColorIndex", C::Appearance},
    {"", "DrawStyle", C::Appearance},
    {"", "Font", C::Appearance},
    {"", "Texture2", C::Appearance},
    {"", "Texture3", C::Appearance},
    {"", "TextureCoordinateBinding", C::Appearance},
    {"", "TextureCoordinateFunction", C::Appearance},
    {"", "ShapeHints", C::Appearance},
    {"", "VRMLAppearance", C::Appearance},
    {"", "VRMLBackground", C::Appearance},
    {"", "VRMLColor", C::Appearance},
    {"", "VRMLColorRGBA", C::Appearance},
    {"", "VRMLFog", C::Appearance},
    {"", "VRMLMaterial", C::Appearance},
    {"", "VRMLTexture", C::Appearance},
    {"", "VRMLTextureBackground", C::Appearance},
    {"", "VRMLMultiTexture", C::Appearance},
    {"", "PickStyle", C::Appearance},
    {"", "BaseKit", C::Nodekit},
};

struct IconName {
    C category;
    const char* name;
};

constexpr IconName kIcons[] = {
    {C::Unknown, "help"},
    {C::Appearance, "appearance"},
    {C::Callback, "callback"},
    {C::Camera, "camera"},
    {C::Group, "group"},
    {C::Light, "light"},
    {C::Manipulator, "manipulator"},
    {C::Nodekit, "nodekit"},
    {C::Property, "property"},
    {C::Selection, "selection"},
    {C::Separator, "separator"},
    {C::Shape, "shape"},
    {C::Switch, "switch"},
    {C::Topology, "topology"},
    {C::Transform, "transform"},
};

/// A type and everything that it derives from. Ancestors are registered before their heirs, so the
/// answers about a type never change, whatever is registered later.
class Ancestry {
public:
    explicit Ancestry(SoType type)
    {
        for (; !type.isBad(); type = type.getParent())
            m_names.push_back(type.getName());
    }
    bool has(const char* name) const
    {
        return std::any_of(m_names.begin(), m_names.end(), [name](SbName n) { return n == name; });
    }

private:
    std::vector<SbName> m_names;
};

C decide(const Ancestry& ancestry)
{
    for (const Rule& rule : kRules)
        if ((!*rule.within || ancestry.has(rule.within)) && ancestry.has(rule.type))
            return rule.category;
    return C::Property;
}

NodeTraits makeTraits(SoType type)
{
    const Ancestry ancestry(type);
    NodeTraits traits;
    traits.category = decide(ancestry);
    traits.isGroup = ancestry.has("Group");
    traits.isFile = ancestry.has("File");
    traits.isInline = ancestry.has("WWWInline") || ancestry.has("VRMLInline");
    traits.isVrmlParent = ancestry.has("VRMLParent");
    traits.isVrml = type.getName().view().starts_with("VRML");
    traits.isKit = ancestry.has("BaseKit");
    return traits;
}

QHash<QByteArray, QIcon>& icons()
{
    static QHash<QByteArray, QIcon> cache;
    return cache;
}

} // namespace

const NodeTraits& traitsOf(SoType type)
{
    static std::vector<NodeTraits> known;
    const auto index = static_cast<std::size_t>(type.getIndex());
    if (index >= known.size())
        known.resize(
            std::max<std::size_t>(index + 1, static_cast<std::size_t>(SoType::getNumTypes())));
    NodeTraits& traits = known[index];
    if (traits.category == C::Unknown && !type.isBad())
        traits = makeTraits(type);
    return traits;
}

NodeCategory categoryOf(SoType type)
{
    return traitsOf(type).category;
}

QIcon namedIcon(const char* name)
{
    const auto known = icons().constFind(name);
    if (known != icons().constEnd())
        return *known;
    const QString path =
        QString::fromLatin1(":/Mirabo_icons/Icons/%1.png").arg(QLatin1String(name));
    QIcon icon;
    if (QFile::exists(path)) {
        icon.addFile(path);
        icon.addFile(path, QSize(), QIcon::Selected); // as drawn, not tinted into the selection
    }
    return *icons().insert(name, icon);
}

QIcon categoryIcon(NodeCategory category)
{
    for (const IconName& icon : kIcons)
        if (icon.category == category)
            return namedIcon(icon.name);
    return QIcon();
}

QIcon nodeIcon(SoType type)
{
    return categoryIcon(categoryOf(type));
}

void forgetCategoryIcons()
{
    icons().clear();
}

} // namespace mirabo
