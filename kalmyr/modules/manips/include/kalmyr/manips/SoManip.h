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

/// The dragger inside a node that can be edited in the scene: the node's fields follow the dragger
/// while the user moves it, and the dragger follows them at all other times. A child that is the
/// node's own business: not written, not copied.
class KALMYR_VISIBLE ManipDragger {
public:
    using Step = std::function<void()>;

    /// `toNode` puts what the dragger says into the owner's fields, `toDragger` the other way.
    ManipDragger(SoNode* owner, SoDragger* dragger, Step toNode, Step toDragger);
    ~ManipDragger();
    ManipDragger(const ManipDragger&) = delete;
    ManipDragger& operator=(const ManipDragger&) = delete;

    /// Follows these fields of the owner from now on; last in its constructor.
    void follow(std::initializer_list<SoField*> fields);
    SoChildList* children() { return &m_children; }
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

} // namespace kalmyr::detail

/// Puts nodes that can be edited in the scene in the place of plain ones, and back.
class KALMYR_VISIBLE SoManip {
public:
    SoManip() = delete;

    /// Replaces the node at the end of a path by one of another class, with the fields that both
    /// have, by name, their values and what feeds them. False, with nothing changed, when the node
    /// is no group's child. For a transform: replaceNode(path, new SoTransformManip); back again:
    /// replaceNode(path, new SoTransform).
    static bool replaceNode(SoPath* path, SoNode* by);
};
