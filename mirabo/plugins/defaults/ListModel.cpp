#include "ListModel.h"

#include "FieldNumbers.h"
#include "ListCells.h"
#include "ListChanges.h"

#include "mirabo/extender/MrbFieldEdit.h"

#include <kalmyr/core/SoField.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

constexpr int kMaxToolTipLength = 2000;

/// A text of several lines in one, and not longer than a cell shows.
QString oneLine(const QString& text)
{
    constexpr int kMaxLength = 500;
    QString line = text.left(kMaxLength);
    line.replace("\r\n", "\u21b5");
    std::replace_if(
        line.begin(), line.end(),
        [](QChar c) {
            return c == u'\n' || c == u'\r' || c == QChar::LineSeparator
                   || c == QChar::ParagraphSeparator;
        },
        QChar(0x21b5));
    if (text.size() > kMaxLength)
        line += QChar(0x2026);
    return line;
}

} // namespace

ListModel::ListModel(MrbFieldEdit& edit, const ListCells& cells, ListChanges& changes,
                     QObject* parent)
    : QAbstractTableModel(parent),
      m_edit(edit),
      m_cells(cells),
      m_changes(changes),
      m_hasSwatches(cells.hasColors())
{
}

void ListModel::refresh()
{
    int num = m_valueCount;
    m_edit.read(
        [&num](const SoField& field) { num = static_cast<const SoMField&>(field).getNum(); });
    for (auto page = m_pages.begin(); page != m_pages.end(); ++page)
        if (!page->rows.empty())
            m_oldPages[page.key()] = std::move(*page);
    m_pages.clear();
    m_valueCount = num;
    const int rows = std::min(num, kMaxRows);
    if (rows > m_rowCount) {
        beginInsertRows({}, m_rowCount, rows - 1);
        m_rowCount = rows;
        endInsertRows();
    } else if (rows < m_rowCount) {
        beginRemoveRows({}, rows, m_rowCount - 1);
        m_rowCount = rows;
        endRemoveRows();
    }
    Q_EMIT refreshed();
}

ListModel::Page ListModel::readPage(int first) const
{
    Page page;
    m_edit.read([&](const SoField& field) {
        const auto& list = static_cast<const SoMField&>(field);
        const int end = std::min(first + kPageRows, list.getNum());
        for (int row = first; row < end; ++row) {
            QStringList& texts = page.rows.emplace_back();
            for (int column = 0; column < m_cells.columnCount(); ++column)
                texts << m_cells.text(list, row, column);
            if (m_hasSwatches)
                page.colors.push_back(m_cells.color(list, row));
        }
    });
    return page;
}

const ListModel::Page& ListModel::page(int row) const
{
    const int number = row / kPageRows;
    const auto known = m_pages.constFind(number);
    if (known != m_pages.constEnd())
        return *known;
    if (m_pages.size() >= kMaxPages)
        m_pages.clear();
    Page page = readPage(number * kPageRows);
    if (page.rows.empty())
        page = m_oldPages.take(number);
    else
        m_oldPages.remove(number);
    if (m_oldPages.size() > kMaxPages)
        m_oldPages.clear();
    return *m_pages.insert(number, std::move(page));
}

QString ListModel::cellText(const QModelIndex& index) const
{
    const int column = cellColumn(index.column());
    const auto row = static_cast<std::size_t>(index.row() % kPageRows);
    if (!index.isValid() || column < 0)
        return {};
    const Page& rows = page(index.row());
    return row < rows.rows.size() ? rows.rows[row].value(column) : QString();
}

int ListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rowCount;
}

int ListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : tableColumn(m_cells.columnCount());
}

QVariant ListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const bool isSwatch = cellColumn(index.column()) < 0;
    const bool isCheck = m_cells.input() == ListCells::Input::Check;
    switch (role) {
    case Qt::DisplayRole:
        return isSwatch ? QVariant() : oneLine(cellText(index));
    case Qt::EditRole:
    case Qt::AccessibleTextRole:
        return isSwatch ? QVariant() : cellText(index);
    case Qt::CheckStateRole:
        return isCheck ? QVariant(cellText(index) == "TRUE" ? Qt::Checked : Qt::Unchecked)
                       : QVariant();
    case Qt::DecorationRole: {
        if (!isSwatch)
            return {};
        const auto row = static_cast<std::size_t>(index.row() % kPageRows);
        const Page& rows = page(index.row());
        return row < rows.colors.size() ? rows.colors[row] : QVariant();
    }
    case Qt::TextAlignmentRole:
        return static_cast<int>(Qt::AlignVCenter
                                | (m_cells.numbers() ? Qt::AlignRight : Qt::AlignLeft));
    case Qt::ToolTipRole:
        if (isSwatch)
            return "Choose a colour by a double-click";
        return isCheck ? QVariant() : cellText(index).left(kMaxToolTipLength);
    default:
        return {};
    }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical) {
        if (role == Qt::DisplayRole)
            return section;
        return role == Qt::TextAlignmentRole ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                             : QVariant();
    }
    const int column = cellColumn(section);
    if (role == Qt::AccessibleTextRole && column < 0)
        return "colour";
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
        return {};
    const QString label = m_cells.labels().value(column);
    return label.isEmpty() && column >= 0 ? "value" : label;
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (m_isReadOnly || cellColumn(index.column()) < 0 || !m_cells.isEditable())
        return flags;
    return flags
           | (m_cells.input() == ListCells::Input::Check ? Qt::ItemIsUserCheckable
                                                         : Qt::ItemIsEditable);
}

bool ListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !(flags(index) & Qt::ItemIsUserCheckable))
        return false;
    const bool isOn = value.toInt() == Qt::Checked;
    const bool isSet =
        m_changes.setCell(index.row(), cellColumn(index.column()), isOn ? "TRUE" : "FALSE");
    refresh();
    return isSet;
}
