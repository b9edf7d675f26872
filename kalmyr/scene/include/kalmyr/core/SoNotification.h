#pragma once

#include <kalmyr/base/Export.h>

#include <cstdint>

class SoEngine;
class SoField;
class SoFieldContainer;
class SoNode;

/// One change on its way up from where it happened to everybody who listens.
///
/// There is one walk per change. A container that is reached by several parents is visited once
/// (it remembers the stamp of the change), so the cost is proportional to the number of distinct
/// ancestors. Fields that follow the changed one are told after its ancestors, each by a walk of
/// its own and one after the other, so that chains of connections may have any length; then come
/// engines that react to their inputs. Sensors of priority 0 are collected on the walk and
/// triggered right after it, still inside the call that made the change.
///
/// A walk ends at a node where a walk came by already if nobody above listened then, nobody began
/// to listen since, and nobody asked for a change id since: all above have news for whoever asks.
/// So a graph that nobody looks at is built in a time that does not depend on its depth.
class KALMYR_API SoNotification {
public:
    /// The kind of the change; the numbers are part of the interface.
    enum Kind : std::uint8_t {
        UNSPECIFIED = 0, ///< a field value, or touch()
        CHILD_ADDED = 1, ///< appended as last child
        CHILD_INSERTED = 2,
        CHILD_REPLACED = 3,
        CHILD_REMOVED = 4, ///< sent after the removal; the child is still alive
        ALL_REMOVED = 5,   ///< all children removed
        OTHER = 6
    };

    /// One container on the way from the change to the container being told now.
    struct Link {
        SoFieldContainer* container;
        const Link* below; ///< next one towards the change; null at the change itself
    };

    Kind kind = UNSPECIFIED;
    SoFieldContainer* container = nullptr; ///< where the change happened
    SoField* field = nullptr;              ///< the changed field, or null
    SoNode* child = nullptr;               ///< the child concerned, or null
    int index = -1;                        ///< its index, or -1
    std::uint64_t stamp = 0;               ///< unique, rising; becomes the id of every visited node
    std::uint64_t origin = 0;              ///< stamp of the change that this one follows from
    bool keepsValue = false;     ///< of a field, whose value is what it was; no news for followers
    const Link* chain = nullptr; ///< where the walk is now, down to the change
    const char* stackLimit = nullptr; ///< the walk changes stacks below this address
    bool heard = false;               ///< somebody listens at, or above, the container told last

    /// Sends the change from `start` upwards and then runs the immediate sensors, unless this is
    /// a change made during another change's walk.
    void send(SoFieldContainer* start);
    /// The same from a field: first its own auditors, then its container.
    void sendFrom(SoField* field);
    /// From the outputs of an engine to those who follow them.
    void sendOutputs(SoEngine* engine);

    /// A new stamp, greater than every one before it in this process. Also the source of node ids.
    static std::uint64_t nextStamp();

    /// Somebody asks for a change id or begins to listen: the next walk goes up to all ancestors
    /// again. From any thread.
    static void repeatWalks();
    /// Whether repeatWalks() was called after a stamp was taken.
    static bool isRepeated(std::uint64_t stamp);

    /// True while a walk is under way on this thread: editing the graph is not allowed.
    static bool isWalking();

    /// For fields and engines: to be told, or to react, later on the walk under way.
    static void defer(SoField* follower, std::uint64_t origin);
    static void defer(SoEngine* engine, SoField* input);
    /// A field or an engine dies: it is not to be told.
    static void forget(const SoField* field);
    static void forget(const SoEngine* engine);

    /// Installed by the sensor manager: runs the immediate sensors collected on the walk.
    static void setAfterWalk(void (*function)());

private:
    static void finishWalk();
    static void tellDeferred();
};
