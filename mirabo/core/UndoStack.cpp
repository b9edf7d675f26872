#include "mirabo/core/UndoStack.h"

#include "mirabo/extender/MrbCommand.h"

#include <algorithm>
#include <utility>

namespace mirabo {

UndoStack::Busy::~Busy()
{
    if (--m_stack.m_busyDepth == 0 && m_stack.m_clearRequested)
        m_stack.clear();
}

UndoStack::~UndoStack()
{
    for (MrbCommand* command : m_commands)
        tellLeaving(command, Leaving::Forgotten);
}

void UndoStack::dropRedoTail()
{
    while (!m_commands.empty() && count() != m_current + 1) {
        MrbCommand* last = m_commands.back();
        m_commands.pop_back();
        tellLeaving(last, Leaving::Deleted);
        delete last;
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

bool UndoStack::extend(const MrbCommand* command, const std::function<bool()>& edit)
{
    const Busy busy(*this);
    if (!isLast(command))
        return false;
    const bool done = edit();
    m_modified = true;
    tellState();
    return done;
}

QString UndoStack::nameOf(int index) const
{
    if (index < 0 || index >= count())
        return {};
    return m_commands[static_cast<std::size_t>(index)]->getName();
}

void UndoStack::clear()
{
    m_clearRequested = true;
    if (isBusy())
        return;
    const std::vector<MrbCommand*> gone = std::exchange(m_commands, {});
    m_modified = false;
    m_clearRequested = false;
    m_current = -1;
    for (MrbCommand* command : gone)
        tellLeaving(command, Leaving::Forgotten);
    tellState();
}

void UndoStack::remove(const std::function<bool(const MrbCommand*)>& test)
{
    const int done = std::min(m_current + 1, count());
    int to = done; // what is undone stays up to the first command that goes
    while (to < count() && !test(m_commands[static_cast<std::size_t>(to)]))
        ++to;
    int from = done; // what is executed stays behind the last command that goes
    while (from > 0 && !test(m_commands[static_cast<std::size_t>(from - 1)]))
        --from;
    if (from == 0 && to == count())
        return;
    erase(to, count());
    erase(0, from);
    m_current -= from;
    tellState();
}

void UndoStack::erase(int from, int to)
{
    const auto begin = m_commands.begin();
    std::for_each(begin + from, begin + to, [this](MrbCommand* command) {
        tellLeaving(command, Leaving::Deleted);
        delete command;
    });
    m_commands.erase(begin + from, begin + to);
}

void UndoStack::tellLeaving(MrbCommand* command, Leaving how) const
{
    for (const LeaveCallback& callback : m_leaveCallbacks)
        callback(command, how);
}

void UndoStack::tellState()
{
    if (m_callback)
        m_callback();
}

} // namespace mirabo
