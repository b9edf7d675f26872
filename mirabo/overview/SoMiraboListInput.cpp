// Events of a field list.

#include "mirabo/extender/private/GraphReading.h"

#include "mirabo/extender/private/Later.h"
#include "mirabo/overview/RowEditor.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoMiraboList.h"
#include "mirabo/preferences/DragFormats.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPaintEvent>

namespace {

constexpr int kHintMargin = 12;

} // namespace

void SoMiraboList::chooseRow(QTreeWidgetItem* item)
{
    // The view's own way refuses disabled rows.
    const QModelIndex index = indexFromItem(item);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect
                                                 | QItemSelectionModel::Rows);
    viewport()->update();
    scrollToItem(item);
}

void SoMiraboList::showEvent(QShowEvent* event)
{
    setInView(true);
    QTreeWidget::showEvent(event);
    fillWidth();
}

void SoMiraboList::hideEvent(QHideEvent* event)
{
    setInView(false);
    QTreeWidget::hideEvent(event);
}

void SoMiraboList::resizeEvent(QResizeEvent* event)
{
    QTreeWidget::resizeEvent(event);
    fillWidth();
}

void SoMiraboList::copyCurrentValue()
{
    if (const SoFieldItem* item = currentFieldItem())
        QGuiApplication::clipboard()->setMimeData(mirabo::RowEditor::copiedValue(*item));
}

void SoMiraboList::pasteToCurrent()
{
    if (SoFieldItem* item = currentFieldItem())
        m_rowEditor->paste(item);
}

void SoMiraboList::editCurrent()
{
    if (SoFieldItem* item = currentFieldItem(); item && !item->isDisabled())
        m_rowEditor->open(item);
}

void SoMiraboList::resetCurrent()
{
    if (SoFieldItem* item = currentFieldItem())
        m_rowEditor->resetToDefault(item);
}

QStringList SoMiraboList::mimeTypes() const
{
    return {mirabo::kFieldRowFormat};
}

QMimeData* SoMiraboList::mimeData(const QList<QTreeWidgetItem*> items) const
{
    if (items.isEmpty())
        return nullptr;
    auto* data = new QMimeData;
    data->setData(mirabo::kFieldRowFormat, QByteArray());
    return data;
}

void SoMiraboList::paintEvent(QPaintEvent* event)
{
    m_painted = event->region();
    {
        // Without it the rows say what they said last.
        const mirabo::GraphReading graph;
        QTreeWidget::paintEvent(event);
        if (!graph)
            mirabo::callLater(viewport(), mirabo::GraphReading::kRetryMilliseconds,
                              [this] { viewport()->update(); });
    }
    m_painted = {};
    if (topLevelItemCount() > 0 || m_emptyHint.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(
        viewport()->rect().adjusted(kHintMargin, kHintMargin, -kHintMargin, -kHintMargin),
        Qt::AlignCenter | Qt::TextWordWrap, m_emptyHint);
}

bool SoMiraboList::isPainting(const QRect& cell) const
{
    return m_painted.isEmpty() || m_painted.intersects(cell);
}

void SoMiraboList::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const
{
    // A disabled row can be the current one, but the view never draws it as selected.
    QStyleOptionViewItem shown = option;
    const QModelIndex current = currentIndex();
    if (current.isValid() && current.row() == index.row() && !(index.flags() & Qt::ItemIsEnabled))
        shown.state |= QStyle::State_Selected;
    QTreeWidget::drawRow(painter, shown, index);
}

bool SoMiraboList::event(QEvent* event)
{
    // A row's value comes before the window's own "Copy" and "Paste".
    if (event->type() == QEvent::ShortcutOverride && currentItem()) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::Paste)) {
            event->accept();
            return true;
        }
    }
    return QTreeWidget::event(event);
}

bool SoMiraboList::moveByKey(int key)
{
    const int count = topLevelItemCount();
    const int current = currentIndex().row();
    const bool up = key == Qt::Key_Up || key == Qt::Key_End;
    int row = key == Qt::Key_Home ? 0 : key == Qt::Key_End ? count - 1 : current + (up ? -1 : 1);
    while (row >= 0 && row < count && topLevelItem(row)->isHidden())
        row += up ? -1 : 1;
    if (row < 0 || row >= count)
        return false;
    chooseRow(topLevelItem(row));
    return true;
}

void SoMiraboList::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy) && currentItem()) {
        copyCurrentValue();
        event->accept();
        return;
    }
    if (event->matches(QKeySequence::Paste) && currentItem()) {
        event->accept();
        pasteToCurrent(); // last: the host may end the tool
        return;
    }
    const int key = event->key();
    const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_F2;
    if (isReturn && event->modifiers() == Qt::NoModifier && currentItem()) {
        event->accept();
        editCurrent();
        return;
    }
    const bool moves =
        key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Home || key == Qt::Key_End;
    if (moves && (event->modifiers() & ~Qt::KeypadModifier) == 0 && moveByKey(key)) {
        event->accept(); // the view's own keys pass over disabled rows
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

void SoMiraboList::mousePressEvent(QMouseEvent* event)
{
    const QTreeWidgetItem* before = currentItem();
    QTreeWidget::mousePressEvent(event);
    QTreeWidgetItem* item = itemAt(event->pos());
    if (item && item->isDisabled())
        chooseRow(item);
    if (item && item == before)
        Q_EMIT rowPicked(item);
}

void SoMiraboList::focusInEvent(QFocusEvent* event)
{
    QTreeWidget::focusInEvent(event);
    Q_EMIT focused();
    const Qt::FocusReason reason = event->reason();
    const bool byKey = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason
                       || reason == Qt::ShortcutFocusReason;
    if (byKey && currentItem())
        Q_EMIT rowPicked(currentItem());
}

void SoMiraboList::mouseDoubleClickEvent(QMouseEvent* event)
{
    QTreeWidget::mouseDoubleClickEvent(event);
    QTreeWidgetItem* item = itemAt(event->pos());
    if (item && item->isDisabled() && event->button() == Qt::LeftButton)
        Q_EMIT itemDoubleClicked(item, columnAt(event->pos().x()));
}
