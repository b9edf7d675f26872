#include "WrittenNames.h"

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoNode.h>

namespace kalmyr::detail {

bool WrittenNames::count(const SoNode* node)
{
    const bool isFirst = ++m_nodes[node].count == 1;
    if (isFirst && !node->getName().isEmpty())
        m_wanted.emplace(node->getName().view());
    return isFirst;
}

const std::string& WrittenNames::of(const SoNode* node, Info& info)
{
    if (info.name >= 0)
        return m_given[static_cast<std::size_t>(info.name)];
    info.name = static_cast<std::int32_t>(m_given.size());
    const std::string own(node->getName().view());
    std::string& name = m_given.emplace_back(own);
    if (!own.empty() && m_taken.insert(own).second)
        return name;
    do {
        name = own;
        name += m_dialect.instancePrefix();
        SbNumber::appendInt(name, m_nextInstance++);
    } while (m_wanted.count(name));
    return name;
}

std::string WrittenNames::take(std::string_view own, std::string_view fallback)
{
    std::string name(own);
    while (name.empty() || m_wanted.count(name) || !m_taken.insert(name).second) {
        name = fallback;
        SbNumber::appendInt(name, m_nextInstance++);
    }
    return name;
}

} // namespace kalmyr::detail
