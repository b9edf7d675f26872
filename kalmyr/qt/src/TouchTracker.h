#pragma once

#include <QPointF>

#include <vector>

class QTouchEvent;

/// Tells from the fingers on a screen what is done: a finger alone presses, moves and lets go, two
/// fingers move together or apart. What a finger alone begins is not sent before it is known that
/// no second one comes: when it moves, or has tapped.
class TouchTracker {
public:
    /// The middle between two fingers, or a finger alone, and how far they are apart.
    struct Pair {
        QPointF middle;
        qreal distance = 0;
    };
    struct Step {
        enum Kind { PRESS, MOVE, RELEASE, BEGIN_TWO, MOVE_TWO, END_TWO };
        Kind kind;
        Pair before; ///< of two fingers, at the step before
        Pair now;
    };

    /// Returns what the event amounts to, in order. Positions are those of the widget.
    std::vector<Step> follow(const QTouchEvent& event);

private:
    enum class State { IDLE, WAITING, ONE, TWO, OVER };
    void moveOne(const QPointF& at, std::vector<Step>& steps);
    void moveTwo(const Pair& now, std::vector<Step>& steps);
    void endGroup(bool isCancelled, std::vector<Step>& steps);

    State m_state = State::IDLE;
    Pair m_last; ///< of WAITING: where the finger came down
};
