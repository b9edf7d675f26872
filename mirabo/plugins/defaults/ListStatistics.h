#pragma once

#include "RowRanges.h"

#include <QBasicTimer>
#include <QObject>

#include <optional>

class FieldNumbers;
class MrbFieldEdit;

/// Least, greatest and mean number of a column of a list, computed in small pieces, one a pass of
/// the event loop.
class ListStatistics final : public QObject {
    Q_OBJECT

public:
    /// Values read in one pass.
    static constexpr int kPiece = 50'000;
    /// Between a computation and one that a change of the values brings about.
    static constexpr int kPauseMs = 250;

    struct Result {
        int count = 0; ///< of numbers, not-a-number left out
        int notNumbers = 0;
        double min = 0;
        double max = 0;
        double mean = 0;
    };

    /// Both must outlive it.
    ListStatistics(MrbFieldEdit& edit, const FieldNumbers& numbers, QObject* parent = nullptr);

    /// Computes anew for the rows of a column; what is under way is given up. Nothing is computed
    /// before the next pass.
    void start(int column, const RowRanges& rows);
    /// Computes once more for the same rows, after what is under way and a pause: values that
    /// change all the time leave time for others.
    void repeat();
    void stop();
    bool isRunning() const { return m_timer.isActive(); }
    /// The last that was computed to the end for these rows; none before.
    const std::optional<Result>& result() const { return m_result; }

Q_SIGNALS:
    void finished();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void begin(int delayMs = 0);
    void take(double number);
    void end();

    MrbFieldEdit& m_edit;
    const FieldNumbers& m_numbers;
    QBasicTimer m_timer;
    int m_column = 0;
    RowRanges m_rows;
    bool m_isRepeating = false;
    bool m_isDelayed = false;
    double m_endTime = 0;    ///< in seconds
    std::size_t m_range = 0; ///< of the next value
    int m_row = 0;
    Result m_running;
    double m_sum = 0;
    double m_lost = 0; ///< what rounding took from the sum
    std::optional<Result> m_result;
};
