#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>

#include <memory>

class QPainter;
class SoMiraboTreeView;
class SoTreeViewItem;

namespace mirabo {

struct MovePlan;

/// Shows the effect of a drag before the drop: where the node will land, drawn over the rows;
/// what the drop would do, or why it would not, as a text. Opens the branch that the mouse rests
/// on, and scrolls near the upper and lower edge.
class DropGuide final : public QObject {
    Q_OBJECT

public:
    /// Both are QTimers of that object name, which tests can let run out.
    static constexpr char kOpenTimer[] = "openTimer";
    static constexpr char kScrollTimer[] = "scrollTimer";

    explicit DropGuide(SoMiraboTreeView* view);
    ~DropGuide() override;

    /// The mouse is at that point of the viewport; `asReference`: with Ctrl held.
    void moved(QPoint point, bool spaceHeld, bool asReference);
    /// The drag is over, or has left the tree.
    void ended();
    bool isActive() const { return m_active; }
    const MovePlan& plan() const { return *m_plan; }
    void paint(QPainter& painter) const;

Q_SIGNALS:
    /// Empty when there is nothing to tell.
    void hintChanged(const QString& hint);

private:
    void look();
    void open();
    void scroll();
    QString hint(const SoTreeViewItem& dragged) const;

    SoMiraboTreeView* m_view;         // Not owned; owns us.
    std::unique_ptr<MovePlan> m_plan; ///< never null
    QTimer m_open;
    QTimer m_scroll;
    QPoint m_point;
    QString m_hint;
    const SoTreeViewItem* m_restsOn = nullptr; ///< only compared
    int m_scrollStep = 0;
    bool m_spaceHeld = false;
    bool m_asReference = false;
    bool m_active = false;
};

} // namespace mirabo
