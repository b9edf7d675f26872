#include "mirabo/core/Messages.h"
#include "mirabo/core/Modal.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/preferences/DragFormats.h"
#include "mirabo/tree/DropGuide.h"
#include "mirabo/tree/HelpAddress.h"
#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeContextMenu.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <deque>
#include <iterator>
#include <vector>

// Input and painting of the tree.

using mirabo::asItem;

namespace {

const QString kDragText = QStringLiteral("Mirabo/Drop");
const QString kEmptyHint = QStringLiteral("No scene: open a file or drop one here");
const QString kHiddenHint = QStringLiteral("The filter hides the root of the scene");
constexpr int kHintMargin = 24;
/// Limit of the rows that are visited to find a closed one below a row.
constexpr int kExploreRows = 20000;
constexpr int kExploreBranches = 500;

bool isTreeDrag(const QDropEvent* event)
{
    return event->mimeData()->text() == kDragText;
}

/// With Ctrl the node stays, and stands at the target as well.
bool isReferenceDrag(const QDropEvent* event)
{
    return event->keyboardModifiers() & Qt::ControlModifier;
}

/// Number of rows below an item, counted up to a limit.
int countRows(const QTreeWidgetItem* top, int limit)
{
    int count = 0;
    std::vector<const QTreeWidgetItem*> open{top};
    while (!open.empty() && count <= limit) {
        const QTreeWidgetItem* item = open.back();
        open.pop_back();
        count += item->childCount();
        for (int i = 0; i < item->childCount(); ++i)
            if (item->child(i)->childCount() > 0)
                open.push_back(item->child(i));
    }
    return count;
}

struct StepKey {
    int key;
    mirabo::MoveStep step;
};
constexpr StepKey kStepKeys[] = {{Qt::Key_Up, mirabo::MoveStep::Up},
                                 {Qt::Key_Down, mirabo::MoveStep::Down},
                                 {Qt::Key_Right, mirabo::MoveStep::IntoPrevious},
                                 {Qt::Key_Left, mirabo::MoveStep::OutOfParent}};

/// Ctrl+Shift with a cursor key moves the current row.
const StepKey* stepKeyOf(const QKeyEvent* event)
{
    constexpr auto kModifiers = Qt::ControlModifier | Qt::ShiftModifier;
    if ((event->modifiers() & ~Qt::KeypadModifier) != kModifiers)
        return nullptr;
    const auto* at = std::find_if(std::begin(kStepKeys), std::end(kStepKeys),
                                  [event](const StepKey& key) { return key.key == event->key(); });
    return at == std::end(kStepKeys) ? nullptr : at;
}

/// Ctrl+Alt+Shift+T, in debug builds only.
bool isCheckShortcut(const QKeyEvent* event)
{
#ifdef NDEBUG
    Q_UNUSED(event)
    return false;
#else
    return event->key() == Qt::Key_T
           && event->modifiers() == (Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier);
#endif
}

} // namespace

void SoMiraboTreeView::changeEvent(QEvent* event)
{
    QTreeWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyLook();
}

void SoMiraboTreeView::paintEvent(QPaintEvent* event)
{
    const mirabo::GraphReading graph;
    if (!graph) {
        m_lookPending = true;
        m_topology->requestUpdate();
    } else {
        m_topology->bringUpToDate();
        // Each failed check removed what it found, so this ends.
        while (topLevelItemCount() > 0 && hasLivingRoot() && !verifyRowsInView()) {
        }
    }
    QTreeWidget::paintEvent(event);
    QPainter painter(viewport());
    m_dropGuide->paint(painter);
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (!asItem(topLevelItem(row))->isFilteredOut())
            return;
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect().adjusted(kHintMargin, 0, -kHintMargin, 0),
                     Qt::AlignCenter | Qt::TextWordWrap, rootItem() ? kHiddenHint : kEmptyHint);
}

void SoMiraboTreeView::keyPressEvent(QKeyEvent* event)
{
    if (isCheckShortcut(event)) {
        reportCheck();
        return;
    }
    if (const StepKey* key = stepKeyOf(event)) {
        Q_EMIT stepRequested(key->step);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Space:
        m_spaceHeld = true;
        return;
    case Qt::Key_Asterisk:
        Q_EMIT expandAllRequested();
        return;
    case Qt::Key_Delete:
    case Qt::Key_F1:
        return; // answered when they are released
    default:
        QTreeWidget::keyPressEvent(event);
    }
}

void SoMiraboTreeView::keyReleaseEvent(QKeyEvent* event)
{
    const SoTreeViewItem* item = asItem(currentItem());
    const bool isAlive = item && !item->isDead();
    switch (event->key()) {
    case Qt::Key_Space:
        if (!event->isAutoRepeat())
            m_spaceHeld = false;
        return;
    case Qt::Key_Delete:
        if (isAlive && !event->isAutoRepeat())
            Q_EMIT deleteRequested();
        return;
    case Qt::Key_F1:
        if (item && !event->isAutoRepeat())
            Q_EMIT helpRequested(mirabo::helpAddress(item->getNodeType().getName().view()));
        return;
    default:
        QTreeWidget::keyReleaseEvent(event);
    }
}

void SoMiraboTreeView::focusOutEvent(QFocusEvent* event)
{
    m_spaceHeld = false; // its release goes elsewhere
    QTreeWidget::focusOutEvent(event);
}

void SoMiraboTreeView::mousePressEvent(QMouseEvent* event)
{
    m_topology->tryToBringUpToDate();
    SoTreeViewItem* item = asItem(itemAt(event->pos()));
    if (!item) {
        m_context.pressed = nullptr;
        m_dragArmed = false;
        event->accept();
        return;
    }
    m_context.pressed = item;
    m_dragStart = event->pos();
    m_pressChose = false;
    m_shiftPressed = event->modifiers() & Qt::ShiftModifier;
    QTreeWidget::mousePressEvent(event);
    m_shiftPressed = false;
    // The item may be gone by now, since the panels were told of it.
    m_dragArmed = m_context.pressed && m_context.pressed != rootItem();
}

void SoMiraboTreeView::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        QTreeWidget::mouseMoveEvent(event);
        return;
    }
    const int distance = (event->pos() - m_dragStart).manhattanLength();
    if (m_dragArmed && m_context.pressed && distance >= QApplication::startDragDistance())
        startDrag();
}

void SoMiraboTreeView::startDrag()
{
    m_dragArmed = false;
    mirabo::Modal<QDrag> drag;
    auto* data = new QMimeData;
    data->setText(kDragText);
    data->setData(mirabo::kTreeRowFormat, QByteArray());
    drag->setMimeData(data);
    drag->setPixmap(
        mirabo::namedIcon("drag").pixmap(iconSize().isValid() ? iconSize() : QSize(24, 24)));
    const QPointer<SoMiraboTreeView> self(this); // the host may end the tool meanwhile
    drag.run(Qt::MoveAction);
    if (self)
        m_spaceHeld = false; // its release went to the drag
}

void SoMiraboTreeView::dragEnterEvent(QDragEnterEvent* event)
{
    event->setAccepted(isTreeDrag(event)); // files go on to the main window
}

void SoMiraboTreeView::dragMoveEvent(QDragMoveEvent* event)
{
    event->setAccepted(isTreeDrag(event));
    if (event->isAccepted())
        m_dropGuide->moved(event->pos(), m_spaceHeld, isReferenceDrag(event));
}

void SoMiraboTreeView::dragLeaveEvent(QDragLeaveEvent* event)
{
    m_dropGuide->ended();
    event->accept();
}

/// Nothing can be moved below itself, by whatever way the target is reached.
bool SoMiraboTreeView::mayMove(SoTreeViewItem* dragged, SoTreeViewItem* target)
{
    const mirabo::GraphReading graph;
    return graph && isInGraph(dragged) && isInGraph(target)
           && !target->getNode()->isAtOrBelow(dragged->getNode());
}

void SoMiraboTreeView::dropEvent(QDropEvent* event)
{
    if (!isTreeDrag(event)) {
        event->ignore();
        return;
    }
    m_topology->tryToBringUpToDate();
    SoTreeViewItem* dragged = m_context.pressed;
    SoTreeViewItem* target = asItem(itemAt(event->pos()));
    m_context.pressed = nullptr;
    m_dropGuide->ended();
    event->accept();
    if (!dragged || !target || dragged == target || dragged->isDisabledNode()
        || target->isDisabledNode())
        return;
    if (!mayMove(dragged, target))
        return;
    if (isReferenceDrag(event))
        Q_EMIT referenceRequested(dragged, target, m_spaceHeld);
    else
        Q_EMIT moveRequested(dragged, target, m_spaceHeld);
}

bool SoMiraboTreeView::event(QEvent* event)
{
    // Those of the mouse go to the viewport.
    if (event->type() == QEvent::ContextMenu
        && static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) {
        openMenuOfCurrent();
        event->accept();
        return true;
    }
    return QTreeWidget::event(event);
}

void SoMiraboTreeView::openMenuOfCurrent()
{
    if (!currentItem())
        return;
    scrollToItem(currentItem());
    const QRect seen = visualItemRect(currentItem()) & viewport()->rect();
    if (!seen.isEmpty())
        onCustomContextMenu(seen.center());
}

void SoMiraboTreeView::onCustomContextMenu(const QPoint& point)
{
    m_topology->tryToBringUpToDate();
    SoTreeViewItem* item = asItem(itemAt(point));
    if (!item || !verify(item) || item->isDisabledNode() || !item->isShown())
        return;
    m_context.menuRow = item;
    setCurrentItem(item);
    // A listener may have taken the row away, or ended the tool.
    if (!m_context.menuRow || mirabo::Frame::isEnding())
        return;
    m_menu->prepare(m_context.menuRow->getNodeType());
    m_menu->popup(viewport()->mapToGlobal(point));
}

bool SoMiraboTreeView::mayExpand(SoTreeViewItem* top)
{
    if (mirabo::isBatch() || countRows(top, kExpandLimit) <= kExpandLimit)
        return true;
    const QString question = QString("This opens more than %1 rows. Go on?").arg(kExpandLimit);
    return mirabo::ask(this, "Mirabo -- Expand All", question);
}

void SoMiraboTreeView::expandRows(SoTreeViewItem* top)
{
    m_openBranches->restore();
    // With a layout pending an opened row is only noted down.
    scheduleDelayedItemsLayout();
    std::vector<QModelIndex> open{indexFromItem(top)};
    while (!open.empty()) {
        const QModelIndex index = open.back();
        open.pop_back();
        expand(index);
        for (int row = 0, rows = model()->rowCount(index); row < rows; ++row) {
            const QModelIndex child = model()->index(row, 0, index);
            if (model()->hasChildren(child))
                open.push_back(child);
        }
    }
}

void SoMiraboTreeView::explore()
{
    if (SoTreeViewItem* row = asItem(currentItem())) {
        m_openBranches->restore();
        expandItem(row);
    }
}

bool SoMiraboTreeView::canExplore() const
{
    const SoTreeViewItem* row = asItem(currentItem());
    return row && row->childCount() > 0 && !isOpen(row);
}

int SoMiraboTreeView::exploreAll(int limit)
{
    if (!currentItem())
        return 0;
    m_openBranches->restore();
    scheduleDelayedItemsLayout(); // an opened row is only noted down then
    int closed = 0;
    int seen = 0;
    std::deque<QModelIndex> branches{currentIndex().siblingAtColumn(0)};
    for (; !branches.empty(); branches.pop_front()) {
        const QModelIndex branch = branches.front();
        const int rows = model()->rowCount(branch);
        if (!isExpanded(branch)) {
            // The first one is what was asked for, however large it is.
            if (seen > 0 && seen + rows > limit) {
                ++closed;
                continue;
            }
            seen += rows;
            expand(branch);
        }
        for (int row = 0; row < rows; ++row)
            if (const QModelIndex child = model()->index(row, 0, branch);
                model()->hasChildren(child))
                branches.push_back(child);
    }
    resizeAllColumns();
    return closed;
}

bool SoMiraboTreeView::canExploreAll() const
{
    int rows = 0;
    int branches = 0;
    std::vector<const SoTreeViewItem*> open;
    if (const SoTreeViewItem* current = asItem(currentItem()); current && current->childCount() > 0)
        open.push_back(current);
    while (!open.empty()) {
        const SoTreeViewItem* row = open.back();
        open.pop_back();
        rows += row->childCount();
        if (!isOpen(row) || rows > kExploreRows || ++branches > kExploreBranches)
            return true;
        for (int i = 0; i < row->childCount(); ++i)
            if (row->child(i)->childCount() > 0)
                open.push_back(asItem(row->child(i)));
    }
    return false;
}

void SoMiraboTreeView::expandBelow(QTreeWidgetItem* startItem)
{
    QTreeWidgetItem* start = startItem ? startItem : currentItem() ? currentItem() : rootItem();
    if (!start)
        return;
    SoTreeViewItem* top = asItem(start);
    const SoNode* node = top->getNode();
    if (!mayExpand(top))
        return;
    // The scene may have changed while the question was open.
    const std::vector<SoTreeViewItem*> items = itemsOf(node);
    if (std::find(items.begin(), items.end(), top) == items.end())
        return;
    expandRows(top);
    resizeAllColumns();
}
