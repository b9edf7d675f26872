#pragma once

#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts
#include "mirabo/extender/private/GraphFollower.h"
#endif

#include <kalmyr/base/SoRef.h>

#include <QTimer>
#include <QWidget>

#include <atomic>

class QCheckBox;
class QFrame;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class SoNode;
class SoNodeOverviewList;

/// Shows one node: name, id, address, override flag, and its fields.
///
/// Takes no reference on the node: when it dies the panel keeps what it showed last, greyed, and
/// says "(deleted)". A hidden panel only hears of that death.
class SoNodeOverview final : public QWidget {
    Q_OBJECT

public:
    explicit SoNodeOverview(QWidget* parent = nullptr, bool withCloseButton = false);
    ~SoNodeOverview() override;

    /// Shows a node; `kit` is the node kit that may hold it as a part, or null. Who calls holds a
    /// GraphReading and the node.
    void setNode(SoNode* node, SoNode* kit);
    void clear();
    /// Null when nothing is shown, and once the node has died.
    SoNode* getNode() const { return m_node; }
    /// The node, held; null when it is dead or dying, or another thread edits. For a look at it
    /// under a GraphReading.
    SoRef<SoNode> holdNode() const;
    bool isNodeDead() const { return m_dead; }
    /// Takes over what nobody tells of: the name.
    void refreshName();
    /// The same and all else that may have changed unheard.
    void refreshAll();
    SoNodeOverviewList* getList() const { return m_list; }

    /// Allows watching the current row.
    void setWatchEnabled(bool on);

Q_SIGNALS:
    /// The user switched the override box; the panel changes nothing itself.
    void overrideRequested(bool on);
    void watchRequested();
    void closeRequested();
    void nodeRenamed(SoNode* node);
    /// The shown node is dying, inside the change that kills it.
    void nodeDied();

public Q_SLOTS:
    void nameEdited(QString text);
    void overrideButtonStateChanged();
    void languageChange();
    /// Somebody else renamed the node.
    void nodeNameChanged(SoNode* node);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void buildWidgets(bool withCloseButton);
    void buildHeader(bool withCloseButton);
    void connectWidgets();
    void buildChecks(QHBoxLayout* checks, bool withCloseButton);
    void enableWidgets();
    void showName(const SoNode& node, SoNode* kit);
    void showNetName(const SoNode& node);
    void showId(const SoNode& node);
    void noteChange();
    void followChange();
    void showDeath();
    void forgetNode();
    void renameLater();

    std::atomic<SoNode*> m_node = nullptr; // Not owned; forgotten when it dies.
    bool m_dead = false;
    std::atomic<bool> m_inView{false};
    std::atomic<bool> m_changeNoted{false}; ///< and its pass is to come
    bool m_isRenaming = false;              ///< as soon as no other thread edits
    QTimer m_pause;                         ///< runs for a while after the id was shown
    bool m_idStale = false;                 ///< the node changed since
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
    mirabo::GraphFollower m_follower; // last: it goes before what it writes
};
