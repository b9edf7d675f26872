#pragma once

#include "mirabo/core/UndoStack.h"

#include <functional>
#include <memory>

class MrbCommand;

namespace mirabo {

/// Owns the commands that the tool itself makes, since the stack forgets commands without deleting
/// them. A command that was forgotten is freed in the next pass of the event loop: the stack may be
/// cleared in the midst of a change of the graph, which is no time to release nodes. The commands
/// that the stack does delete (those undone, when another is pushed) it takes over from the owner.
///
/// Commands on the stack outlive this object, up to the end of the stack.
class CommandOwner {
public:
    /// Hands a command to the stack; returns what it returned.
    using Push = std::function<bool(MrbCommand*)>;

    CommandOwner(UndoStack& stack, Push push);
    ~CommandOwner();
    CommandOwner(const CommandOwner&) = delete;
    CommandOwner& operator=(const CommandOwner&) = delete;

    bool push(std::unique_ptr<MrbCommand> command);
    /// Owns a command that somebody else pushes. Returns it; null for none.
    MrbCommand* adopt(std::unique_ptr<MrbCommand> command);
    /// Frees what the stack has forgotten. Not inside a change of the graph.
    void freeForgotten();
    /// Number of commands kept, forgotten ones included.
    int count() const;

private:
    class Pool;

    std::shared_ptr<Pool> m_pool; ///< shared with the stack
    Push m_push;
};

} // namespace mirabo
