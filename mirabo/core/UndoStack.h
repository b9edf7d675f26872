#pragma once

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

    UndoStack() = default;
    ~UndoStack() = default; // what is still on the stack is not deleted, as clear() does not either
    UndoStack(const UndoStack&) = delete;
    UndoStack& operator=(const UndoStack&) = delete;

    void setStateCallback(StateCallback callback) { m_callback = std::move(callback); }

    /// Deletes the undone commands, then executes and keeps this one. Returns execute()'s result.
    bool add(MrbCommand* command);
    void undo();
    void redo();

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
    int count() const { return static_cast<int>(m_commands.size()); }
    /// Index of the last executed command; -1 when there is nothing to undo.
    int currentIndex() const { return m_current; }
    bool canUndo() const { return m_current >= 0 && m_current < count(); }
    bool canRedo() const { return m_current + 1 < count(); }

private:
    class Busy;
    void dropRedoTail();
    void erase(int from, int to);
    void tellState();

    bool m_modified = false;
    bool m_clearRequested = false;
    int m_busyDepth = 0;
    std::vector<MrbCommand*> m_commands; // Owned while on the stack.
    int m_current = 0;
    StateCallback m_callback;
};

} // namespace mirabo
