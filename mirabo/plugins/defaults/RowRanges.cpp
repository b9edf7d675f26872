#include "RowRanges.h"

#include <algorithm>
#include <utility>

RowRanges::RowRanges(std::vector<RowRange> ranges)
{
    std::sort(ranges.begin(), ranges.end(),
              [](const RowRange& a, const RowRange& b) { return a.first < b.first; });
    for (const RowRange& range : ranges) {
        if (range.count() <= 0)
            continue;
        if (!m_ranges.empty() && range.first <= m_ranges.back().last + 1)
            m_ranges.back().last = std::max(m_ranges.back().last, range.last);
        else
            m_ranges.push_back(range);
    }
}

int RowRanges::count() const
{
    int sum = 0;
    for (const RowRange& range : m_ranges)
        sum += range.count();
    return sum;
}

RowRange RowRanges::bounds() const
{
    return m_ranges.empty() ? RowRange() : RowRange{m_ranges.front().first, m_ranges.back().last};
}

RowRanges RowRanges::below(int end) const
{
    std::vector<RowRange> ranges = m_ranges;
    for (RowRange& range : ranges)
        range.last = std::min(range.last, end - 1);
    return RowRanges(std::move(ranges));
}
