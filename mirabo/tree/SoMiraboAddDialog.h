#pragma once

#include <QDialog>

class QLabel;
class QKeyEvent;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class SoNode;
class SoType;

/// The node types that can be created, by category, to be added to the scene one after the other.
///
/// Edits nothing itself: addRequested() carries each new node to whoever puts it into the graph.
/// Meant to be shown without blocking and to stay open for several additions; it deletes itself
/// when it is closed, so keep it in a QPointer.
class SoMiraboAddDialog final : public QDialog {
    Q_OBJECT

public:
    explicit SoMiraboAddDialog(QWidget* parent = nullptr);
    ~SoMiraboAddDialog() override;

    /// The chosen type; bad while a category or nothing is chosen.
    SoType selectedType() const;
    /// Says where the next node will go, or why it cannot be added now.
    void setTarget(const QString& text, bool canAdd);

    /// The next type whose name contains `text` in any case, from `start` on (null: the current
    /// entry, else the first) and around the end. A text that begins with "So" is looked up without
    /// it when nothing has it. Null when there is none.
    QTreeWidgetItem* find(const QString& text, QTreeWidgetItem* start) const;

public Q_SLOTS:
    /// Makes a node of the chosen type and has it added.
    void addNode();
    void itemDoubleClick(QTreeWidgetItem* item);
    /// Goes to the first type that the search field fits; to none when none does.
    void findNode();
    void selectionChanged();

Q_SIGNALS:
    /// A new node that nobody holds: it goes after the call unless a receiver takes a reference.
    /// Receivers may delete the dialog.
    void addRequested(SoNode* node);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void createWidgets();
    void fillCatalogue();
    void findAgain();
    void chooseLastType();
    bool isKeyHandled(QObject* watched, QKeyEvent* event);
    void updateAddButton();
    void showFieldsOf(SoType type);

    QTreeWidget* m_catalogue;
    QTreeWidget* m_fields;
    QLabel* m_fieldsTitle;
    QLabel* m_target;
    QLineEdit* m_search;
    QPushButton* m_add;
    bool m_canAdd = true;
    int m_shownType = -1; ///< index of the type whose fields are shown
};
