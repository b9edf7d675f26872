#include "TouchTracker.h"

#include <QLineF>
#include <QTouchEvent>

namespace {

/// Pixels that a finger rolls in a tap.
constexpr qreal kTapMotion = 8;

} // namespace

std::vector<TouchTracker::Step> TouchTracker::follow(const QTouchEvent& event)
{
    std::vector<Step> steps;
    std::vector<QPointF> down;
    for (const QTouchEvent::TouchPoint& point : event.touchPoints())
        if (point.state() != Qt::TouchPointReleased)
            down.push_back(point.pos());
    const bool isCancelled = event.type() == QEvent::TouchCancel;
    if (event.type() == QEvent::TouchEnd || isCancelled || down.empty())
        endGroup(isCancelled, steps);
    else if (down.size() == 1)
        moveOne(down[0], steps);
    else
        moveTwo({(down[0] + down[1]) / 2, QLineF(down[0], down[1]).length()}, steps);
    return steps;
}

void TouchTracker::moveOne(const QPointF& at, std::vector<Step>& steps)
{
    switch (m_state) {
    case State::IDLE:
        m_state = State::WAITING;
        m_last = {at, 0};
        break;
    case State::WAITING:
        if (QLineF(m_last.middle, at).length() <= kTapMotion)
            break;
        m_state = State::ONE;
        steps.push_back({Step::PRESS, {}, m_last});
        [[fallthrough]];
    case State::ONE:
        m_last = {at, 0};
        steps.push_back({Step::MOVE, {}, m_last});
        break;
    case State::TWO: // the finger that is left does nothing more
        steps.push_back({Step::END_TWO, m_last, m_last});
        m_state = State::OVER;
        break;
    case State::OVER:
        break;
    }
}

void TouchTracker::moveTwo(const Pair& now, std::vector<Step>& steps)
{
    if (m_state == State::OVER)
        return;
    if (m_state == State::TWO) {
        steps.push_back({Step::MOVE_TWO, m_last, now});
    } else {
        if (m_state == State::ONE)
            steps.push_back({Step::RELEASE, {}, m_last});
        steps.push_back({Step::BEGIN_TWO, now, now});
        m_state = State::TWO;
    }
    m_last = now;
}

void TouchTracker::endGroup(bool isCancelled, std::vector<Step>& steps)
{
    if (m_state == State::WAITING && !isCancelled)
        steps.push_back({Step::PRESS, {}, m_last});
    if ((m_state == State::WAITING && !isCancelled) || m_state == State::ONE)
        steps.push_back({Step::RELEASE, {}, m_last});
    if (m_state == State::TWO)
        steps.push_back({Step::END_TWO, m_last, m_last});
    m_state = State::IDLE;
}
