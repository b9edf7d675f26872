#include "mirabo/core/CommandOwner.h"

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/private/GraphReading.h"

#include <QCoreApplication>
#include <QTimer>

#include <unordered_map>
#include <utility>
#include <vector>

namespace mirabo {

class CommandOwner::Pool {
public:
    Pool()
    {
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { freeLater(); });
    }

    void add(std::unique_ptr<MrbCommand> command)
    {
        MrbCommand* key = command.get();
        m_kept.emplace(key, std::move(command));
    }
    void leaves(MrbCommand* command, UndoStack::Leaving how)
    {
        const auto at = m_kept.find(command);
        if (at == m_kept.end())
            return; // somebody else's
        std::unique_ptr<MrbCommand> mine = std::move(at->second);
        m_kept.erase(at);
        if (how == UndoStack::Leaving::Deleted) {
            (void)mine.release(); // the stack's now
            return;
        }
        m_forgotten.push_back(std::move(mine));
        if (QCoreApplication::instance())
            m_timer.start(0);
    }
    void freeLater()
    {
        const GraphReading graph; // nodes may die of it
        if (graph)
            freeForgotten();
        else
            m_timer.start(GraphReading::kRetryMilliseconds);
    }
    void freeForgotten()
    {
        // Youngest first, as they would have been undone.
        auto gone = std::exchange(m_forgotten, {});
        while (!gone.empty())
            gone.pop_back();
    }
    int count() const { return static_cast<int>(m_kept.size() + m_forgotten.size()); }

private:
    std::unordered_map<const MrbCommand*, std::unique_ptr<MrbCommand>> m_kept;
    std::vector<std::unique_ptr<MrbCommand>> m_forgotten;
    QTimer m_timer;
};

CommandOwner::CommandOwner(UndoStack& stack, Push push)
    : m_pool(std::make_shared<Pool>()), m_push(std::move(push))
{
    stack.addLeaveCallback([pool = m_pool](MrbCommand* command, UndoStack::Leaving how) {
        pool->leaves(command, how);
    });
}

CommandOwner::~CommandOwner() = default;

bool CommandOwner::push(std::unique_ptr<MrbCommand> command)
{
    MrbCommand* pushed = adopt(std::move(command));
    return pushed && m_push(pushed);
}

MrbCommand* CommandOwner::adopt(std::unique_ptr<MrbCommand> command)
{
    MrbCommand* adopted = command.get();
    if (adopted)
        m_pool->add(std::move(command));
    return adopted;
}

void CommandOwner::freeForgotten()
{
    m_pool->freeForgotten();
}

int CommandOwner::count() const
{
    return m_pool->count();
}

} // namespace mirabo
