#include <kalmyr/elements/SoElement.h>

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNotification.h>

#include <atomic>

int SoElement::newStackIndex()
{
    static std::atomic<int> s_next = 0;
    return s_next++;
}

std::uint64_t SoElement::mix(std::uint64_t a, std::uint64_t b)
{
    // The finalizer of splitmix64 over both, so that ids that differ in a few low bits spread.
    std::uint64_t h = a * 0x9e3779b97f4a7c15u + b + 0x632be59bd9b4e019u;
    h = (h ^ (h >> 30)) * 0xbf58476d1ce4e5b9u;
    h = (h ^ (h >> 27)) * 0x94d049bb133111ebu;
    h ^= h >> 31;
    return h ? h : 1;
}

namespace {

/// One change stamps every node above it with the same id, so the id alone names no node.
std::uint64_t idOf(const SoNode* node)
{
    if (!node)
        return SoNotification::nextStamp();
    return SoElement::mix(node->getNodeId(), reinterpret_cast<std::uintptr_t>(node));
}

} // namespace

void SoElement::setBy(const SoNode* node)
{
    m_node = node;
    m_valueId = idOf(node);
}

void SoElement::accumulatedBy(const SoNode* node)
{
    m_node = node;
    m_valueId = mix(m_valueId, idOf(node));
}

void SoElement::mixValueId(std::uint64_t id)
{
    m_valueId = mix(m_valueId, id);
}
