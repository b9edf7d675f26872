#include "mirabo/tree/HiddenRows.h"

#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeRows.h"

#include <utility>

namespace mirabo {

HiddenRows::HiddenRows(SoTreeViewItem* parent) : m_parent(parent)
{
    for (int i = parent->childCount(); i > 0; --i)
        m_isHidden.append(false);
}

HiddenRows::~HiddenRows() = default;

SoTreeViewItem* HiddenRows::at(int place) const
{
    if (place < 0 || place >= count())
        return nullptr;
    const int hidden = m_isHidden.countBefore(place);
    return asItem(m_isHidden.at(place) ? child(hidden) : m_parent->child(place - hidden));
}

int HiddenRows::placeOf(const SoTreeViewItem* hidden) const
{
    if (child(hidden->lastKnownRow()) != hidden)
        for (int i = 0, n = childCount(); i < n; ++i) // so that the next one is found at once
            asItem(child(i))->setLastKnownRow(i);
    return child(hidden->lastKnownRow()) == hidden ? m_isHidden.placeOfSet(hidden->lastKnownRow())
                                                   : -1;
}

void HiddenRows::insert(int place, QTreeWidgetItem* row)
{
    const bool isHidden = asItem(row)->isFilteredOut();
    const int hidden = m_isHidden.countBefore(place);
    m_isHidden.insert(place, isHidden);
    if (isHidden)
        insertChild(hidden, row);
    else
        m_parent->insertChild(place - hidden, row);
}

SoTreeViewItem* HiddenRows::take(int place)
{
    const bool isHidden = m_isHidden.at(place);
    const int hidden = m_isHidden.countBefore(place);
    m_isHidden.remove(place);
    return asItem(isHidden ? takeChild(hidden) : m_parent->takeChild(place - hidden));
}

void HiddenRows::insert(int place, const QList<QTreeWidgetItem*>& rows)
{
    const int before = m_isHidden.countBefore(place);
    RankedBits bits;
    const bool isBehind = place == count();
    if (isBehind)
        std::swap(bits, m_isHidden);
    for (int i = 0; i < place && !isBehind; ++i)
        bits.append(m_isHidden.at(i));
    QList<QTreeWidgetItem*> shown;
    QList<QTreeWidgetItem*> hidden;
    shown.reserve(rows.size());
    for (QTreeWidgetItem* row : rows) {
        const bool isHidden = asItem(row)->isFilteredOut();
        bits.append(isHidden);
        (isHidden ? hidden : shown).append(row);
    }
    for (int i = place; i < m_isHidden.size(); ++i)
        bits.append(m_isHidden.at(i));
    m_isHidden = std::move(bits);
    insertChildren(before, hidden);
    m_parent->insertChildren(place - before, shown);
}

QList<QTreeWidgetItem*> HiddenRows::takeAll()
{
    QList<QTreeWidgetItem*> rows;
    rows.reserve(count());
    for (int place = 0; place < count(); ++place)
        rows.append(at(place));
    takeChildren();
    m_parent->takeChildren();
    m_isHidden = {};
    return rows;
}

} // namespace mirabo
