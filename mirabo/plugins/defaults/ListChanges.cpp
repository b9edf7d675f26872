#include "ListChanges.h"

#include "FieldNumbers.h"
#include "ListCells.h"
#include "NumberInput.h"
#include "NumberText.h"

#include "mirabo/extender/MrbFieldEdit.h"

#include <kalmyr/core/SoField.h>

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numeric>

namespace {

/// A twin of a list with some of its values; null when there is none.
std::unique_ptr<SoMField> copyOf(const SoMField& list, int first, int count)
{
    std::unique_ptr<SoField> twin = list.createTwin();
    if (!twin)
        return nullptr;
    twin->enableNotify(false);
    auto* copy = static_cast<SoMField*>(twin.release());
    copy->replaceValues(0, copy->getNum(), list, first, count);
    return std::unique_ptr<SoMField>(copy);
}

/// Puts the value that was at `order[i]` at i.
bool rearrange(SoMField& values, const std::vector<int>& order)
{
    const int count = static_cast<int>(order.size());
    const std::unique_ptr<SoMField> old = copyOf(values, 0, count);
    if (!old)
        return false;
    for (int i = 0; i < count;) {
        const int from = order[static_cast<std::size_t>(i)];
        int run = 1;
        while (i + run < count && order[static_cast<std::size_t>(i + run)] == from + run)
            ++run;
        if (from != i)
            values.replaceValues(i, run, *old, from, run);
        i += run;
    }
    return true;
}

/// The numbers from 0 on.
std::vector<int> numbersBelow(int end)
{
    std::vector<int> numbers(static_cast<std::size_t>(end));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

} // namespace

RowRanges CellSelection::rows() const
{
    std::vector<RowRange> all;
    for (const RowRanges& column : columns)
        all.insert(all.end(), column.ranges().begin(), column.ranges().end());
    return RowRanges(std::move(all));
}

int CellSelection::count() const
{
    return std::accumulate(columns.begin(), columns.end(), 0,
                           [](int sum, const RowRanges& rows) { return sum + rows.count(); });
}

bool CellSelection::allRows(
    int end, const std::function<bool(int row, std::span<const int> columns)>& function) const
{
    std::vector<std::size_t> ranges(columns.size()); // of each column, that of the row or the next
    std::vector<int> selected;
    return rows().below(end).all([&](int row) {
        selected.clear();
        for (std::size_t column = 0; column < columns.size(); ++column) {
            const std::vector<RowRange>& all = columns[column].ranges();
            std::size_t& range = ranges[column];
            while (range < all.size() && all[range].last < row)
                ++range;
            if (range < all.size() && all[range].first <= row)
                selected.push_back(static_cast<int>(column));
        }
        return function(row, selected);
    });
}

ListChanges::ListChanges(MrbFieldEdit& edit, const ListCells& cells) : m_edit(edit), m_cells(cells)
{
}

int ListChanges::valueCount() const
{
    int num = 0;
    m_edit.read(
        [&num](const SoField& field) { num = static_cast<const SoMField&>(field).getNum(); });
    return num;
}

bool ListChanges::fail(const QString& why)
{
    m_problem = why;
    return false;
}

QString ListChanges::headOf(int column) const
{
    const QString& label = m_cells.labels().at(column);
    return label.isEmpty() ? QString() : "column " + label + ": ";
}

bool ListChanges::rewrite(RowRange rows, const Change& change)
{
    m_problem.clear();
    bool isChanged = false;
    if (m_edit.getFieldCount() > 1) {
        isChanged = m_edit.change([&](SoField& value) {
            value.enableNotify(false);
            const bool isGood = m_problem.isEmpty() && change(static_cast<SoMField&>(value), 0);
            value.enableNotify(true);
            return isGood;
        });
    } else {
        std::unique_ptr<SoMField> values;
        int count = 0;
        m_edit.read([&](const SoField& field) {
            const auto& list = static_cast<const SoMField&>(field);
            count = std::clamp(list.getNum() - rows.first, 0, rows.count());
            if (rows.first <= list.getNum())
                values = copyOf(list, rows.first, count);
        });
        isChanged = values && change(*values, rows.first)
                    && m_edit.replaceValues(rows.first, count, *values);
    }
    if (!isChanged && m_problem.isEmpty())
        m_problem = m_edit.getProblem();
    return isChanged;
}

bool ListChanges::setCell(int row, int column, const QString& text, const SoMField* base)
{
    return rewrite({row, row}, [&](SoMField& values, int offset) {
        if (base && m_edit.getFieldCount() == 1 && row - offset < values.getNum())
            values.replaceValues(row - offset, 1, *base, 0, 1);
        return row - offset < values.getNum()
               && m_cells.setText(values, row - offset, column, text, m_problem);
    });
}

bool ListChanges::setNumbers(int row, const std::vector<double>& numbers)
{
    CellSelection cells;
    cells.columns.assign(numbers.size(), RowRanges({row, row}));
    return changeNumbers(cells, [&numbers](double& number, int column, QString&) {
        number = numbers[static_cast<std::size_t>(column)];
        return true;
    });
}

bool ListChanges::set(const CellSelection& cells, const QString& text)
{
    if (const FieldNumbers* numbers = m_cells.numbers())
        return changeNumbers(cells, [&, kind = numbers->kind()](double& number, int, QString& why) {
            return readNumber(kind, text, number, number, why);
        });
    const RowRanges rows = cells.rows();
    return rewrite(rows.bounds(), [&](SoMField& values, int offset) {
        std::unique_ptr<SoMField> one; // the text is read once
        return rows.below(offset + values.getNum()).all([&](int row) {
            if (one)
                return values.replaceValues(row - offset, 1, *one, 0, 1);
            const bool isSet = m_cells.setText(values, row - offset, 0, text, m_problem);
            one = copyOf(values, row - offset, 1);
            return isSet && one;
        });
    });
}

bool ListChanges::changeRow(SoMField& values, int row, std::span<const int> columns,
                            const NumberChange& change, QString& problem) const
{
    const FieldNumbers& numbers = *m_cells.numbers();
    double parts[FieldNumbers::kMaxCount];
    numbers.get(values, row, parts);
    for (const int column : columns) {
        double& part = parts[column];
        if (!change(part, column, problem) || !fitNumber(numbers.kind(), part, &problem)) {
            problem = headOf(column) + problem;
            return false;
        }
    }
    const bool isSet = m_cells.isJoint()
                           ? numbers.setAll(values, row, parts)
                           : std::all_of(columns.begin(), columns.end(), [&](int column) {
                                 return numbers.set(values, row, column, parts[column]);
                             });
    if (!isSet)
        problem = "no such value";
    return isSet;
}

bool ListChanges::changeNumbers(const CellSelection& cells, const NumberChange& change)
{
    if (!m_cells.numbers())
        return fail("These values are no numbers");
    return rewrite(cells.rows().bounds(), [&](SoMField& values, int offset) {
        return cells.allRows(offset + values.getNum(), [&](int row, std::span<const int> columns) {
            QString why;
            return changeRow(values, row - offset, columns, change, why)
                   || fail(QString("Row %1: %2").arg(row).arg(why));
        });
    });
}

bool ListChanges::add(const CellSelection& cells, double number)
{
    return changeNumbers(cells, [this, number](double& present, int, QString&) {
        present = rounded(present + number);
        return true;
    });
}

bool ListChanges::multiply(const CellSelection& cells, double factor)
{
    return changeNumbers(cells, [this, factor](double& present, int, QString&) {
        present = rounded(present * factor);
        return true;
    });
}

double ListChanges::rounded(double number) const
{
    return isWhole(m_cells.numbers()->kind()) ? std::round(number) : number;
}

bool ListChanges::fillDown(const CellSelection& cells)
{
    const auto columnCount = static_cast<std::size_t>(m_cells.columnCount());
    std::vector<int> first; // row of each column
    for (const RowRanges& rows : cells.columns)
        first.push_back(rows.bounds().first);
    const bool isWholeRows =
        std::all_of(cells.columns.begin(), cells.columns.end(),
                    [&](const RowRanges& rows) { return rows == cells.columns.front(); });
    return rewrite(cells.rows().bounds(), [&](SoMField& values, int offset) {
        double from[FieldNumbers::kMaxCount] = {};
        if (const FieldNumbers* numbers = m_cells.numbers())
            for (std::size_t column = 0; column < columnCount; ++column) {
                double parts[FieldNumbers::kMaxCount] = {};
                numbers->get(values, first[column] - offset, parts);
                from[column] = parts[column];
            }
        const auto take = [&from](double& number, int column, QString&) {
            number = from[column];
            return true;
        };
        const bool isThere = first[0] - offset < values.getNum();
        const std::unique_ptr<SoMField> one =
            isWholeRows && isThere ? copyOf(values, first[0] - offset, 1) : nullptr;
        return cells.allRows(offset + values.getNum(), [&](int row, std::span<const int> columns) {
            if (one)
                return values.replaceValues(row - offset, 1, *one, 0, 1);
            QString why;
            return changeRow(values, row - offset, columns, take, why)
                   || fail(QString("Row %1: %2").arg(row).arg(why));
        });
    });
}

bool ListChanges::setRow(SoMField& values, int row, int column, const QStringList& texts,
                         QString& problem) const
{
    const FieldNumbers* numbers = m_cells.numbers();
    if (!numbers)
        return texts.isEmpty() || m_cells.setText(values, row, column, texts.front(), problem);
    std::vector<int> columns(static_cast<std::size_t>(texts.size()));
    std::iota(columns.begin(), columns.end(), column);
    return changeRow(
        values, row, columns,
        [&](double& number, int at, QString& why) {
            return readNumber(numbers->kind(), texts[at - column], number, number, why);
        },
        problem);
}

bool ListChanges::paste(int row, int column, const std::vector<QStringList>& table)
{
    m_problem.clear();
    if (table.empty())
        return fail("There is no text on the clipboard");
    if (table.size() > static_cast<std::size_t>(kMaxValues - row))
        return fail(QString("More than %1 values").arg(QLocale().toString(kMaxValues)));
    const int count = static_cast<int>(table.size());
    return rewrite({row, row + count - 1}, [&](SoMField& values, int offset) {
        if (row - offset > values.getNum())
            return false;
        if (row - offset + count > values.getNum())
            values.setNum(row - offset + count);
        for (int i = 0; i < count; ++i) {
            const QStringList& cells = table[static_cast<std::size_t>(i)];
            if (cells.size() > m_cells.columnCount() - column)
                return fail(QString("Row %1 of the clipboard has %2 cells; there is room for %3")
                                .arg(i + 1)
                                .arg(cells.size())
                                .arg(m_cells.columnCount() - column));
            QString why;
            if (!setRow(values, row - offset + i, column, cells, why))
                return fail(QString("Row %1 of the clipboard: %2").arg(i + 1).arg(why));
        }
        return true;
    });
}

bool ListChanges::insert(int row, int count)
{
    m_problem.clear();
    if (count > kMaxValues - valueCount())
        return fail(QString("More than %1 values").arg(QLocale().toString(kMaxValues)));
    const std::unique_ptr<SoField> made = m_edit.makeValue();
    if (!made)
        return false;
    auto& values = static_cast<SoMField&>(*made);
    values.setNum(0); // those that there are may not be default ones
    values.setNum(count);
    if (m_edit.replaceValues(row, 0, values))
        return true;
    return fail(m_edit.getProblem());
}

bool ListChanges::remove(const RowRanges& rows)
{
    const RowRange bounds = rows.bounds();
    return rewrite(bounds, [&](SoMField& values, int offset) {
        const auto& ranges = rows.ranges();
        for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
            const int start = range->first - offset;
            if (start < values.getNum())
                values.deleteValues(start, std::min(range->count(), values.getNum() - start));
        }
        return true;
    });
}

bool ListChanges::setCount(int count)
{
    m_problem.clear();
    const int num = valueCount();
    if (count > num)
        return insert(num, count - num);
    return count < num && remove(RowRanges({count, num - 1}));
}

RowRanges ListChanges::moved(const RowRanges& rows, int by, int num)
{
    std::vector<RowRange> ranges = rows.ranges();
    for (RowRange& range : ranges) {
        const bool canMove = by < 0 ? range.first > 0 : range.last < num - 1;
        if (canMove)
            range = {range.first + by, range.last + by};
    }
    return RowRanges(std::move(ranges));
}

bool ListChanges::move(const RowRanges& rows, int by)
{
    const RowRange bounds = rows.bounds();
    const RowRange touched{std::max(bounds.first + std::min(by, 0), 0),
                           bounds.last + std::max(by, 0)};
    return rewrite(touched, [&](SoMField& values, int offset) {
        const int num = values.getNum();
        std::vector<int> order = numbersBelow(num);
        for (const RowRange& range : rows.ranges()) {
            const int first = range.first - offset;
            const int last = range.last - offset;
            if (last >= num || (by < 0 ? first == 0 : last == num - 1))
                continue;
            const auto begin = order.begin() + first;
            const auto end = order.begin() + last + 1;
            if (by < 0)
                std::rotate(begin - 1, begin, end);
            else
                std::rotate(begin, end, end + 1);
        }
        return rearrange(values, order);
    });
}

bool ListChanges::sort(const RowRanges& rows, int column, bool isDescending)
{
    return rewrite(rows.bounds(), [&](SoMField& values, int offset) {
        const int num = values.getNum();
        std::vector<int> places;
        rows.below(offset + num).all([&](int row) {
            places.push_back(row - offset);
            return true;
        });
        std::vector<int> sorted = places;
        m_cells.sort(values, column, isDescending, sorted);
        std::vector<int> order = numbersBelow(num);
        for (std::size_t i = 0; i < places.size(); ++i)
            order[static_cast<std::size_t>(places[i])] = sorted[i];
        return rearrange(values, order);
    });
}
