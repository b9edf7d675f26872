#pragma once

#include <QStringList>

class SoField;
class SoType;

/// The numbers that the values of a field type consist of, all of one type: those of numbers,
/// times, vectors, colours, planes (normal, distance), boxes (minimum, maximum), rotations (axis,
/// angle in radians) and matrices (row by row).
///
/// A double holds each of them exactly. The field is evaluated and locked by whoever calls.
class FieldNumbers {
public:
    enum class Kind { Float, Double, Int32, UInt32, Int16, UInt16 };

    /// Null for a type whose values are no numbers. Single- and multiple-value types alike.
    static const FieldNumbers* of(SoType fieldType);

    virtual ~FieldNumbers() = default;
    FieldNumbers(const FieldNumbers&) = delete;
    FieldNumbers& operator=(const FieldNumbers&) = delete;

    Kind kind() const { return m_kind; }
    /// Of numbers in a value.
    int count() const { return m_labels.size(); }
    /// Short names of the numbers, such as "x", "y"; one empty text for a plain number.
    QStringList labels() const { return m_labels; }

    /// Reads all numbers of a value; `index` is 0 in a single-value field. Nothing for an index out
    /// of range.
    virtual void get(const SoField& field, int index, double* numbers) const = 0;
    /// Writes one number and leaves the bits of the others alone, where the type allows that (a
    /// rotation and a plane are made anew). Nothing, and false, for a number that the type cannot
    /// hold: a fraction or a number beyond the limits in a type of whole numbers, a finite number
    /// that would become infinite, a rotation or a plane without a direction.
    virtual bool set(SoField& field, int index, int component, double number) const = 0;
    /// Writes all numbers of a value, on the same terms.
    virtual bool setAll(SoField& field, int index, const double* numbers) const = 0;

    /// The most numbers that a value has.
    static constexpr int kMaxCount = 16;

protected:
    FieldNumbers(Kind kind, QStringList labels);

private:
    Kind m_kind;
    QStringList m_labels;
};
