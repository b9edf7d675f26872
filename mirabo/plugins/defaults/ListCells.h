#pragma once

#include <QColor>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class FieldNumbers;
class SoMField;

/// How the values of a multiple-value field are shown and read in the cells of a table: a row a
/// value, a column a number, or one column.
///
/// The fields are those of the type that the object was made for. They are evaluated and locked by
/// whoever calls; rows and columns are in range.
class ListCells {
public:
    /// Control that edits a cell.
    enum class Input {
        None,   ///< shown only
        Line,   ///< one line
        Box,    ///< any number of lines
        Choice, ///< a line, or one of choices()
        Check   ///< "TRUE" or "FALSE"
    };

    /// Never null: values of unknown types are shown as scene text.
    static std::unique_ptr<const ListCells> of(const SoMField& field);

    virtual ~ListCells();
    ListCells(const ListCells&) = delete;
    ListCells& operator=(const ListCells&) = delete;

    Input input() const { return m_input; }
    /// The heads of the columns; one empty text for values of one part.
    const QStringList& labels() const { return m_labels; }
    int columnCount() const { return m_labels.size(); }
    /// Values can be added and sorted, not just removed and moved.
    bool isEditable() const { return m_input != Input::None; }
    /// Null when the cells are no numbers.
    virtual const FieldNumbers* numbers() const { return nullptr; }
    virtual QStringList choices() const { return {}; }

    virtual QString text(const SoMField& field, int row, int column) const = 0;
    /// The values are colours.
    virtual bool hasColors() const { return false; }
    virtual QColor color(const SoMField&, int) const { return {}; }
    /// Changes one cell and leaves the bits of the others alone, as far as the type allows. False,
    /// with nothing changed and the reason told, for a text that is no such value.
    virtual bool setText(SoMField& values, int row, int column, const QString& text,
                         QString& problem) const = 0;
    /// Numbers of a value depend on each other: several of them are set together.
    virtual bool isJoint() const { return false; }
    /// Orders rows by their cells in a column; those with equal cells stay in order, and what is
    /// not a number comes last.
    virtual void sort(const SoMField& values, int column, bool isDescending,
                      std::vector<int>& rows) const;

protected:
    explicit ListCells(Input input, QStringList labels = {QString()});

private:
    Input m_input;
    QStringList m_labels;
};
