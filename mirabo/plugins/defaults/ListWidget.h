#pragma once

#include "ListActions.h"
#include "ListCells.h"
#include "ListChanges.h"

#include "mirabo/extender/MrbFieldEditor.h"

#include <QPointer>

#include <map>
#include <memory>

class ListDelegate;
class ListModel;
class ListPrompt;
class ListStatistics;
class ListView;
class QAction;
class QColorDialog;
class QLabel;
class QToolBar;

/// The values of a multiple-value field of any type in a table, with what can be done to many of
/// them, and their least, greatest and mean number in the foot.
///
/// Of several fields the first one is shown; changes are made to all.
class ListWidget final : public MrbFieldWidget {
    Q_OBJECT

public:
    ListWidget(MrbFieldEdit* edit, std::unique_ptr<const ListCells> cells, QWidget* parent);
    ~ListWidget() override;

    void showValue() override;
    bool isTyping() const override;
    /// Values can still be selected and copied.
    void setReadOnly(bool on) override;
    void commit() override;

    ListView* view() const { return m_view; }
    ListStatistics* statistics() const { return m_statistics; } ///< null for values without numbers
    QAction* action(ListAction action) const { return m_actions.at(action); }
    /// Returns the text of the foot.
    QString footText() const;
    /// Why the last change could not be made; empty when it was.
    QString problemText() const;

protected:
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void makeActions();
    void makeLayout();
    void drawIcons();
    void run(ListAction action);
    void insert(ListAction action);
    void removeRows();
    void moveRows(int by);
    void sortRows(bool isDescending);
    void askForValue(ListAction action);
    void askForRow();
    void askForCount();
    void chooseColor(int row);
    void setColor(int row, const QColor& color);
    void copy();
    void paste();
    /// Shows what a change has done; `rows`, where given, become the selection.
    void tellChange(bool isChanged, const RowRanges& rows = {});
    void goTo(int row);
    void chooseStatistics();
    bool isPossible(const ListActionEntry& entry) const;
    void updateActions();
    void updateFoot();

    std::unique_ptr<const ListCells> m_cells;
    ListChanges m_changes;
    ListModel* m_model;
    ListDelegate* m_delegate;
    ListView* m_view;
    ListStatistics* m_statistics = nullptr;
    ListPrompt* m_prompt;
    QToolBar* m_tools;
    QLabel* m_problem;
    QLabel* m_foot;
    QPointer<QColorDialog> m_colorDialog;     // Deletes itself when it is closed.
    std::map<ListAction, QAction*> m_actions; // Not owned; children.
};

/// Null in the compact form, and when the field cannot be read.
MrbFieldWidget* makeListWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
