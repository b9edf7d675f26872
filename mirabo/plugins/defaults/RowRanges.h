#pragma once

#include <vector>

/// Rows from `first` to `last`, both included.
struct RowRange {
    int first = 0;
    int last = -1;

    int count() const { return last - first + 1; }
    friend bool operator==(const RowRange&, const RowRange&) = default;
};

/// A set of rows that costs as much as it has gaps: ranges in order that neither meet nor touch.
class RowRanges {
public:
    RowRanges() = default;
    explicit RowRanges(RowRange range) : RowRanges(std::vector<RowRange>{range}) {}
    /// Ranges in any order; empty ones are left out.
    explicit RowRanges(std::vector<RowRange> ranges);

    bool isEmpty() const { return m_ranges.empty(); }
    /// Number of rows.
    int count() const;
    /// From the first row to the last one; empty for none.
    RowRange bounds() const;
    const std::vector<RowRange>& ranges() const { return m_ranges; }
    /// Those below `end`.
    RowRanges below(int end) const;

    /// Calls with each row in order until one call is false; false then.
    template <class Function>
    bool all(Function&& function) const
    {
        for (const RowRange& range : m_ranges)
            for (int row = range.first; row <= range.last; ++row)
                if (!function(row))
                    return false;
        return true;
    }

    friend bool operator==(const RowRanges&, const RowRanges&) = default;

private:
    std::vector<RowRange> m_ranges;
};
