#pragma once

#include "mirabo/tree/RecentChanges.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNotification.h>
#include <kalmyr/sensors/SoNodeSensor.h>

#include <QObject>
#include <QTimer>

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

class SoGroup;
class SoMiraboTreeView;
class SoSensor;
class SoTreeViewItem;

/// Keeps the tree in step with the graph, whoever changes it: rows are patched before the call that
/// made the change returns. What concerns looks only (repainting, scrolling, telling the panels of
/// a new current row) is done once, in the next pass of the event loop.
///
/// A priority 0 sensor on the watched node says when a change is complete. It would report only the
/// last of several changes made inside other sensors' callbacks, so the changes themselves are
/// noted down one by one while they pass.
///
/// Other threads may change the graph under the scene database's write lock. What runs in them only
/// notes that there is something to compare; the rows of what has changed since are compared in the
/// next pass of the event loop, or before the tree is painted. A change in another thread without
/// the lock is reported as an error, once.
///
/// Changes at or below a node whose notification is off are compared with the next notification
/// that passes the node.
class SoGraphTopologyManager final : public QObject {
    Q_OBJECT

public:
    explicit SoGraphTopologyManager(SoMiraboTreeView* view);
    ~SoGraphTopologyManager() override;

    /// Watches a node (null: none): the root that the tree shows, or a container that holds it. A
    /// child added to such a container is a new root to be shown. No reference is held.
    void attach(SoNode* node);
    SoNode* getAttachedNode() const { return m_attached; }
    /// As the view's function.
    void setContainer(SoGroup* container);
    SoGroup* getContainer() const;
    /// The tree shows another root: watches it, or a container that holds it.
    void follow(SoNode* root);

    /// The root is a VRML97 world; file and inline nodes then show no children.
    static bool isVrmlScene();
    static void setVrmlScene(bool on);

    /// Work for the next pass of the event loop has come up.
    void requestUpdate();
    /// The row of the last change of this pass, if the change is one to be shown. Asked once a
    /// pass.
    SoTreeViewItem* takeChangedItem();
    /// Changes of this pass are not to be shown.
    void forgetLastChange() { m_lastChange.clear(); }
    /// Compares what other threads have changed, and drops rows whose nodes died. The caller holds
    /// a GraphReading; after it every row is in the graph that it protects, as far as notifications
    /// tell.
    void bringUpToDate();
    /// The same in a GraphReading of its own; false when that was refused.
    bool tryToBringUpToDate();
    /// A node that the tree may know is being destroyed.
    void nodeDied(const SoNode* node);

    /// Rows are being patched: some are on the stack, while the view tells listeners of others.
    bool isPatching() const { return m_patching; }
    /// Shows another root with the next pass in which the graph may be looked at. Holds it till
    /// then.
    void setRootLater(SoNode* root);
    /// Another root is shown now.
    void forgetLaterRoot() { m_laterRoot.reset(); }

    /// Fetches the content of inlines that were told to have changed but have none.
    void fetchInlines();
    /// While on, changes are the tool's own marking of what is selected: rows follow, but nothing
    /// is shown on account of them.
    void setHighlighting(bool on) { m_highlighting = on; }
    RecentChanges& recentChanges() { return m_recent; }
    /// True from the death of the watched node in another thread until the tree is cleared, or the
    /// root turns out to live on without its container.
    bool hasWatchedDied() const { return m_watchedDied; }

public Q_SLOTS:
    /// Does what was put off to this pass of the event loop.
    void updateTreeViewDisplay();

Q_SIGNALS:
    /// The structure of the graph changed; emitted inside the change.
    void structureChanged();
    /// A node whose content comes from a file changed in a way that fields do not tell.
    void contentReplaced();

private:
    /// One change as it passed by.
    struct Change {
        SoNotification::Kind kind;
        int index;
        SoRef<SoNode> node;
        const SoNode* child;              ///< only compared
        SoField* field;                   ///< null for a change of the child list
        std::vector<const SoNode*> chain; ///< from the watched node; not for additions
    };
    /// Changes below a node that notification did not report.
    struct Silence {
        SoRef<SoNode> node;
        std::uint64_t since;
    };

    class Recorder final : public SoAuditor {
    public:
        explicit Recorder(SoGraphTopologyManager& manager) : m_manager(manager) {}
        void auditedChanged(SoNotification& notification) override
        {
            m_manager.record(notification);
        }

    private:
        SoGraphTopologyManager& m_manager;
    };

    bool isOtherThread() const;
    bool concernsRows(const SoNotification& notification) const;
    void record(const SoNotification& notification);
    void recordElsewhere(const SoNotification& notification);
    void recordValue(const SoNotification& notification);
    void followWay(const SoNotification& notification, std::vector<const SoNode*>& nodes);
    void recordSilences(const SoNotification& notification);
    void changed();
    void compareSilences();
    void apply(const Change& change);
    void applyToContainer(const Change& change);
    bool applyTo(SoTreeViewItem* item, const Change& change); ///< null: the top level
    bool applyToField(SoTreeViewItem* item, const Change& change);
    void tellWhere(const Change& change, bool currentRowWent);
    SoTreeViewItem* itemAt(const std::vector<const SoNode*>& chain) const;
    void watchedDied();
    void containerDied();
    void applyContainer();
    bool watchesContainer() const;
    bool isShownAtTop(const SoNode* node) const;
    void changedElsewhere(std::uint64_t stamp);
    void compareChangesElsewhere();
    bool hasAnotherScene(SoNode*& next) const;
    void showAnotherScene();
    void dropDeadRows();

    SoMiraboTreeView* m_view; // Not owned; owns us.
    QTimer m_timer;
    Recorder m_recorder;
    SoNodeSensor m_sensor;
    SoNode* m_attached = nullptr;   // Not owned; forgotten when it dies.
    SoGroup* m_container = nullptr; // Not owned; forgotten when it dies.
    bool m_isContainerNew = false;  ///< it waits for the next pass
    bool m_isForContainer = false;  ///< what is watched is, or was, the container
    std::vector<Change> m_changes;
    std::vector<Silence> m_silences;
    std::vector<SoFieldContainer*> m_way;    ///< of the change that is recorded
    std::vector<const SoNode*> m_lastChange; ///< down to the node; only compared
    RecentChanges m_recent;
    std::vector<SoRef<SoNode>> m_toFetch;
    bool m_fetching = false;
    bool m_highlighting = false;
    bool m_applying = false;
    bool m_patching = false;
    std::optional<SoRef<SoNode>> m_laterRoot; ///< null: an empty tree
    bool m_structureChanged = false;
    bool m_contentReplaced = false;
    bool m_structureChangedElsewhere = false;       ///< told in the next pass
    std::atomic<std::uint64_t> m_elsewhereSince{0}; ///< stamp of the first change; 0: none
    std::atomic<bool> m_watchedDied{false};
    std::atomic<bool> m_unlockedReported{false};
};
