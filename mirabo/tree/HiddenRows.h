#pragma once

#include "mirabo/tree/RankedBits.h"

#include <QTreeWidgetItem>

class SoTreeViewItem;

namespace mirabo {

/// The rows below one parent that the filter hides. The widget does not know them: hiding single
/// rows makes every later edit slow. They hang here, with all that is below them, and each keeps
/// its place among all rows of the parent.
///
/// A place counts all rows of the parent in the order of the graph, a row only the shown ones.
class HiddenRows final : public QTreeWidgetItem {
public:
    /// Takes charge of the parent's rows; all of them are shown.
    explicit HiddenRows(SoTreeViewItem* parent);
    ~HiddenRows() override;

    SoTreeViewItem* parentRow() const { return m_parent; }
    int count() const { return m_isHidden.size(); }
    int hiddenCount() const { return m_isHidden.count(); }
    /// Null past the end.
    SoTreeViewItem* at(int place) const;
    int placeOf(const SoTreeViewItem* hidden) const;
    int placeOfShown(int row) const { return m_isHidden.placeOfClear(row); }
    /// The row of a shown one at `place`, or that of the next shown one behind it.
    int shownBefore(int place) const { return place - m_isHidden.countBefore(place); }

    /// Puts a row below the parent where its flag says.
    void insert(int place, QTreeWidgetItem* row);
    void insert(int place, const QList<QTreeWidgetItem*>& rows);
    SoTreeViewItem* take(int place);
    /// In order; none is left.
    QList<QTreeWidgetItem*> takeAll();

private:
    SoTreeViewItem* m_parent; // Not owned; its death ends us.
    RankedBits m_isHidden;    ///< by place
};

} // namespace mirabo
