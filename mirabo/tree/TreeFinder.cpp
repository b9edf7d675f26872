#include "mirabo/tree/TreeFinder.h"

#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/core/SoNode.h>

#include <array>
#include <charconv>
#include <limits>
#include <string_view>

namespace mirabo {

TreeFinder::TreeFinder(SoMiraboTreeView& tree, const Query& query)
    : m_tree(tree),
      m_query(query),
      m_matcher(query.text, query.options & CaseSensitive, query.options & ExactMatch),
      m_walker(tree.invisibleRootItem()),
      m_types(static_cast<std::size_t>(SoType::getNumTypes()))
{
}

TreeFinder::TreeFinder(SoMiraboTreeView& tree, const Query& query, SoTreeViewItem* start)
    : TreeFinder(tree, query)
{
    if (start)
        m_walker.toRow(start);
    else
        isBackward() ? m_walker.toLast() : m_walker.toFirst();
    m_walker.step(isBackward());
    if (!m_walker.row())
        toBeginning();
    m_next = m_stop = m_walker.place();
}

TreeFinder::TreeFinder(SoMiraboTreeView& tree, const Query& query, const RowPlace& first)
    : TreeFinder(tree, query)
{
    m_next = m_stop = first;
}

/// An empty text would be in every other one.
bool TreeFinder::visitsNothing() const
{
    return m_next.empty() || (m_query.text.isEmpty() && !(m_query.options & ExactMatch));
}

void TreeFinder::toBeginning()
{
    isBackward() ? m_walker.toLast() : m_walker.toFirst();
}

bool TreeFinder::hasComeAround() const
{
    const RowPlace place = m_walker.place();
    return m_wrapped && (isBackward() ? place <= m_stop : place >= m_stop);
}

TreeFinder::State TreeFinder::finish(State state)
{
    m_state = state;
    m_found = state == State::Found ? m_walker.row() : nullptr;
    return state;
}

TreeFinder::State TreeFinder::look(int rows)
{
    if (m_state != State::Searching)
        return m_state;
    if (visitsNothing())
        return finish(State::NotFound);
    m_tree.context().news.deliver(); // nodes that died in another thread
    if (m_tree.context().changedElsewhere)
        return State::Searching;
    // Rows may have changed since the last slice: only places are known.
    m_walker.toPlace(m_stop);
    const SoTreeViewItem* stop = m_walker.row();
    m_walker.toPlace(m_next);
    if (!m_walker.row() || hasComeAround())
        return finish(State::NotFound);
    for (int i = 0; i < rows; ++i) {
        if (m_wrapped && m_walker.row() == stop)
            return finish(State::NotFound);
        if (matches(*m_walker.row()))
            return finish(State::Found);
        m_walker.step(isBackward());
        if (m_walker.row())
            continue;
        if (m_wrapped)
            return finish(State::NotFound);
        m_wrapped = true;
        toBeginning();
    }
    m_next = m_walker.place();
    return State::Searching;
}

bool TreeFinder::matches(const SoTreeViewItem& row)
{
    if (row.isDead())
        return false;
    const SoNode& node = *row.getNode();
    switch (m_query.kind) {
    case ByType:
        return matchesType(row.getNodeType());
    case ByName:
        return m_matcher.matches(row.isNamedPart() ? row.getPartName() : node.getName());
    case ByAddress:
        return matchesAddress(node);
    case ById:
        return matchesId(node);
    default:
        return false;
    }
}

bool TreeFinder::matchesType(SoType type)
{
    const auto index = static_cast<std::size_t>(type.getIndex());
    if (index >= m_types.size())
        m_types.resize(index + 1);
    if (m_types[index] == 0)
        m_types[index] = m_matcher.matches(type.getName()) ? 1 : -1;
    return m_types[index] > 0;
}

bool TreeFinder::matchesAddress(const SoNode& node)
{
    std::array<char, 2 + 2 * sizeof(void*)> text{'0', 'x'};
    const auto end = std::to_chars(text.data() + 2, text.data() + text.size(),
                                   reinterpret_cast<std::uintptr_t>(&node), 16);
    return m_matcher.matches({text.data(), static_cast<std::size_t>(end.ptr - text.data())});
}

bool TreeFinder::matchesId(const SoNode& node)
{
    std::array<char, std::numeric_limits<std::uint64_t>::digits10 + 1> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), node.getNodeId());
    return m_matcher.matches({text.data(), static_cast<std::size_t>(end.ptr - text.data())});
}

} // namespace mirabo
