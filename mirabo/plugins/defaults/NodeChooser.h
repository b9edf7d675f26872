#pragma once

#include "SceneNodes.h"

#include <QDialog>

#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class SoField;

/// Lets the user choose a node of the scene, or one of its fields, from a list that is searched as
/// the user types. Shown with open(); deletes itself when it is closed.
class NodeChooser final : public QDialog {
    Q_OBJECT

public:
    using Choose = std::function<void(SoNode* node)>;
    using ChooseField = std::function<void(SoField* field)>;
    /// Which fields are offered.
    using FieldFilter = std::function<bool(const SoField& field)>;

    /// Chooses a node.
    NodeChooser(const QString& title, Choose choose, QWidget* parent);
    /// Chooses a field of a node.
    NodeChooser(const QString& title, FieldFilter filter, ChooseField choose, QWidget* parent);

private:
    void build(const QString& title);
    void search();
    void listFields();
    void enableButton();
    const SoNode* currentNode() const;
    void accept() override;

    Choose m_choose;
    FieldFilter m_filter;
    ChooseField m_chooseField;
    QLineEdit* m_search = nullptr;
    QListWidget* m_list = nullptr;
    QLabel* m_hint = nullptr;
    QComboBox* m_fields = nullptr; ///< null: a node is chosen
    QPushButton* m_ok = nullptr;
    std::vector<SceneNode> m_nodes;
};
