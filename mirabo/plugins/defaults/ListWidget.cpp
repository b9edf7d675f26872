#include "ListWidget.h"

#include "Expression.h"
#include "FieldNumbers.h"
#include "ListDelegate.h"
#include "ListModel.h"
#include "ListPrompt.h"
#include "ListStatistics.h"
#include "ListView.h"
#include "Looks.h"
#include "NumberInput.h"
#include "NumberText.h"
#include "TabText.h"

#include "mirabo/extender/MrbFieldEdit.h"

#include <kalmyr/core/SoField.h>

#include <QAction>
#include <QClipboard>
#include <QColorDialog>
#include <QEvent>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLocale>
#include <QScrollBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace {

QString grouped(int number)
{
    return QLocale().toString(number);
}

/// As exact as the numbers are.
QString meanText(FieldNumbers::Kind kind, double mean)
{
    constexpr int kDigits = 12;
    return isWhole(kind) ? QString::number(mean, 'g', kDigits) : numberText(kind, mean);
}

/// The cells of a list as spreadsheets copy them: all rows with a selected cell, and from the first
/// to the last column with one.
QString tabText(const SoMField& list, const ListCells& cells, const CellSelection& selection)
{
    const auto isUsed = [](const RowRanges& rows) { return !rows.isEmpty(); };
    const auto& columns = selection.columns;
    const auto begin = std::find_if(columns.begin(), columns.end(), isUsed);
    const auto end = std::find_if(columns.rbegin(), columns.rend(), isUsed).base();
    const int first = static_cast<int>(begin - columns.begin());
    const int last = static_cast<int>(end - columns.begin()) - 1;
    QString text;
    selection.allRows(list.getNum(), [&](int row, std::span<const int> selected) {
        auto next = selected.begin();
        for (int column = first; column <= last; ++column) {
            const bool isSelected = next != selected.end() && *next == column;
            writeTabCell(text, isSelected ? cells.text(list, row, column) : QString(),
                         column == first);
            next += isSelected;
        }
        text += u'\n';
        return true;
    });
    return text;
}

} // namespace

ListWidget::ListWidget(MrbFieldEdit* edit, std::unique_ptr<const ListCells> cells, QWidget* parent)
    : MrbFieldWidget(edit, parent),
      m_cells(std::move(cells)),
      m_changes(*edit, *m_cells),
      m_model(new ListModel(*edit, *m_cells, m_changes, this)),
      m_delegate(new ListDelegate(*edit, *m_cells, m_changes, *m_model, this)),
      m_view(new ListView(*m_model, *m_delegate, this)),
      m_prompt(new ListPrompt(this)),
      m_tools(new QToolBar("Values", this)),
      m_problem(looks::makeLabel({}, this)),
      m_foot(looks::makeLabel({}, this))
{
    makeActions();
    makeLayout();
    if (const FieldNumbers* numbers = m_cells->numbers()) {
        m_statistics = new ListStatistics(*edit, *numbers, this);
        connect(m_statistics, &ListStatistics::finished, this, &ListWidget::updateFoot);
    }
    m_view->setHint(m_cells->isEditable() ? "No values. Insert adds one, and so does pasting."
                                          : "No values.");
    const auto choose = [this] {
        chooseStatistics();
        updateActions();
        updateFoot();
    };
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, choose);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this, choose);
    connect(m_delegate, &ListDelegate::applied, this, &ListWidget::showValue);
    connect(m_delegate, &ListDelegate::inputEnded, this, &ListWidget::typingEnded);
    connect(m_view, &ListView::swatchOpened, this, &ListWidget::chooseColor);
    connect(m_prompt, &ListPrompt::closed, m_view, [this] { m_view->setFocus(); });
    setFocusProxy(m_view);
    showValue();
}

ListWidget::~ListWidget()
{
    m_delegate->disconnect(this);
    m_view->selectionModel()->disconnect(this);
    m_delegate->discard();
    delete m_colorDialog;
    delete m_view;
}

void ListWidget::makeActions()
{
    for (const ListActionEntry& entry : listActions()) {
        auto* action = new QAction(entry.text, this);
        const QKeySequence keys(entry.keys, QKeySequence::PortableText);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        QString name = entry.text;
        action->setToolTip(name.remove("...") + " (" + keys.toString(QKeySequence::NativeText)
                           + ")\n" + entry.toolTip);
        connect(action, &QAction::triggered, this, [this, id = entry.action] { run(id); });
        m_actions[entry.action] = action;
        m_view->addAction(action);
        m_tools->addAction(action);
        if (!entry.endsGroup)
            continue;
        auto* gap = new QAction(this);
        gap->setSeparator(true);
        m_view->addAction(gap);
        m_tools->addSeparator();
    }
    m_actions[ListAction::Add]->setVisible(m_cells->numbers());
    m_actions[ListAction::Multiply]->setVisible(m_cells->numbers());
}

void ListWidget::makeLayout()
{
    const int iconSize = fontMetrics().height();
    m_tools->setIconSize({iconSize, iconSize});
    m_tools->setAccessibleName("Changes of the values");
    m_problem->setWordWrap(true);
    m_problem->hide();
    m_foot->setWordWrap(true);
    m_foot->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(looks::kSpacing);
    column->addWidget(m_tools);
    column->addWidget(m_prompt);
    column->addWidget(m_view, 1);
    column->addWidget(m_problem);
    column->addWidget(m_foot);
    setTabOrder(m_prompt, m_view);
    drawIcons();
}

void ListWidget::drawIcons()
{
    for (const ListActionEntry& entry : listActions())
        m_actions[entry.action]->setIcon(looks::drawIcon(this, entry.draw));
    QPalette warning = palette();
    warning.setColor(QPalette::WindowText, looks::warningColor(palette()));
    m_problem->setPalette(warning);
}

void ListWidget::changeEvent(QEvent* event)
{
    MrbFieldWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        drawIcons();
}

void ListWidget::showEvent(QShowEvent* event)
{
    MrbFieldWidget::showEvent(event);
    chooseStatistics();
    updateFoot();
}

void ListWidget::hideEvent(QHideEvent* event)
{
    MrbFieldWidget::hideEvent(event);
    if (m_statistics)
        m_statistics->stop();
}

void ListWidget::showValue()
{
    const int before = m_model->valueCount();
    m_model->refresh();
    m_delegate->refresh();
    if (before != m_model->valueCount())
        chooseStatistics();
    else if (m_statistics && isVisible())
        m_statistics->repeat();
    updateActions();
    updateFoot();
}

bool ListWidget::isTyping() const
{
    return m_delegate->isIllegal();
}

void ListWidget::setReadOnly(bool on)
{
    if (on) {
        m_delegate->discard();
        m_prompt->close();
        if (m_colorDialog)
            m_colorDialog->reject();
    }
    m_model->setReadOnly(on);
    updateActions();
}

void ListWidget::commit()
{
    m_delegate->discard();
}

QString ListWidget::footText() const
{
    return m_foot->text().replace(QChar::Nbsp, u' ');
}

QString ListWidget::problemText() const
{
    return m_problem->isHidden() ? QString() : m_problem->text();
}

void ListWidget::run(ListAction action)
{
    if (!m_delegate->finish())
        return;
    m_problem->hide();
    switch (action) {
    case ListAction::InsertBefore:
    case ListAction::InsertAfter:
    case ListAction::Append:
        return insert(action);
    case ListAction::Delete:
        return removeRows();
    case ListAction::MoveUp:
        return moveRows(-1);
    case ListAction::MoveDown:
        return moveRows(1);
    case ListAction::SortAscending:
        return sortRows(false);
    case ListAction::SortDescending:
        return sortRows(true);
    case ListAction::FillDown:
        return tellChange(m_changes.fillDown(m_view->selectedCells()));
    case ListAction::Set:
    case ListAction::Add:
    case ListAction::Multiply:
        return askForValue(action);
    case ListAction::Copy:
        return copy();
    case ListAction::Paste:
        return paste();
    case ListAction::GoTo:
        return askForRow();
    case ListAction::SetCount:
        return askForCount();
    }
}

void ListWidget::tellChange(bool isChanged, const RowRanges& rows)
{
    const QString& problem = m_changes.problem();
    m_problem->setText(problem);
    m_problem->setVisible(!problem.isEmpty());
    showValue();
    if (isChanged && !rows.isEmpty()) {
        m_view->selectRows(rows);
        m_view->scrollTo(m_view->currentIndex());
    }
}

void ListWidget::insert(ListAction action)
{
    const RowRanges rows = m_view->selectedCells().rows();
    int row = m_model->valueCount();
    int count = 1;
    if (action != ListAction::Append && !rows.isEmpty()) {
        row = action == ListAction::InsertBefore ? rows.bounds().first : rows.bounds().last + 1;
        count = rows.count();
    }
    const bool isChanged = m_changes.insert(row, count);
    tellChange(isChanged, RowRanges({row, row + count - 1}));
}

void ListWidget::removeRows()
{
    const RowRanges rows = m_view->selectedCells().rows();
    const int first = rows.bounds().first;
    const int left = m_model->valueCount() - rows.count();
    const bool isChanged = m_changes.remove(rows);
    const int next = std::min(first, left - 1);
    tellChange(isChanged, RowRanges({next, next < 0 ? next - 1 : next}));
}

void ListWidget::moveRows(int by)
{
    const RowRanges rows = m_view->selectedCells().rows();
    const RowRanges moved = ListChanges::moved(rows, by, m_model->valueCount());
    const bool isChanged = m_changes.move(rows, by);
    tellChange(isChanged, moved);
}

void ListWidget::sortRows(bool isDescending)
{
    RowRanges rows = m_view->selectedCells().rows();
    if (rows.count() < 2)
        rows = RowRanges({0, m_model->valueCount() - 1});
    const bool isChanged = m_changes.sort(rows, m_view->currentColumn(), isDescending);
    tellChange(isChanged);
}

void ListWidget::askForValue(ListAction action)
{
    const CellSelection cells = m_view->selectedCells();
    const int count = cells.count();
    const QString what = count == 1 ? "1 cell" : grouped(count) + " cells";
    const QString question = action == ListAction::Set   ? "Set " + what + " to"
                             : action == ListAction::Add ? "Add to " + what
                                                         : "Multiply " + what + " by";
    const QString text = action == ListAction::Set   ? m_model->cellText(m_view->currentIndex())
                         : action == ListAction::Add ? "0"
                                                     : "1";
    m_prompt->ask(question, text, m_cells->numbers() ? expressionHelp() : QString(),
                  [this, action, cells](const QString& answer) -> QString {
                      double number = 0;
                      QString problem;
                      bool isChanged = false;
                      if (action == ListAction::Set)
                          isChanged = m_changes.set(cells, answer);
                      else if (!readNumber(FieldNumbers::Kind::Double, answer, 0, number, problem))
                          return problem;
                      else if (action == ListAction::Add)
                          isChanged = m_changes.add(cells, number);
                      else
                          isChanged = m_changes.multiply(cells, number);
                      problem = m_changes.problem();
                      if (isChanged || problem.isEmpty())
                          showValue();
                      return problem;
                  });
}

void ListWidget::askForRow()
{
    const int last = std::min(m_model->valueCount(), ListModel::kMaxRows) - 1;
    m_prompt->ask(
        QString("Go to row (0 to %1)").arg(last), QString::number(m_view->currentRow()), {},
        [this, last](const QString& answer) -> QString {
            double row = 0;
            QString problem;
            if (!readNumber(FieldNumbers::Kind::Int32, answer, m_view->currentRow(), row, problem))
                return problem;
            if (row < 0 || row > last)
                return QString("There are rows from 0 to %1").arg(last);
            goTo(static_cast<int>(row));
            return {};
        });
}

void ListWidget::goTo(int row)
{
    const QModelIndex index = m_model->index(row, m_model->tableColumn(m_view->currentColumn()));
    m_view->setCurrentIndex(index);
    m_view->scrollTo(index, QAbstractItemView::PositionAtCenter);
}

void ListWidget::askForCount()
{
    m_prompt->ask("Number of values", QString::number(m_model->valueCount()), {},
                  [this](const QString& answer) -> QString {
                      double count = 0;
                      QString problem;
                      if (!readNumber(FieldNumbers::Kind::Int32, answer, m_model->valueCount(),
                                      count, problem))
                          return problem;
                      if (count < 0 || count > ListChanges::kMaxValues)
                          return QString("A list has 0 to %1 values here")
                              .arg(grouped(ListChanges::kMaxValues));
                      m_changes.setCount(static_cast<int>(count));
                      showValue();
                      return m_changes.problem();
                  });
}

void ListWidget::chooseColor(int row)
{
    if (m_model->isReadOnly())
        return;
    delete m_colorDialog;
    const QModelIndex swatch = m_model->index(row, 0);
    m_colorDialog = new QColorDialog(swatch.data(Qt::DecorationRole).value<QColor>(), this);
    m_colorDialog->setAttribute(Qt::WA_DeleteOnClose);
    m_colorDialog->setWindowTitle(QString("Colour of Row %1").arg(row));
    m_colorDialog->setOption(QColorDialog::ShowAlphaChannel, m_cells->columnCount() == 4);
    edit()->beginGesture();
    connect(m_colorDialog, &QColorDialog::currentColorChanged, this,
            [this, row](const QColor& color) { setColor(row, color); });
    connect(m_colorDialog, &QDialog::finished, this, [this](int result) {
        if (result == QDialog::Accepted)
            edit()->endGesture();
        else
            edit()->cancelGesture();
        showValue();
    });
    m_colorDialog->open();
}

void ListWidget::setColor(int row, const QColor& color)
{
    std::vector<double> numbers{color.redF(), color.greenF(), color.blueF(), color.alphaF()};
    numbers.resize(static_cast<std::size_t>(m_cells->columnCount()));
    m_changes.setNumbers(row, numbers);
    showValue();
}

void ListWidget::copy()
{
    const CellSelection cells = m_view->selectedCells();
    QString text;
    edit()->read([&](const SoField& field) {
        text = tabText(static_cast<const SoMField&>(field), *m_cells, cells);
    });
    if (!text.isEmpty())
        QGuiApplication::clipboard()->setText(text);
}

void ListWidget::paste()
{
    const std::vector<QStringList> table = readTabText(QGuiApplication::clipboard()->text());
    const CellSelection cells = m_view->selectedCells();
    if (table.size() == 1 && table.front().size() == 1 && cells.count() > 1) {
        const bool isChanged = m_changes.set(cells, table.front().front());
        tellChange(isChanged);
        return;
    }
    const RowRanges rows = cells.rows();
    const auto used = std::find_if(cells.columns.begin(), cells.columns.end(),
                                   [](const RowRanges& column) { return !column.isEmpty(); });
    const int row = rows.isEmpty() ? m_model->valueCount() : rows.bounds().first;
    const int column =
        used == cells.columns.end() ? 0 : static_cast<int>(used - cells.columns.begin());
    const bool isChanged = m_changes.paste(row, column, table);
    tellChange(isChanged, RowRanges({row, row + static_cast<int>(table.size()) - 1}));
}

void ListWidget::chooseStatistics()
{
    if (!m_statistics || !isVisible())
        return;
    const int column = m_view->currentColumn();
    RowRanges rows = m_view->selectedCells().columns[static_cast<std::size_t>(column)];
    if (rows.count() < 2)
        rows = RowRanges({0, m_model->valueCount() - 1});
    m_statistics->start(column, rows);
}

bool ListWidget::isPossible(const ListActionEntry& entry) const
{
    const bool canChange = !m_model->isReadOnly();
    const bool canUse =
        entry.use == ListUse::Read
        || (canChange && (entry.use == ListUse::Rearrange || m_cells->isEditable()));
    switch (entry.need) {
    case ListNeed::Nothing:
        return canUse;
    case ListNeed::Values:
        return canUse && m_model->valueCount() > 0;
    case ListNeed::TwoValues:
        return canUse && m_model->valueCount() > 1;
    case ListNeed::Selection:
        return canUse && (m_view->currentRow() >= 0 || m_view->selectionModel()->hasSelection());
    }
    return false;
}

void ListWidget::updateActions()
{
    for (const ListActionEntry& entry : listActions())
        m_actions[entry.action]->setEnabled(isPossible(entry));
}

void ListWidget::updateFoot()
{
    const int num = m_model->valueCount();
    QStringList parts{num == 1 ? "1 value" : grouped(num) + " values"};
    const CellSelection cells = m_view->selectedCells();
    if (const int count = cells.count(); count > 1)
        parts << grouped(count) + (cells.columns.size() > 1 ? " cells selected" : " selected");
    if (num > ListModel::kMaxRows)
        parts << QString("the first %1 are shown").arg(grouped(ListModel::kMaxRows));
    if (m_statistics && m_statistics->result() && num > 0) {
        const ListStatistics::Result& result = *m_statistics->result();
        const FieldNumbers::Kind kind = m_cells->numbers()->kind();
        const QString label = m_cells->labels().at(m_view->currentColumn());
        const QString of = label.isEmpty() ? QString() : label + ": ";
        if (result.count > 0)
            parts << of + "min " + numberText(kind, result.min)
                  << "max " + numberText(kind, result.max) << "mean " + meanText(kind, result.mean);
        if (result.notNumbers > 0)
            parts << grouped(result.notNumbers) + " not-a-number";
    }
    for (QString& part : parts)
        part.replace(u' ', QChar::Nbsp); // lines break between the parts
    m_foot->setText(parts.join("  \u00b7  "));
}

MrbFieldWidget* makeListWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    if (form == MrbFieldWidget::Form::Compact)
        return nullptr;
    std::unique_ptr<const ListCells> cells;
    edit->read([&cells](const SoField& field) {
        if (field.isOfType(SoMField::getClassTypeId()))
            cells = ListCells::of(static_cast<const SoMField&>(field));
    });
    return cells ? new ListWidget(edit, std::move(cells), parent) : nullptr;
}
