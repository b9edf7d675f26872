#pragma once

#include <kalmyr/core/SoType.h>

#include <QIcon>

/// Traits of a node's type: the category that decides its icon and how it is
/// filtered, and how the tree finds what stands below it. All of it is looked up once per type.
namespace mirabo {

/// Bits of the filter mask; a dragger has one of its own and no icon.
enum class NodeCategory : int {
    Unknown = 0,
    Appearance = 1,
    Callback = 2,
    Camera = 4,
    Group = 8,
    Light = 16,
    Manipulator = 32,
    Nodekit = 64,
    Property = 128,
    Selection = 256,
    Separator = 512,
    Shape = 1024,
    Switch = 2048,
    Topology = 4096,
    Transform = 8192,
    Dragger = 16384
};

struct NodeTraits {
    NodeCategory category = NodeCategory::Unknown;
    bool isGroup = false;
    bool isFile = false;
    bool isInline = false;     ///< an inline of either file format
    bool isVrmlParent = false; ///< a VRML97 group: its node fields stand for its children
    bool isVrml = false;       ///< any VRML97 node
    bool isKit = false;
};

/// The reference is valid until the next call.
const NodeTraits& traitsOf(SoType type);

/// By the first rule that fits; Property when none does, never Unknown for a node type.
NodeCategory categoryOf(SoType type);

/// Icon of a category, loaded on first use; null for draggers.
QIcon categoryIcon(NodeCategory category);
QIcon nodeIcon(SoType type);

/// The named image compiled into the program; null for a name that there is not.
QIcon namedIcon(const char* name);

/// Lets the loaded icons go, which must not outlive the application object.
void forgetCategoryIcons();

} // namespace mirabo
