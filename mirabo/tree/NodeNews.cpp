#include "mirabo/tree/NodeNews.h"

#include <kalmyr/core/SoNode.h>

#include <utility>

namespace mirabo {

void NodeNews::setReceiver(Receiver* receiver)
{
    const std::scoped_lock lock(m_mutex);
    m_receiver = receiver;
    m_waiting.clear();
    m_isWaiting = false;
}

void NodeNews::deliver()
{
    if (!m_isWaiting)
        return;
    std::vector<Item> items;
    {
        const std::scoped_lock lock(m_mutex);
        m_isWaiting = false;
        items.swap(m_waiting);
    }
    for (const Item& item : items)
        pass(item);
}

std::unique_lock<std::mutex> NodeNews::keepAlive()
{
    std::unique_lock lock(m_mutex);
    while (m_isWaiting) {
        lock.unlock();
        deliver();
        lock.lock();
    }
    return lock;
}

void NodeNews::objectDies(const SoBase* object)
{
    tell({Kind::Death, static_cast<const SoNode*>(object), 0});
}

void NodeNews::nameChanged(const SoBase* object)
{
    tell({Kind::Name, static_cast<const SoNode*>(object), 0});
}

void NodeNews::changedUnheard(const SoFieldContainer* container)
{
    tell({Kind::Unheard, static_cast<const SoNode*>(container), container->getChangeId()});
}

void NodeNews::tell(const Item& item)
{
    if (std::this_thread::get_id() == m_thread) {
        deliver(); // first what happened first
        pass(item);
        return;
    }
    const std::scoped_lock lock(m_mutex);
    if (!m_receiver)
        return;
    m_waiting.push_back(item);
    if (!m_isWaiting.exchange(true))
        m_receiver->newsWaiting();
}

void NodeNews::pass(const Item& item)
{
    if (!m_receiver)
        return;
    if (item.kind == Kind::Death)
        m_receiver->nodeDied(item.node);
    else if (item.kind == Kind::Name)
        m_receiver->nodeRenamed(item.node);
    else
        m_receiver->nodeChangedUnheard(item.node, item.since);
}

} // namespace mirabo
