#include "mirabo/core/UndoStack.h"

#include "mirabo/extender/MrbCommand.h"

namespace mirabo {

/// Counts running commands; a clear asked for meanwhile happens when the last one ends.
class UndoStack::Busy {
public:
    explicit Busy(UndoStack& stack) : m_stack(stack) { ++m_stack.m_busyDepth; }
    ~Busy()
    {
        if (--m_stack.m_busyDepth == 0 && m_stack.m_clearRequested)
            m_stack.clear();
    }

private:
    UndoStack& m_stack;
};

void UndoStack::dropRedoTail()
{
    while (!m_commands.empty() && count() != m_current + 1) {
        delete m_commands.back();
        m_commands.pop_back();
    }
}

bool UndoStack::add(MrbCommand* command)
{
    const Busy busy(*this);
    dropRedoTail();
    m_commands.push_back(command);
    m_current = count() - 1;
    tellState();
    const bool done = command->execute();
    m_modified = true;
    return done;
}

void UndoStack::undo()
{
    const Busy busy(*this);
    if (!canUndo())
        return;
    m_commands[static_cast<std::size_t>(m_current)]->undo();
    --m_current;
    tellState();
}

void UndoStack::redo()
{
    const Busy busy(*this);
    if (!canRedo())
        return;
    ++m_current;
    m_commands[static_cast<std::size_t>(m_current)]->redo();
    tellState();
}

void UndoStack::clear()
{
    m_clearRequested = true;
    if (isBusy())
        return;
    m_commands.clear();
    m_modified = false;
    m_clearRequested = false;
    m_current = -1;
    tellState();
}

void UndoStack::tellState()
{
    if (m_callback)
        m_callback(canUndo(), canRedo());
}

} // namespace mirabo
