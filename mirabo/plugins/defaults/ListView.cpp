#include "ListView.h"

#include "ListDelegate.h"
#include "ListModel.h"

#include <QAction>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <cstddef>

ListView::ListView(ListModel& model, ListDelegate& delegate, QWidget* parent)
    : QTableView(parent), m_model(model), m_delegate(delegate)
{
    setModel(&model);
    setItemDelegate(&delegate);
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setSelectionMode(ExtendedSelection);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setFrameShape(NoFrame);
    setAccessibleName("Values");
    setContextMenuPolicy(Qt::ActionsContextMenu);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setAccessibleName("Rows");
    // To show which columns are selected it would ask for each of a million rows.
    horizontalHeader()->setSelectionModel(new QItemSelectionModel(&model, this));
    horizontalHeader()->setAccessibleName("Columns");
    connect(&delegate, &ListDelegate::movedOn, this, &ListView::editNext);
    connect(&model, &ListModel::refreshed, this, [this] {
        updateRowNumbers();
        viewport()->update();
    });
    updateSizes();
}

void ListView::updateSizes()
{
    constexpr int kCharacters = 11;
    const QFontMetrics metrics = fontMetrics();
    const int rowHeight = metrics.height() + std::max(4, metrics.height() / 3);
    verticalHeader()->setMinimumSectionSize(rowHeight);
    verticalHeader()->setDefaultSectionSize(rowHeight);
    QHeaderView& columns = *horizontalHeader();
    columns.setMinimumSectionSize(rowHeight);
    columns.setDefaultSectionSize(metrics.horizontalAdvance('0') * kCharacters);
    for (int column = 0; column < m_model.tableColumn(0); ++column) {
        columns.setSectionResizeMode(column, QHeaderView::Fixed);
        columns.resizeSection(column, rowHeight * 3 / 2);
    }
    shareWidth();
    updateRowNumbers();
}

void ListView::shareWidth()
{
    constexpr int kMostColumns = 4;
    constexpr int kLeastCharacters = 9;
    const int first = m_model.tableColumn(0);
    const int count = m_model.columnCount() - first;
    if (count > kMostColumns)
        return;
    int room = viewport()->width();
    for (int column = 0; column < first; ++column)
        room -= columnWidth(column);
    const int least = fontMetrics().horizontalAdvance('0') * kLeastCharacters;
    for (int column = first; column < first + count; ++column) {
        const int width = std::max(room / (first + count - column), least);
        horizontalHeader()->setSectionResizeMode(column, QHeaderView::Fixed);
        horizontalHeader()->resizeSection(column, width);
        room -= width;
    }
}

void ListView::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    shareWidth();
}

void ListView::updateRowNumbers()
{
    const int digits = QString::number(std::max(m_model.rowCount() - 1, 99)).size();
    const int width = fontMetrics().horizontalAdvance('0') * (digits + 2);
    if (verticalHeader()->width() != width || verticalHeader()->minimumWidth() != width)
        verticalHeader()->setFixedWidth(width);
}

QSize ListView::sizeHint() const
{
    constexpr int kRows = 10;
    constexpr int kColumns = 4;
    const int rows = std::clamp(m_model.rowCount() + 2, 4, kRows);
    const int columns = std::min(m_model.columnCount(), kColumns);
    return {verticalHeader()->width() + horizontalHeader()->defaultSectionSize() * columns,
            verticalHeader()->defaultSectionSize() * rows};
}

CellSelection ListView::selectedCells() const
{
    const auto columns = static_cast<std::size_t>(m_model.columnCount() - m_model.tableColumn(0));
    std::vector<std::vector<RowRange>> ranges(columns);
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int column = range.left(); column <= range.right(); ++column)
            if (const int cell = m_model.cellColumn(column); cell >= 0)
                ranges[static_cast<std::size_t>(cell)].push_back({range.top(), range.bottom()});
    const bool isNone = std::all_of(ranges.begin(), ranges.end(),
                                    [](const auto& column) { return column.empty(); });
    if (isNone && currentRow() >= 0)
        ranges[static_cast<std::size_t>(currentColumn())].push_back({currentRow(), currentRow()});
    CellSelection cells;
    for (std::vector<RowRange>& column : ranges)
        cells.columns.emplace_back(std::move(column));
    return cells;
}

void ListView::selectRows(const RowRanges& rows)
{
    QItemSelection selection;
    const int last = m_model.columnCount() - 1;
    const RowRanges present = rows.below(m_model.rowCount());
    for (const RowRange& range : present.ranges())
        selection.select(m_model.index(range.first, 0), m_model.index(range.last, last));
    const int column = m_model.tableColumn(currentColumn());
    if (!present.isEmpty())
        selectionModel()->setCurrentIndex(m_model.index(present.bounds().first, column),
                                          QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

int ListView::currentColumn() const
{
    return std::max(m_model.cellColumn(currentIndex().column()), 0);
}

void ListView::setHint(const QString& hint)
{
    m_hint = hint;
    viewport()->update();
}

bool ListView::canEdit(const QModelIndex& index) const
{
    return m_model.flags(index) & Qt::ItemIsEditable;
}

bool ListView::isSwatch(const QModelIndex& index) const
{
    return index.isValid() && m_model.cellColumn(index.column()) < 0;
}

void ListView::editNext(int by)
{
    const int columns = m_model.columnCount();
    const int first = m_model.tableColumn(0);
    int row = currentRow();
    int column = currentIndex().column() + by;
    if (column >= columns || column < first) {
        row += by;
        column = by > 0 ? first : columns - 1;
    }
    const QModelIndex next = m_model.index(row, column);
    if (!next.isValid())
        return;
    setCurrentIndex(next);
    if (canEdit(next))
        edit(next);
}

QAction* ListView::actionOf(const QKeyEvent& event) const
{
    const auto find = [this, &event](Qt::KeyboardModifiers modifiers) -> QAction* {
        const QKeySequence keys(event.key() | static_cast<int>(modifiers));
        for (QAction* action : actions())
            if (action->shortcuts().contains(keys))
                return action;
        return nullptr;
    };
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    QAction* action = find(modifiers);
    // Some keyboards have signs such as * above others.
    const bool isSign = event.key() < Qt::Key_Escape && !QChar(event.key()).isLetterOrNumber();
    return action || !isSign ? action : find(modifiers & ~Qt::ShiftModifier);
}

bool ListView::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& key = static_cast<QKeyEvent&>(*event);
        const bool isEditKey = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter
                               || key.key() == Qt::Key_F2 || key.matches(QKeySequence::SelectAll);
        const bool isText = !key.text().isEmpty() && key.text().at(0).isPrint()
                            && !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier));
        if (isEditKey || isText || actionOf(key)) {
            event->accept();
            return true;
        }
    }
    return QTableView::event(event);
}

void ListView::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateSizes();
}

void ListView::keyPressEvent(QKeyEvent* event)
{
    if (m_delegate.isEditing()) { // a key that the editor has no use for
        const bool goesOn = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down
                            || event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown
                            || actionOf(*event);
        if (!goesOn || !m_delegate.finish()) {
            event->ignore();
            return;
        }
    }
    if (QAction* action = actionOf(*event)) {
        action->trigger();
        event->accept();
        return;
    }
    const bool isEditKey = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter
                           || event->key() == Qt::Key_F2;
    if (!isEditKey) {
        QTableView::keyPressEvent(event);
    } else if (isSwatch(currentIndex())) {
        Q_EMIT swatchOpened(currentRow());
        event->accept();
    } else if (canEdit(currentIndex())) {
        edit(currentIndex());
        event->accept();
    } else if (m_model.flags(currentIndex()) & Qt::ItemIsUserCheckable) {
        const bool isOn = currentIndex().data(Qt::CheckStateRole).toInt() == Qt::Checked;
        m_model.setData(currentIndex(), isOn ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
        event->accept();
    } else {
        event->ignore();
    }
}

void ListView::mousePressEvent(QMouseEvent* event)
{
    if (m_delegate.finish())
        QTableView::mousePressEvent(event);
}

void ListView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (isSwatch(index) && m_delegate.finish())
        Q_EMIT swatchOpened(index.row());
    else
        QTableView::mouseDoubleClickEvent(event);
}

void ListView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (m_model.rowCount() > 0)
        return;
    QPainter painter(viewport());
    const int margin = fontMetrics().height() / 2;
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_hint);
}
