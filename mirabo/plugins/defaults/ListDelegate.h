#pragma once

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>

#include <memory>

class ListCells;
class ListChanges;
class ListModel;
class MarkedLineEdit;
class MrbFieldEdit;
class SoMField;

/// Paints the cells of a list and edits one at a time, in place.
///
/// What is typed is applied at once, as one gesture. Return and Tab end it, Escape takes it back. A
/// text that is no value is marked; the editor stays open with it until it is mended or Escape is
/// pressed.
class ListDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    /// All must outlive it.
    ListDelegate(MrbFieldEdit& edit, const ListCells& cells, ListChanges& changes,
                 const ListModel& model, QObject* parent = nullptr);
    ~ListDelegate() override;

    bool isEditing() const { return m_editor; }
    bool isIllegal() const { return m_editor && !m_problem.isEmpty(); }
    /// Ends the editing. False, with the editor in the focus, when its text is illegal.
    bool finish();
    /// Ends the editing in any case; an illegal text is lost.
    void discard();
    /// Shows the present value, unless the user has typed; then a tool tip tells of it.
    void refresh();

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    /// Nothing: what is typed has been applied.
    void setModelData(QWidget*, QAbstractItemModel*, const QModelIndex&) const override {}
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;

Q_SIGNALS:
    /// The user goes on to the next cell (1) or the one before (-1).
    void movedOn(int by);
    void applied();
    /// After the editor has gone, and when its text is not illegal any more.
    void inputEnded();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool handleKey(int key, Qt::KeyboardModifiers modifiers);
    QString hint() const;
    QString typedText() const;
    MarkedLineEdit* lineEdit() const;
    void takeTyped();
    void setProblem(const QString& problem);
    void cancel();
    void forget();

    MrbFieldEdit& m_edit;
    const ListCells& m_cells;
    ListChanges& m_changes;
    const ListModel& m_model;

    // Of the open editor, which the view makes and destroys through const operations.
    mutable QPointer<QWidget> m_editor; // Not owned; the view's.
    mutable QPersistentModelIndex m_cell;
    mutable QString m_shown;
    QString m_applied; ///< what the cell showed after the last change
    bool m_isTyped = false;
    QString m_problem;
    std::unique_ptr<SoMField> m_before; ///< the value before the first change
};
