#pragma once

#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>

#include <memory>
#include <vector>

class SoBoundingBoxCache;
class SoGetBoundingBoxAction;
class SoRayPickAction;
class SoState;

/// Base of the VRML97 groups. `children` and the group's child list are one: either side edits it.
///
/// State set by children ends with the group. The box of its content is kept as in a separator.
class KALMYR_API SoVRMLParent : public SoGroup {
    SO_NODE_HEADER(SoVRMLParent)

public:
    static void initClass();

    SoMFNode children;
    SoMFNode addChildren;    ///< event in: nodes that are no children yet become the last ones
    SoMFNode removeChildren; ///< event in: these are children no more; others do not matter
    SoSFVec3f bboxCenter;
    SoSFVec3f bboxSize; ///< -1: to be computed

    bool affectsState() const override { return false; }
    /// Traverses the children between a push and a pop of the state, below what the group itself
    /// sets.
    void doAction(SoAction* action) override;
    /// The same, but that directional lights among the children come before the others: they shine
    /// on all of them. Applied along a path it does not differ.
    void doActionLightsFirst(SoAction* action);

    /// For the actions: measures from the cache or the children, and passes rays that meet the box.
    void measure(SoGetBoundingBoxAction* action);
    void rayPick(SoRayPickAction* action);

protected:
    bool noteChange(const SoNotification& notification) override;
    ~SoVRMLParent() override;
    SoVRMLParent();
    /// Sets the state of the children, as the concrete group wants it.
    virtual void setState(SoState*) {}

private:
    bool isCulled(SoRayPickAction* action) const;
    class Arrival;
    bool isChild(const SoNode* node) const;
    void takeArrivals(SoMFNode& event);
    void addMissing(const std::vector<SoNode*>& nodes);
    void removeKnown(const std::vector<SoNode*>& nodes);

    std::unique_ptr<SoBoundingBoxCache> m_boxCache;
};
