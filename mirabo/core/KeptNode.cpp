#include "mirabo/core/KeptNode.h"

#include <kalmyr/core/SoDeathObserver.h>
#include <kalmyr/core/SoNode.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace mirabo {

struct KeptNode::Entry {
    std::atomic<SoNode*> node;
    int keepers = 0;
};

namespace {

/// Thousands of commands keep the same few nodes: one entry for each node, and nothing at the node
/// itself, where every change would pass by all of them.
class Watch final : public SoDeathObserver {
public:
    static Watch& instance()
    {
        if (!s_instance)
            s_instance = std::make_unique<Watch>();
        return *s_instance;
    }

    KeptNode::Entry* enter(SoNode* node)
    {
        const std::lock_guard lock(m_mutex);
        std::unique_ptr<KeptNode::Entry>& entry = m_entries[node];
        if (!entry) {
            entry = std::make_unique<KeptNode::Entry>();
            entry->node = node;
            node->tellOfDeath();
        }
        ++entry->keepers;
        return entry.get();
    }
    void leave(KeptNode::Entry* entry)
    {
        {
            const std::lock_guard lock(m_mutex);
            if (--entry->keepers > 0)
                return;
            if (SoNode* node = entry->node)
                m_entries.erase(node);
            else
                m_dead.erase(entry);
            if (!m_entries.empty() || !m_dead.empty())
                return;
        }
        s_instance.reset(); // before the toolkit ends
    }
    void objectDies(const SoBase* object) override
    {
        const std::lock_guard lock(m_mutex);
        const auto at = m_entries.find(object);
        if (at == m_entries.end())
            return;
        at->second->node = nullptr;
        KeptNode::Entry* key = at->second.get();
        m_dead.emplace(key, std::move(at->second));
        m_entries.erase(at);
    }

private:
    static std::unique_ptr<Watch> s_instance;

    std::mutex m_mutex; // nodes may die in any thread
    std::unordered_map<const SoBase*, std::unique_ptr<KeptNode::Entry>> m_entries;
    std::unordered_map<KeptNode::Entry*, std::unique_ptr<KeptNode::Entry>> m_dead;
};

std::unique_ptr<Watch> Watch::s_instance;

} // namespace

KeptNode::KeptNode(SoNode* node) : m_entry(node ? Watch::instance().enter(node) : nullptr) {}

KeptNode::~KeptNode()
{
    if (!m_entry)
        return;
    SoNode* held = std::exchange(m_held, false) ? get() : nullptr;
    Watch::instance().leave(m_entry);
    if (held)
        held->unref(); // may destroy it, and further commands' nodes with it
}

SoNode* KeptNode::get() const
{
    return m_entry ? m_entry->node.load() : nullptr;
}

void KeptNode::hold()
{
    SoNode* node = get();
    if (!node || m_held)
        return;
    node->ref();
    m_held = true;
}

void KeptNode::settle()
{
    SoNode* node = get();
    if (!m_held || !node || node->getRefCount() < 2)
        return;
    m_held = false;
    node->unrefNoDelete();
}

void KeptNode::swap(KeptNode& other) noexcept
{
    std::swap(m_entry, other.m_entry);
    std::swap(m_held, other.m_held);
}

} // namespace mirabo
