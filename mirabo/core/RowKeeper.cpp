#include "mirabo/core/RowKeeper.h"

#include "mirabo/extender/private/Later.h"

#include <QTreeWidget>

#include <utility>

namespace mirabo {

RowKeeper::RowKeeper(QTreeWidget& view, Destroy* destroy) : m_view(view), m_destroy(destroy) {}

RowKeeper::~RowKeeper()
{
    m_depth = 0;
    destroyRows();
}

void RowKeeper::destroyRows()
{
    for (QTreeWidgetItem* row : std::exchange(m_rows, {}))
        m_destroy(row);
}

void RowKeeper::keep(QTreeWidgetItem* row)
{
    m_rows.push_back(row);
}

void RowKeeper::enter()
{
    ++m_depth;
    m_announced.emplace_back(m_view.currentIndex());
}

void RowKeeper::leave()
{
    --m_depth;
    m_isIndexStale = m_isIndexStale || m_hasChanged;
    if (!isOpen() && !std::exchange(m_isReleasePending, true))
        callLater(&m_view, 0, [this] { release(); });
}

void RowKeeper::rowsAboutToChange()
{
    // Qt may not be done with the row that was announced in this pass.
    const bool isPassOpen = m_isReleasePending && !isOpen();
    m_hasChanged = m_hasChanged || isOpen() || isPassOpen;
    if (std::exchange(m_isIndexStale, false) || isPassOpen)
        renewIndex();
}

/// The selection begins at the current row from now on, unless that is one that went.
void RowKeeper::renewIndex()
{
    const QTreeWidgetItem* item = m_view.currentItem();
    const bool isInView = item && item->treeWidget() == &m_view;
    static_cast<QAbstractItemView&>(m_view).setCurrentIndex(isInView ? m_view.currentIndex()
                                                                     : QModelIndex());
}

void RowKeeper::release()
{
    m_isReleasePending = false;
    if (isOpen())
        return; // inside a loop that a listener runs; leaving the outermost scope asks again
    m_announced.clear();
    m_isIndexStale = false;
    if (std::exchange(m_hasChanged, false))
        renewIndex();
    destroyRows();
}

} // namespace mirabo
