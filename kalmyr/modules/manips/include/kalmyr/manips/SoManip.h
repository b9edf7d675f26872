#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/draggers/SoDragger.h>
#include <kalmyr/sensors/SoFieldSensor.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

class SoAction;
class SoPath;

namespace kalmyr::detail {

/// Sets a field to what it does not say already.
template <class Field, class Value>
void putValue(Field& field, const Value& value)
{
    if (!(field.getValue() == value))
        field.setValue(value);
}

/// The dragger inside a node that can be edited in the scene: the node's fields follow the dragger
/// while the user moves it, and the dragger follows them at all other times. A child that is the
/// node's own business: not written, not copied.
class KALMYR_VISIBLE ManipDragger {
public:
    using Step = std::function<void()>;

    /// `toNode` puts what the dragger says into the owner's fields, `toDragger` the other way; both
    /// set only what differs.
    ManipDragger(SoNode* owner, SoDragger* dragger, Step toNode, Step toDragger);
    ~ManipDragger();
    ManipDragger(const ManipDragger&) = delete;
    ManipDragger& operator=(const ManipDragger&) = delete;

    /// Follows these fields of the owner from now on; last in its constructor.
    void follow(std::initializer_list<SoField*> fields);
    SoChildList* children() { return &m_children; }
    SoDragger* dragger() const { return m_dragger.get(); }
    /// Not where the action is on its way to something beside the owner.
    void traverse(SoAction* action);

private:
    static void dragged(void* data, SoDragger* dragger);
    void update(const Step& step);

    SoChildList m_children;
    SoRef<SoDragger> m_dragger;
    Step m_toNode;
    Step m_toDragger;
    std::vector<std::unique_ptr<SoFieldSensor>> m_sensors;
    bool m_updating = false;
};

/// Size on the screen of the draggers in manipulators.
inline constexpr float kManipSize = 70;

} // namespace kalmyr::detail

/// Puts nodes that can be edited in the scene in the place of plain ones, and back.
class KALMYR_VISIBLE SoManip {
public:
    SoManip() = delete;

    /// Replaces the node at the end of a path by one of another class. It gets the name and the
    /// override flag of the old node, and for the fields that both have, by name, their values,
    /// what feeds them and what they feed. Works for children of groups and for parts of kits.
    /// False, with nothing changed, for a node that is neither, and where the new one may not
    /// stand.
    ///
    /// For a transform: replaceNode(path, new SoTransformManip).
    static bool replaceNode(SoPath* path, SoNode* by);
    /// Replaces the manipulator at the end of a path by a plain node, in the same way; without one
    /// by a new node of the class that the manipulator extends. False for what is no manipulator.
    static bool replaceManip(SoPath* path, SoNode* by = nullptr);
    /// Whether the node is one of this module.
    static bool isManip(const SoNode* node);
};
