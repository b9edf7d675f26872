#pragma once

#include "RowRanges.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <span>
#include <vector>

class ListCells;
class MrbFieldEdit;
class SoMField;

/// Cells of a table, column by column.
struct CellSelection {
    std::vector<RowRanges> columns; ///< as many as the cells have

    /// The rows with a cell in any column.
    RowRanges rows() const;
    bool isEmpty() const { return rows().isEmpty(); }
    /// Number of cells.
    int count() const;
    /// Calls with each row in order, below `end`, and its columns, until one call is false; false
    /// then. Cost: the rows, whatever their number of ranges.
    bool allRows(int end,
                 const std::function<bool(int row, std::span<const int> columns)>& function) const;
};

/// Changes the values of multiple-value fields, each time by one command.
///
/// What is edited is copied, not the whole field, as long as there is one field; in several fields
/// at once each is changed on its own. Rows that a field does not have are left alone. Each change
/// returns false, with the reason in problem(), when it cannot be made, and with none when it
/// would change nothing.
class ListChanges {
public:
    /// More values than this are not made.
    static constexpr int kMaxValues = 10'000'000;

    /// Both must outlive it.
    ListChanges(MrbFieldEdit& edit, const ListCells& cells);

    const QString& problem() const { return m_problem; }

    /// `base`, where given, holds one value: the cell is set in that instead of in the present one.
    bool setCell(int row, int column, const QString& text, const SoMField* base = nullptr);
    /// Sets the first numbers of a value.
    bool setNumbers(int row, const std::vector<double>& numbers);
    /// Sets all cells to the value of a text; a relative expression starts from each cell's own.
    bool set(const CellSelection& cells, const QString& text);
    /// Cells that hold whole numbers are rounded to the nearest one. Nothing is changed when one of
    /// the results is beyond the limits of the type.
    bool add(const CellSelection& cells, double number);
    bool multiply(const CellSelection& cells, double factor);
    /// Copies the first cell of each column to the others.
    bool fillDown(const CellSelection& cells);
    /// Puts the cells of a table in the place of those from `row` and `column` on; rows beyond the
    /// end are added. Nothing is changed when one of them is no value.
    bool paste(int row, int column, const std::vector<QStringList>& table);

    /// Inserts default values.
    bool insert(int row, int count);
    bool remove(const RowRanges& rows);
    /// Adds default values at the end, or removes the last ones.
    bool setCount(int count);
    /// Moves rows one place up (-1) or down (1); those at the end stay.
    bool move(const RowRanges& rows, int by);
    /// Where move() brings the rows of a list of `num` ones.
    static RowRanges moved(const RowRanges& rows, int by, int num);
    bool sort(const RowRanges& rows, int column, bool isDescending);

private:
    /// Changes scratch values, of which the first one is that of row `offset`; false gives it up.
    using Change = std::function<bool(SoMField& values, int offset)>;
    /// Changes the number of a cell; false, with the reason told, when it cannot.
    using NumberChange = std::function<bool(double& number, int column, QString& problem)>;

    int valueCount() const;
    bool rewrite(RowRange rows, const Change& change);
    bool changeNumbers(const CellSelection& cells, const NumberChange& change);
    bool changeRow(SoMField& values, int row, std::span<const int> columns,
                   const NumberChange& change, QString& problem) const;
    bool setRow(SoMField& values, int row, int column, const QStringList& texts,
                QString& problem) const;
    bool fail(const QString& why);
    QString headOf(int column) const;
    double rounded(double number) const;

    MrbFieldEdit& m_edit;
    const ListCells& m_cells;
    QString m_problem;
};
