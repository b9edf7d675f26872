#include "mirabo/tree/DropGuide.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>

#include <QPainter>
#include <QScrollBar>

namespace mirabo {

namespace {

constexpr int kOpenMs = 700;  // a branch opens when the mouse has rested on it so long
constexpr int kScrollMs = 40; // between two steps of scrolling
constexpr int kLineWidth = 2;
constexpr int kKnob = 4; // radius of the mark at the beginning of the line

/// The last row in sight of an open branch.
const SoTreeViewItem* lastBelow(const SoTreeViewItem* item)
{
    while (item->isExpanded() && item->childCount() > 0)
        item = item->childItem(item->childCount() - 1);
    return item;
}

} // namespace

DropGuide::DropGuide(SoMiraboTreeView* view)
    : QObject(view), m_view(view), m_plan(std::make_unique<MovePlan>())
{
    m_open.setObjectName(kOpenTimer);
    m_open.setParent(this);
    m_open.setSingleShot(true);
    m_open.setInterval(kOpenMs);
    connect(&m_open, &QTimer::timeout, this, &DropGuide::open);
    m_scroll.setObjectName(kScrollTimer);
    m_scroll.setParent(this);
    m_scroll.setInterval(kScrollMs);
    connect(&m_scroll, &QTimer::timeout, this, &DropGuide::scroll);
}

DropGuide::~DropGuide() = default;

void DropGuide::moved(QPoint point, bool spaceHeld, bool asReference)
{
    m_active = true;
    m_point = point;
    m_spaceHeld = spaceHeld;
    m_asReference = asReference;
    const int margin = m_view->autoScrollMargin();
    m_scrollStep = point.y() < margin                                   ? -1
                   : point.y() >= m_view->viewport()->height() - margin ? 1
                                                                        : 0;
    if (m_scrollStep == 0)
        m_scroll.stop();
    else if (!m_scroll.isActive())
        m_scroll.start();
    look();
}

/// Rows come and go while the mouse rests: nothing is remembered from one look to the next.
void DropGuide::look()
{
    SoTreeViewItem* target = asItem(m_view->itemAt(m_point));
    SoTreeViewItem* dragged = m_view->context().pressed;
    if (target != m_restsOn) {
        m_restsOn = target;
        m_open.stop();
        if (target && !target->isExpanded() && target->childCount() > 0)
            m_open.start();
    }
    QString now;
    {
        const GraphReading graph;
        *m_plan = {};
        if (graph && dragged && target && !dragged->isDead() && !target->isDead()) {
            *m_plan = m_asReference ? planReference(dragged, target, m_spaceHeld)
                                    : planMove(dragged, target, m_spaceHeld);
            now = hint(*dragged);
        }
    }
    if (now != m_hint) {
        m_hint = std::move(now);
        Q_EMIT hintChanged(m_hint);
    }
    m_view->viewport()->update();
}

void DropGuide::ended()
{
    if (!m_active)
        return;
    m_active = false;
    m_open.stop();
    m_scroll.stop();
    m_restsOn = nullptr;
    *m_plan = {};
    m_view->viewport()->update();
    if (!m_hint.isEmpty())
        Q_EMIT hintChanged(m_hint = QString());
}

void DropGuide::open()
{
    auto* item = asItem(m_view->itemAt(m_point));
    if (!m_active || !item || item != m_restsOn)
        return;
    item->setExpanded(true);
    look();
}

void DropGuide::scroll()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    bar->setValue(bar->value() + m_scrollStep * bar->singleStep());
    look();
}

QString DropGuide::hint(const SoTreeViewItem& dragged) const
{
    const QString node = nodeText(*dragged.getNode());
    const QString target = nodeText(*m_plan->target->getNode());
    if (!m_plan->isPossible())
        return m_plan->isIdle ? m_plan->refusal
                              : QString("%1 cannot be %2 here. %3")
                                    .arg(node, m_asReference ? "used" : "moved", m_plan->refusal);
    const char* what = "";
    switch (m_plan->where) {
    case MovePlan::Where::First:
        what = "Move %1 to the front of %2";
        break;
    case MovePlan::Where::Behind:
        what = m_asReference ? "Use %1 behind %2 as well" : "Move %1 behind %2";
        break;
    default:
        what = m_asReference ? "Use %1 in %2 as well, behind its other nodes"
                             : "Move %1 into %2, behind its other nodes";
        break;
    }
    const QString text = QString(what).arg(node, target);
    QStringList keys;
    if (m_plan->where != MovePlan::Where::Behind)
        keys << QString("press the space bar before you drag: behind %1").arg(target);
    if (!m_asReference)
        keys << "hold Ctrl: use it here as well";
    return keys.isEmpty() ? text : text + "   (" + keys.join("; ") + ')';
}

void DropGuide::paint(QPainter& painter) const
{
    // The row may have gone since.
    if (!m_active || !m_plan->target || m_plan->isIdle || m_view->itemAt(m_point) != m_plan->target)
        return;
    const QRect viewport = m_view->viewport()->rect();
    // From the icon on: the branches before it tell the level.
    QRect row = m_view->visualRect(m_view->indexAt(m_point).siblingAtColumn(SoTreeViewItem::Type));
    row.setRight(viewport.right() - kLineWidth);
    const QColor color = m_plan->isPossible()
                             ? m_view->palette().color(QPalette::Highlight)
                             : m_view->palette().color(QPalette::Disabled, QPalette::Text);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, kLineWidth, m_plan->isPossible() ? Qt::SolidLine : Qt::DashLine));
    if (!m_plan->isPossible() || m_plan->where == MovePlan::Where::Into) {
        painter.drawRoundedRect(row.adjusted(1, 1, -1, -1), kKnob, kKnob);
        return;
    }
    const bool asFirst = m_plan->where == MovePlan::Where::First;
    const int left = row.left() + (asFirst ? m_view->indentation() : 0);
    const int y =
        asFirst ? row.bottom() : m_view->visualItemRect(lastBelow(m_plan->target)).bottom();
    painter.setBrush(color);
    painter.drawEllipse(QPoint(left + kKnob, y), kKnob, kKnob);
    painter.drawLine(left + 2 * kKnob, y, row.right(), y);
}

} // namespace mirabo
