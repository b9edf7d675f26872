#include "mirabo/extender/private/GraphFollower.h"

#include "mirabo/extender/private/Frame.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace mirabo {

/// The entry in the list of auditors. Outlives its follower while an editor keeps the list.
class GraphFollower::Ear final : public SoAuditor, public std::enable_shared_from_this<Ear> {
public:
    Ear(QObject* context, Calls calls, const SoRefCounter* owner,
        std::function<void(SoAuditor*)> remove)
        : m_context(context), m_calls(std::move(calls)), m_owner(owner), m_remove(std::move(remove))
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
    SoRef<const SoRefCounter> hold()
    {
        // A death waits for the mutex before anything of the object goes.
        const std::scoped_lock lock(m_mutex);
        return isAlive() && m_owner && m_owner->refIfAlive()
                   ? SoRef<const SoRefCounter>::adopt(m_owner)
                   : SoRef<const SoRefCounter>();
    }
    /// Leaves the list of auditors; under a GraphReading. False while the object is dying.
    bool leave()
    {
        const SoRef<const SoRefCounter> held = hold();
        if (isAlive() && m_owner && !held)
            return false;
        if (m_alive.exchange(false))
            m_remove(this);
        return true;
    }

    void auditedChanged(SoNotification&) override
    {
        const std::scoped_lock lock(m_mutex);
        if (m_isCut)
            return;
        if (m_calls.touched)
            m_calls.touched();
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
                QMetaObject::invokeMethod(
                    m_context,
                    [weak = weak_from_this()] {
                        if (const auto ear = weak.lock())
                            ear->tellDeath();
                    },
                    Qt::QueuedConnection);
        }
        if (here)
            tellDeath();
    }

private:
    /// In the thread of the user interface, which is the only one that cuts.
    void tellDeath()
    {
        if (m_isCut)
            return;
        const Frame frame;
        const auto died = m_calls.died; // it may destroy the follower
        died();
    }

    std::mutex m_mutex; ///< held while another thread calls
    QObject* m_context; // Not owned; null once cut.
    const Calls m_calls;
    const SoRefCounter* const m_owner; // Not owned; lives as long as the object.
    const std::function<void(SoAuditor*)> m_remove;
    std::atomic<bool> m_alive{true}; ///< the object, and this among its auditors
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

const SoRefCounter* GraphFollower::ownerOf(const SoField* field)
{
    return field->getContainer();
}

void GraphFollower::start(Calls calls, const SoRefCounter* owner,
                          std::function<void(SoAuditor*)> remove)
{
    m_ear = std::make_shared<Ear>(m_context, std::move(calls), owner, std::move(remove));
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
        if (graph && ear->leave())
            return;
    }
    leftBehind<Ear>().push_back(ear);
    if (QCoreApplication::instance())
        whenReadable(QCoreApplication::instance(), [] {
            std::erase_if(leftBehind<Ear>(),
                          [](const auto& left) { return !left->isAlive() || left->leave(); });
        });
}

SoRef<const SoRefCounter> GraphFollower::hold() const
{
    return m_ear ? m_ear->hold() : SoRef<const SoRefCounter>();
}

bool GraphFollower::isFollowing() const
{
    return m_ear && m_ear->isAlive();
}

} // namespace mirabo
