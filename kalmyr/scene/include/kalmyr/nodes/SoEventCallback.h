#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/core/SoPath.h>

#include <memory>
#include <vector>

class SoEvent;
class SoEventCallback;
class SoHandleEventAction;

/// Calls functions of the program for the events that reach the node.
class KALMYR_API SoEventCallback : public SoNode {
    SO_NODE_HEADER(SoEventCallback)

public:
    /// Inside the call getEvent() and getAction() are set.
    using Function = void(void* userData, SoEventCallback* node);

    SoEventCallback();
    static void initClass();

    /// Calls the function for events of the type and below it. The data stay the caller's.
    void addEventCallback(SoType eventType, Function* function, void* userData = nullptr);
    /// Removes what was added with the same three values.
    void removeEventCallback(SoType eventType, Function* function, void* userData = nullptr);

    /// Only events over the path's objects count; null takes every event. Nothing of the path is
    /// held, since it often leads down from where this node hangs; it follows edits of the graph.
    void setPath(const SoPath* path);
    /// The path as the graph is now; null when there is none (any more).
    SoRef<SoPath> getPath() const;

    /// Null outside of a callback.
    const SoEvent* getEvent() const { return m_event; }
    SoHandleEventAction* getAction() const { return m_action; }
    /// Stops the event from going further.
    void setHandled();
    bool isHandled() const;

    /// Called by the event action.
    void handleEvent(SoHandleEventAction* action);

protected:
    ~SoEventCallback() override;

private:
    struct Entry {
        SoType type;
        Function* function;
        void* userData;
        bool operator==(const Entry&) const = default;
    };
    bool concerns(SoHandleEventAction* action) const;

    std::vector<Entry> m_entries;
    class PathWatch;
    std::unique_ptr<PathWatch> m_path; ///< null takes every event
    const SoEvent* m_event = nullptr;
    SoHandleEventAction* m_action = nullptr;
};
