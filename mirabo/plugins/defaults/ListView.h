#pragma once

#include "ListChanges.h"

#include <QTableView>

class ListDelegate;
class ListModel;

/// The table of a list's values. Keys of its actions act while it has the focus, whatever else they
/// do in the window.
class ListView final : public QTableView {
    Q_OBJECT

public:
    /// Both must outlive it.
    ListView(ListModel& model, ListDelegate& delegate, QWidget* parent = nullptr);

    /// The cells that are selected, or the current one when none is.
    CellSelection selectedCells() const;
    /// Selects whole rows and makes the first one current, in the column that is.
    void selectRows(const RowRanges& rows);
    /// Column of the cells that is current; the first one when none is.
    int currentColumn() const;
    /// Row that is current, or -1.
    int currentRow() const { return currentIndex().row(); }
    /// Sets the text of an empty table.
    void setHint(const QString& hint);

    void keyboardSearch(const QString&) override {} // intended: it reads all rows
    QSize sizeHint() const override;

Q_SIGNALS:
    /// The user wants to edit the colour of a row by its swatch.
    void swatchOpened(int row);

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QAction* actionOf(const QKeyEvent& event) const;
    bool canEdit(const QModelIndex& index) const;
    bool isSwatch(const QModelIndex& index) const;
    void editNext(int by);
    void updateSizes();
    /// A few columns share the width.
    void shareWidth();
    void updateRowNumbers();

    ListModel& m_model;
    ListDelegate& m_delegate;
    QString m_hint;
};
