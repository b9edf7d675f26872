#include <kalmyr/actions/SoAction.h>

#include <kalmyr/core/SoNode.h>

namespace {

void doNothing(SoAction*, SoNode*) {}

} // namespace

void SoActionMethods::add(SoType type, SoActionMethod method)
{
    const auto i = static_cast<std::size_t>(type.getIndex());
    if (i >= m_own.size())
        m_own.resize(i + 1);
    m_own[i] = method;
    m_preparedFor = 0;
}

void SoActionMethods::prepare() const
{
    const int numTypes = SoType::getNumTypes();
    if (m_preparedFor.load(std::memory_order_acquire) == numTypes)
        return;
    const std::lock_guard lock(m_mutex);
    if (m_preparedFor.load(std::memory_order_relaxed) == numTypes)
        return;
    m_resolved.assign(static_cast<std::size_t>(numTypes), nullptr);
    for (const SoType type : SoType::getAllDerivedFrom(SoNode::getClassTypeId()))
        m_resolved[static_cast<std::size_t>(type.getIndex())] = find(type);
    m_preparedFor.store(numTypes, std::memory_order_release);
}

SoActionMethod SoActionMethods::find(SoType type) const
{
    for (; !type.isBad(); type = type.getParent()) {
        const auto i = static_cast<std::size_t>(type.getIndex());
        if (i < m_own.size() && m_own[i])
            return m_own[i];
    }
    return doNothing;
}
