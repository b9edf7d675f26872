#pragma once

#include "mirabo/extender/private/Frame.h"

#include <QString>

#include <functional>
#include <vector>

class MrbCommand;

namespace mirabo {

/// The one stack of undoable commands, oldest first.
///
/// Usable after the first clear(): until then its index stands before an entry that is not there,
/// and pushing would leave a gap (intended: every start gives the viewer a scene, which clears).
class UndoStack {
public:
    /// Called whenever what can be undone or redone may have changed.
    using StateCallback = std::function<void()>;

    /// Told of every command that leaves the stack: one that the stack deletes right afterwards, or
    /// one that it only forgets. Must not call the stack back.
    enum class Leaving { Deleted, Forgotten };
    using LeaveCallback = std::function<void(MrbCommand* command, Leaving how)>;

    /// While it lives a command counts as running: edits that are made before their command is
    /// pushed are taken for its own, and a clear that is asked for waits.
    class Busy {
    public:
        explicit Busy(UndoStack& stack) : m_stack(stack) { ++m_stack.m_busyDepth; }
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        const Frame m_frame; // a sensor of the host may end the tool meanwhile
        UndoStack& m_stack;
    };

    UndoStack() = default;
    ~UndoStack(); // what is still on the stack is not deleted, as clear() does not either
    UndoStack(const UndoStack&) = delete;
    UndoStack& operator=(const UndoStack&) = delete;

    void setStateCallback(StateCallback callback) { m_callback = std::move(callback); }
    void addLeaveCallback(LeaveCallback callback)
    {
        m_leaveCallbacks.push_back(std::move(callback));
    }

    /// Deletes the undone commands, then executes and keeps this one. Returns execute()'s result.
    bool add(MrbCommand* command);
    void undo();
    void redo();
    /// Makes a further edit, which the command takes for its own. Nothing, and false, when it is
    /// not the last one (isLast()); else what the edit returned.
    bool extend(const MrbCommand* command, const std::function<bool()>& edit);

    /// Forgets all commands without deleting them (intended: extensions may hold on to theirs).
    /// While a command runs the clear waits until it has ended.
    void clear();

    /// Removes and deletes the commands that the test names, and what can no longer be undone or
    /// redone across the gaps: executed commands older, undone ones younger. Not while a command
    /// runs.
    void remove(const std::function<bool(const MrbCommand*)>& test);

    /// True while a command is executed, undone or redone.
    bool isBusy() const { return m_busyDepth > 0; }
    /// A command was pushed since the last clear.
    bool isModified() const { return m_modified; }
    /// The scene was modified by something else than a command.
    void markModified() { m_modified = true; }
    int count() const { return static_cast<int>(m_commands.size()); }
    /// Index of the last executed command; -1 when there is nothing to undo.
    int currentIndex() const { return m_current; }
    /// Name of a command, 0 being the oldest; empty when it has none.
    QString nameOf(int index) const;
    /// Nothing has been done or undone since this command was executed. The pointer is compared
    /// only.
    bool isLast(const MrbCommand* command) const
    {
        return canUndo() && !canRedo() && m_commands.back() == command;
    }
    bool canUndo() const { return m_current >= 0 && m_current < count(); }
    bool canRedo() const { return m_current + 1 < count(); }

private:
    void dropRedoTail();
    void erase(int from, int to);
    void tellState();
    void tellLeaving(MrbCommand* command, Leaving how) const;

    bool m_modified = false;
    bool m_clearRequested = false;
    int m_busyDepth = 0;
    std::vector<MrbCommand*> m_commands; // Owned while on the stack.
    int m_current = 0;
    StateCallback m_callback;
    std::vector<LeaveCallback> m_leaveCallbacks;
};

} // namespace mirabo
