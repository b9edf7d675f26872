#pragma once

#include <kalmyr/sensors/SoNodeSensor.h>

#include <QWidget>

class QCheckBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class SoNode;
class SoNodeOverviewList;

/// Shows one node: name, id, address, override flag, and its fields.
///
/// Takes no reference on the node: when it dies the panel empties itself and says so.
class SoNodeOverview final : public QWidget {
    Q_OBJECT

public:
    explicit SoNodeOverview(QWidget* parent = nullptr, bool withCloseButton = false);
    ~SoNodeOverview() override;

    /// Shows a node; `kit` is the node kit that may hold it as a part, or null.
    void setNode(SoNode* node, SoNode* kit);
    void clear();
    SoNode* getNode() const { return m_node; }
    SoNodeOverviewList* getList() const { return m_list; }

    /// Allows watching the current row.
    void setWatchEnabled(bool on);

Q_SIGNALS:
    /// The user switched the override box; the panel changes nothing itself.
    void overrideRequested(bool on);
    void watchRequested();
    void closeRequested();
    void nodeRenamed(SoNode* node);

public Q_SLOTS:
    void nameEdited(QString text);
    void overrideButtonStateChanged();
    void languageChange();
    /// Somebody else renamed the node.
    void nodeNameChanged(SoNode* node);

private:
    void buildWidgets(bool withCloseButton);
    void buildHeader(bool withCloseButton);
    void connectWidgets();
    void showName(SoNode* kit);
    void showIdentity();
    void refresh();
    static void nodeChanged(void* data, SoSensor* sensor);
    static void nodeDied(void* data, SoSensor* sensor);

    SoNode* m_node = nullptr; // Not owned; forgotten when it dies.
    SoNodeSensor m_sensor;
    QFrame* m_upperFrame = nullptr;
    QLabel* m_nodeNameLabel = nullptr;
    QLineEdit* m_nodeNameValue = nullptr;
    QLabel* m_nodeNetNameLabel = nullptr; ///< in the net-name mode only
    QLabel* m_addressLabel = nullptr;
    QLabel* m_nodeIdLabel = nullptr;
    QCheckBox* m_overrideCheckBox = nullptr;
    QCheckBox* m_showChangedCheckBox = nullptr;
    QPushButton* m_watchButton = nullptr;
    QPushButton* m_closeButton = nullptr;
    SoNodeOverviewList* m_list = nullptr;
};
