#pragma once

#include <QPersistentModelIndex>

#include <vector>

class QTreeWidget;
class QTreeWidgetItem;

namespace mirabo {

/// Keeps the rows that leave an item view inside a change of its current row.
///
/// A listener to a new current row may let that very row go, or make another one current. Qt
/// goes on with the index all the same: it is handed to the next listener by reference, measured,
/// and becomes the place where a selection begins, which the model then tracks like any other. So
/// rows that leave the view meanwhile stay in memory until a later pass of the event loop, as does
/// what Qt refers to, and the index is replaced before other rows come or go.
///
/// A member of its view. To be used where the view announces its current row (Scope), and wherever
/// rows come or go (rowsAboutToChange(), and keep() instead of deleting them).
class RowKeeper {
public:
    /// Destroys a row that is in no view, with everything below it.
    using Destroy = void(QTreeWidgetItem* row);

    RowKeeper(QTreeWidget& view, Destroy* destroy);
    ~RowKeeper();
    RowKeeper(const RowKeeper&) = delete;
    RowKeeper& operator=(const RowKeeper&) = delete;

    /// While one lives the current row is being announced.
    class [[nodiscard]] Scope {
    public:
        explicit Scope(RowKeeper& keeper) : m_keeper(keeper) { m_keeper.enter(); }
        ~Scope() { m_keeper.leave(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        RowKeeper& m_keeper;
    };

    /// Whether rows that go have to be kept.
    bool isOpen() const { return m_depth > 0; }
    /// Takes over a row that is in no view any more, with everything below it.
    void keep(QTreeWidgetItem* row);
    /// Rows are about to come or go: makes the view forget an index of a row that went or moved.
    void rowsAboutToChange();

private:
    void enter();
    void leave();
    void release();
    void renewIndex();
    void destroyRows();

    QTreeWidget& m_view;
    Destroy* m_destroy;
    int m_depth = 0;
    bool m_hasChanged = false; ///< rows came or went since the first scope of this pass
    bool m_isIndexStale = false;
    bool m_isReleasePending = false;
    std::vector<QTreeWidgetItem*> m_rows;           // Owned.
    std::vector<QPersistentModelIndex> m_announced; ///< keeps what Qt's references refer to
};

} // namespace mirabo
