// The columns of a field list: labels, widths, and the menu that opens and closes them.

#include "mirabo/core/Modal.h"
#include "mirabo/overview/SoMiraboList.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/base/SoPreferences.h>

#include <QAction>
#include <QHeaderView>
#include <QIcon>
#include <QMenu>

#include <algorithm>
#include <array>

namespace {

/// Menu texts in the order of the columns from 1 on.
constexpr std::array kColumnTexts{"Ignore",     "Connected",  "Node Type",   "Node Name",
                                  "Field Type", "Field Name", "Field Value", "Node NetName"};
constexpr int kFirstListedColumn = 1;
constexpr int kReopenedIgnoreWidth = 20;
constexpr int kHeaderMargin = 10;
constexpr int kIconColumnWidth = 20;
constexpr int kCellMargin = 16;
constexpr int kLeastWidth = 48; ///< of a column that shrinks with the list

/// Usual content of a column; a row's icons have fixed columns.
constexpr std::pair<SoMiraboList::Column, const char*> kSamples[] = {
    {SoMiraboList::NodeType, "PerspectiveCamera"},
    {SoMiraboList::NodeName, "Node name of usual length"},
    {SoMiraboList::FieldTypeColumn, "MFUniformShader"},
    {SoMiraboList::FieldName, "scaleOrientation M"},
    {SoMiraboList::FieldValue, "0.123456 0.123456 0.123456"},
};

/// Drawn in a selected row as in others.
QIcon untintedIcon(const QString& path)
{
    QIcon icon(path);
    icon.addFile(path, QSize(), QIcon::Selected);
    return icon;
}

} // namespace

bool SoMiraboList::isNetNameMode()
{
    return SoPreferences::getBool("KMRU_LAUNCH_MIRABO", false)
           || SoPreferences::getBool("ART_LAUNCH_MIRABO", false);
}

void SoMiraboList::setUpColumns()
{
    QStringList labels{"",          "",           "",           "Node Type",
                       "Node Name", "Field Type", "Field Name", "Field Value"};
    if (isNetNameMode())
        labels << "Node NetName";
    setColumnCount(labels.size());
    setHeaderLabels(labels);
    setColumnHidden(Hidden, true);
    for (int column = NodeType; column < labels.size(); ++column)
        headerItem()->setToolTip(column, labels[column]); // which a narrow column cuts short
    headerItem()->setIcon(Ignored, untintedIcon(":/Mirabo_icons/Icons/ignore.png"));
    headerItem()->setToolTip(Ignored, "This field is ignored");
    headerItem()->setIcon(Connected, untintedIcon(":/Mirabo_icons/Icons/connection.png"));
    headerItem()->setToolTip(Connected, "This field is connected");
}

void SoMiraboList::applyNaturalWidths()
{
    m_filling = true;
    const QFontMetrics metrics = fontMetrics();
    for (const Column column : {Ignored, Connected}) {
        QTreeWidget::setColumnWidth(column, kIconColumnWidth);
        m_chosen[column] = true;
    }
    for (const auto& [column, sample] : kSamples) {
        m_natural[column] = metrics.horizontalAdvance(sample) + kCellMargin;
        QTreeWidget::setColumnWidth(column, m_natural[column]);
    }
    m_natural[NodeNetName] = m_natural[NodeName];
    m_filling = false;
}

void SoMiraboList::copyWidths(const SoMiraboList& other)
{
    m_filling = true;
    for (int column = 1; column < std::min(columnCount(), other.columnCount()); ++column)
        QTreeWidget::setColumnWidth(column, other.columnWidth(column));
    m_chosen = other.m_chosen;
    m_typeGaveWay = other.m_typeGaveWay;
    m_filling = false;
    fillWidth();
}

void SoMiraboList::openColumn(int column)
{
    m_filling = true;
    QTreeWidget::setColumnWidth(column, m_natural[static_cast<std::size_t>(column)]);
    m_filling = false;
    fillWidth();
}

int SoMiraboList::labelWidth(int column) const
{
    return header()->fontMetrics().horizontalAdvance(headerItem()->text(column)) + kHeaderMargin;
}

bool SoMiraboList::isFlexible(int column) const
{
    return column >= NodeType && !m_chosen[static_cast<std::size_t>(column)]
           && (columnWidth(column) != 0 || (column == FieldTypeColumn && m_typeGaveWay));
}

void SoMiraboList::restoreColumnWidths(const QString& group)
{
    for (int i = 0; i + 1 < columnCount(); ++i) {
        const int width = mirabo::readListColumnWidth(group, i);
        if (width == -1)
            continue;
        header()->setSectionResizeMode(i + 1, QHeaderView::Interactive);
        setColumnWidth(i + 1, width);
    }
}

/// Between what its label needs and its natural width; below that in a list that is narrower still.
int SoMiraboList::fittingWidth(int column, const Fit& fit) const
{
    const int label = labelWidth(column);
    const int natural = std::max(label, m_natural[static_cast<std::size_t>(column)]);
    if (fit.room >= fit.natural)
        return natural;
    if (fit.room < fit.labels)
        return std::max(kLeastWidth, label * fit.room / fit.labels);
    return label + (natural - label) * (fit.room - fit.labels) / (fit.natural - fit.labels);
}

SoMiraboList::Fit SoMiraboList::measure() const
{
    Fit fit{viewport()->width(), 0, 0};
    for (int column = 1; column < columnCount(); ++column) {
        if (!isFlexible(column)) {
            fit.room -= columnWidth(column);
            continue;
        }
        const int label = labelWidth(column);
        fit.labels += label;
        fit.natural += std::max(label, m_natural[static_cast<std::size_t>(column)]);
    }
    return fit;
}

void SoMiraboList::fillWidth()
{
    if (m_filling)
        return;
    m_filling = true;
    Fit fit = measure();
    // The type says least of all: where the labels do not fit it goes, and comes back with them.
    const bool typeFlexible = isFlexible(FieldTypeColumn);
    m_typeGaveWay = typeFlexible && fit.room < fit.labels;
    if (m_typeGaveWay) {
        const int label = labelWidth(FieldTypeColumn);
        fit.labels -= label;
        fit.natural -= std::max(label, m_natural[FieldTypeColumn]);
    }
    int left = fit.room;
    for (int column = NodeType; column < columnCount(); ++column) {
        const bool isType = column == FieldTypeColumn;
        if (column == FieldValue || !(isType ? typeFlexible : isFlexible(column)))
            continue;
        int width = isType && m_typeGaveWay ? 0 : fittingWidth(column, fit);
        if (column == FieldName && fit.room > fit.natural) // long names before an empty end
            width += std::min(width / 2, (fit.room - fit.natural) / 3);
        QTreeWidget::setColumnWidth(column, width);
        left -= width;
    }
    if (isFlexible(FieldValue))
        QTreeWidget::setColumnWidth(FieldValue, std::max(kLeastWidth, left));
    m_filling = false;
}

void SoMiraboList::setColumnWidth(int column, int width)
{
    const int before = columnWidth(column);
    // A column that gave way and is closed stays so when there is room again: that is a change.
    const bool closes = column == FieldTypeColumn && m_typeGaveWay && width == 0;
    if (closes)
        m_typeGaveWay = false;
    QTreeWidget::setColumnWidth(column, width);
    if (closes || columnWidth(column) != before)
        Q_EMIT columnWidthChanged(column, columnWidth(column));
}

void SoMiraboList::widthChosen(int column, int width)
{
    if (m_filling || column <= Hidden || column > NodeNetName)
        return;
    if (column == FieldTypeColumn)
        m_typeGaveWay = false;
    if (width != 0) // a closed column has no width of its own
        m_chosen[static_cast<std::size_t>(column)] = true;
    fillWidth();
}

int SoMiraboList::storedWidth(int column) const
{
    return isFlexible(column) ? -1 : columnWidth(column);
}

void SoMiraboList::addColumnActions(QMenu* menu)
{
    const int last = isNetNameMode() ? NodeNetName : FieldValue;
    for (int column = kFirstListedColumn; column <= last; ++column) {
        QAction* action = menu->addAction(kColumnTexts[static_cast<std::size_t>(column - 1)]);
        action->setCheckable(true);
        action->setChecked(columnWidth(column) != 0);
    }
    connect(menu, &QMenu::triggered, this, &SoMiraboList::toggleHeaderColumnVisibility);
}

void SoMiraboList::headerRightClicked(const QPoint& position)
{
    mirabo::Modal<QMenu> menu(this);
    addColumnActions(menu.get());
    menu.run(position);
}

void SoMiraboList::toggleHeaderColumnVisibility(QAction* toggledAction)
{
    const QString text = toggledAction->text().remove('&');
    const auto at = std::find(kColumnTexts.begin(), kColumnTexts.end(), text);
    if (at == kColumnTexts.end())
        return;
    const int column = static_cast<int>(at - kColumnTexts.begin()) + kFirstListedColumn;
    if (columnWidth(column) == 0 && column >= Connected) {
        if (column > (isNetNameMode() ? NodeNetName : FieldValue) || column >= columnCount())
            return;
        header()->setSectionResizeMode(column, QHeaderView::Interactive);
        setColumnWidth(column, labelWidth(column));
    } else {
        setColumnWidth(column, columnWidth(column) != 0 ? 0 : kReopenedIgnoreWidth);
    }
}
