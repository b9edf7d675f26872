#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QHash>
#include <QStringList>

#include <vector>

class ListCells;
class ListChanges;
class MrbFieldEdit;

/// The values of a multiple-value field as the rows of a table. Colours have a column of swatches
/// in front.
///
/// Reads what is asked for, by pages of rows, and keeps it until refresh(); what cannot be read
/// meanwhile stays as it was shown.
class ListModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    /// More values than this have no rows.
    static constexpr int kMaxRows = 10'000'000;

    /// All must outlive it.
    ListModel(MrbFieldEdit& edit, const ListCells& cells, ListChanges& changes,
              QObject* parent = nullptr);

    /// Takes over what the field holds now. Rows come and go at the end; nothing but their number
    /// is read. Emits refreshed() when done.
    void refresh();
    /// Values of the field, those without a row included.
    int valueCount() const { return m_valueCount; }
    void setReadOnly(bool on) { m_isReadOnly = on; }
    bool isReadOnly() const { return m_isReadOnly; }

    /// The column of the cells for a column of the table; -1 for the swatches.
    int cellColumn(int column) const { return column - (m_hasSwatches ? 1 : 0); }
    int tableColumn(int cellColumn) const { return cellColumn + (m_hasSwatches ? 1 : 0); }
    /// The text of a cell, to the last character.
    QString cellText(const QModelIndex& index) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Switches the box of a cell that has one.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

Q_SIGNALS:
    void refreshed();

private:
    struct Page {
        std::vector<QStringList> rows;
        std::vector<QColor> colors;
    };
    static constexpr int kPageRows = 64;
    static constexpr int kMaxPages = 64;

    const Page& page(int row) const;
    Page readPage(int first) const;

    MrbFieldEdit& m_edit;
    const ListCells& m_cells;
    ListChanges& m_changes;
    bool m_hasSwatches;
    bool m_isReadOnly = false;
    int m_valueCount = 0;
    int m_rowCount = 0;
    mutable QHash<int, Page> m_pages;
    mutable QHash<int, Page> m_oldPages; ///< from before the last refresh
};
