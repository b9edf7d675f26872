#pragma once

#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoCascade.h>
#include <kalmyr/sensors/SoFieldSensor.h>

/// Base of the nodes of which one at a time counts in a world: backgrounds, fogs, navigation infos
/// and viewpoints. A world is all that is below one topmost node.
///
/// The nodes that were bound form a stack for each type and world, of which the top is bound; both
/// kinds of viewpoints share one. TRUE to `set_bind` puts a node on top, FALSE takes it out. A node
/// that dies or leaves the world leaves the stack. Copies are not bound.
class KALMYR_API SoVRMLBindable : public SoNode {
    SO_NODE_HEADER(SoVRMLBindable)

public:
    static void initClass();

    SoSFBool set_bind; ///< event in
    SoSFBool isBound;  ///< event out

    /// The bound node of that type in the world of `node`; null when none is.
    static SoVRMLBindable* getBound(const SoNode* node, SoType type);
    /// Called by viewers for a world that they begin to show: binds the first node of each type of
    /// which none is bound yet. Nodes of inlined files come after
    /// others, those that switches do not show last.
    static void bindFirst(SoNode* world);

    /// Whether the node counts: it is bound, or no node of its type is in its world.
    bool isInForce() const;
    bool isInWorldOf(const SoNode* other) const;

    /// Called when a node has become bound, in the thread that added the callback: inside the call
    /// that did it, or, for what another thread did under the write lock, when its sensors are
    /// served next and if the node is still bound. What other threads do in graphs of their own
    /// is not told.
    using BoundCallback = void(void* data, SoVRMLBindable* node);
    static void addBoundCallback(BoundCallback* function, void* data);
    static void removeBoundCallback(BoundCallback* function, void* data);

    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    SoVRMLBindable();
    ~SoVRMLBindable() override;

    /// Bound, or no more.
    virtual void boundChanged(SbTime) {}

private:
    class SettleLater;
    void bindOrRelease();
    void tellBound(bool on);
    static void settle(const SoNode* world, SoType type);
    static void settleAll();

    SoFieldSensor m_sensor;
    SoCascade m_cascade;
    bool m_isStacked = false;
};
