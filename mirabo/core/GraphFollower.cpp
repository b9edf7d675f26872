#include "mirabo/core/GraphFollower.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace mirabo {

/// What stands in the list of auditors. Outlives its follower while an editor keeps the list.
class GraphFollower::Ear final : public SoAuditor, public std::enable_shared_from_this<Ear> {
public:
    Ear(QObject* context, Calls calls, std::function<void(SoAuditor*)> remove)
        : m_context(context), m_calls(std::move(calls)), m_remove(std::move(remove))
    {
    }

    bool isAlive() const { return m_alive.load(std::memory_order_acquire); }

    /// Calls nothing from now on. Waits for a call under way in another thread.
    void cut()
    {
        const std::scoped_lock lock(m_mutex);
        m_context = nullptr;
        m_isCut = true;
    }
    /// Leaves the list of auditors; under a GraphReading.
    void leave()
    {
        if (m_alive.exchange(false))
            m_remove(this);
    }

    void auditedChanged(SoNotification&) override
    {
        const std::scoped_lock lock(m_mutex);
        if (m_isCut)
            return;
        if (m_calls.touched)
            m_calls.touched();
        if (m_calls.changed && m_context && !m_pending.exchange(true))
            post([](Ear& self) {
                self.m_pending = false;
                self.callHere(self.m_calls.changed);
            });
    }

    void auditedDying() override
    {
        const auto self = shared_from_this();
        m_alive = false;
        bool here = false;
        {
            const std::scoped_lock lock(m_mutex);
            if (m_isCut)
                return;
            if (m_calls.dying)
                m_calls.dying();
            if (!m_calls.died || !m_context)
                return;
            here = QThread::currentThread() == m_context->thread();
            if (!here)
                post([](Ear& ear) { ear.callHere(ear.m_calls.died); });
        }
        if (here)
            callHere(m_calls.died);
    }

private:
    /// With the mutex held: the context lives.
    void post(void (*call)(Ear&))
    {
        QMetaObject::invokeMethod(
            m_context,
            [call, weak = weak_from_this()] {
                if (const auto self = weak.lock())
                    call(*self);
            },
            Qt::QueuedConnection);
    }

    /// In the thread of the user interface, which is the only one that cuts.
    void callHere(const std::function<void()>& call)
    {
        if (m_isCut)
            return;
        const auto kept = call; // it may destroy the follower
        kept();
    }

    std::mutex m_mutex; ///< held while another thread calls
    QObject* m_context; // Not owned; null once cut.
    Calls m_calls;
    std::function<void(SoAuditor*)> m_remove;
    std::atomic<bool> m_alive{true}; ///< the object, and this among its auditors
    std::atomic<bool> m_pending{false};
    std::atomic<bool> m_isCut{false};
};

namespace {

/// Those that could not leave because another thread edited; of the thread of the user interface.
template <class Ear>
std::vector<std::shared_ptr<Ear>>& leftBehind()
{
    static auto* ears = new std::vector<std::shared_ptr<Ear>>; // objects may outlive statics
    return *ears;
}

} // namespace

void GraphFollower::start(Calls calls, std::function<void(SoAuditor*)> remove)
{
    m_ear = std::make_shared<Ear>(m_context, std::move(calls), std::move(remove));
}

SoAuditor* GraphFollower::ear() const
{
    return m_ear.get();
}

void GraphFollower::release()
{
    const auto ear = std::exchange(m_ear, nullptr);
    if (!ear)
        return;
    ear->cut();
    if (!ear->isAlive())
        return;
    {
        const GraphReading graph;
        if (graph) {
            ear->leave();
            return;
        }
    }
    leftBehind<Ear>().push_back(ear);
    if (QCoreApplication::instance() && leftBehind<Ear>().size() == 1)
        whenReadable(QCoreApplication::instance(), [] {
            for (const auto& left : std::exchange(leftBehind<Ear>(), {}))
                left->leave();
        });
}

bool GraphFollower::isFollowing() const
{
    return m_ear && m_ear->isAlive();
}

} // namespace mirabo
