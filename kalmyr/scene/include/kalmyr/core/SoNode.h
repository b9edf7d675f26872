#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldContainer.h>

#include <unordered_set>

class SoAction;
class SoChildList;
class SoNodeCopier;

/// Anything that can stand in a scene graph.
///
/// The method of an action at a node is found in the action's method table by node type; the usual
/// entry calls doAction(), where property nodes set state elements and groups pass on to their
/// children.
class KALMYR_API SoNode : public SoFieldContainer {
public:
    static SoType getClassTypeId();
    static void initClass();

    /// Id of the node's present state: a new one after every change at or below the node.
    std::uint64_t getNodeId() const { return getChangeId(); }

    /// Override flag: properties set by this node are not replaced by nodes further on.
    /// Changing it is a change of the node.
    void setOverride(bool on);
    bool isOverride() const { return (m_nodeFlags & kOverride) != 0; }

    /// The children that the node lets everybody see, or null. Groups, inline and file nodes and
    /// node kits that expose theirs.
    virtual SoChildList* getChildren() const { return nullptr; }

    /// Children that are the node's own business (parts of a kit, expansion of a prototype), or
    /// null; the same list as getChildren() for those that expose theirs.
    virtual SoChildList* getInternalChildren() const { return getChildren(); }

    /// False for a node that shields what follows it from its effects (separators).
    virtual bool affectsState() const { return true; }

    /// Generic behaviour in every traversing action: property nodes set elements, groups traverse.
    virtual void doAction(SoAction*) {}

    SoFieldContainer* createTwin() const override;

    /// Goes on to all that hold the node, as far as somebody may learn from it.
    void notify(SoNotification& notification) final;

    /// Whether `ancestor` is this node or holds it, directly or further up, as a child or by a
    /// field. Cost: the number of distinct ancestors of this node.
    bool isAtOrBelow(const SoNode* ancestor) const;
    /// This node and everything that isAtOrBelow() finds above it, for asking often.
    std::unordered_set<const SoFieldContainer*> getAllAtOrAbove() const;

    /// A copy of the node with copies of everything below it; what is shared below stays shared in
    /// the copy. Reference count 0. Connections among what is copied are made among the copies, and
    /// so are engines between them; connections from outside only if `copyConnections`.
    SoNode* copy(bool copyConnections = false) const;

    /// Fills a new copy from `from`: fields, children, name, override. Nodes that keep state
    /// outside their fields override it.
    ///
    /// Afterwards the children are the copies of the children of `from`, in order, and nodes in
    /// fields are copies of those there, whatever the constructor put there itself. Children that
    /// are the node's own business are its own business here, too.
    virtual void copyContents(const SoNode* from, SoNodeCopier& copier);

    /// Whether a field of this node may hold `value`; if not, `why` tells what it takes instead.
    /// Readers of files ask before they set the field.
    virtual bool acceptsValue(const SoField& field, const SoNode* value, SbString& why) const;

    /// A name that identifies the node across processes of a distributed host; empty when none.
    const SbName& getNetName() const;
    void setNetName(const SbName& name);

    /// New node of the registered type (reference count 0); null when abstract or not a node type.
    static SoNode* create(SoType type);

    /// The most recently named node of that name, or null.
    static SoNode* getByName(const SbName& name);

protected:
    SoNode() { m_unheard = true; } // nobody holds it yet
    ~SoNode() override;

    /// A change of the node, or of something below it, comes by; `notification.chain` begins with
    /// the child or field's node that it came up by, and is null for the node's own change. Called
    /// before those above hear of it, once for each child that it came up by. Must not edit the
    /// graph.
    ///
    /// A node that must hear of every change below it returns true, always. One that returns false
    /// always hears of its own changes, but of those that come up by one child only of the first
    /// after somebody asked for a change id.
    virtual bool noteChange(const SoNotification&) { return false; }

private:
    static constexpr std::uint8_t kOverride = 1;
    static constexpr std::uint8_t kHasNetName = 2;
};
