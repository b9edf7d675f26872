#include "ListStatistics.h"

#include "FieldNumbers.h"

#include "mirabo/extender/MrbFieldEdit.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoField.h>

#include <algorithm>
#include <cmath>

ListStatistics::ListStatistics(MrbFieldEdit& edit, const FieldNumbers& numbers, QObject* parent)
    : QObject(parent), m_edit(edit), m_numbers(numbers)
{
}

void ListStatistics::start(int column, const RowRanges& rows)
{
    if (column != m_column || rows != m_rows)
        m_result.reset();
    m_column = column;
    m_rows = rows;
    begin();
}

void ListStatistics::repeat()
{
    if (isRunning()) {
        m_isRepeating = !m_isDelayed;
        return;
    }
    const double since = 1000 * (SbTime::monotonic().getValue() - m_endTime);
    begin(static_cast<int>(std::clamp(kPauseMs - since, 0.0, double(kPauseMs))));
}

void ListStatistics::stop()
{
    m_timer.stop();
}

void ListStatistics::begin(int delayMs)
{
    m_isRepeating = false;
    m_range = 0;
    m_row = m_rows.bounds().first;
    m_running = {};
    m_sum = m_lost = 0;
    m_isDelayed = delayMs > 0;
    m_timer.start(delayMs, this);
}

void ListStatistics::take(double number)
{
    if (std::isnan(number)) {
        ++m_running.notNumbers;
        return;
    }
    m_running.min = m_running.count ? std::min(m_running.min, number) : number;
    m_running.max = m_running.count ? std::max(m_running.max, number) : number;
    ++m_running.count;
    const double sum = m_sum + number;
    m_lost +=
        std::fabs(m_sum) >= std::fabs(number) ? (m_sum - sum) + number : (number - sum) + m_sum;
    m_sum = sum;
}

void ListStatistics::timerEvent(QTimerEvent*)
{
    if (m_isDelayed) {
        m_isDelayed = false;
        m_timer.start(0, this);
    }
    const auto& ranges = m_rows.ranges();
    const bool isRead = m_edit.read([&](const SoField& field) {
        const int num = static_cast<const SoMField&>(field).getNum();
        double parts[FieldNumbers::kMaxCount];
        for (int left = kPiece; left > 0 && m_range < ranges.size();) {
            const RowRange& range = ranges[m_range];
            const int last = std::min({range.last, num - 1, m_row + left - 1});
            left -= std::max(last - m_row + 1, 1);
            for (; m_row <= last; ++m_row) {
                m_numbers.get(field, m_row, parts);
                take(parts[m_column]);
            }
            if (m_row <= std::min(range.last, num - 1))
                continue;
            if (++m_range < ranges.size())
                m_row = ranges[m_range].first;
        }
    });
    // What another thread edits will be told, and computed then.
    if (!isRead || m_range >= ranges.size())
        end();
}

void ListStatistics::end()
{
    m_timer.stop();
    if (m_range >= m_rows.ranges().size()) {
        const double lost = std::isfinite(m_lost) ? m_lost : 0;
        m_running.mean = m_running.count ? (m_sum + lost) / m_running.count : 0;
        m_result = m_running;
    }
    m_endTime = SbTime::monotonic().getValue();
    if (m_isRepeating)
        begin(kPauseMs);
    Q_EMIT finished();
}
