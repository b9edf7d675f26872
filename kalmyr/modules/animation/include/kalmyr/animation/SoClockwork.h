#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoFieldSensor.h>

#include <functional>

namespace kalmyr::detail {

/// Moves a node in real time: calls it with the seconds that passed since the last call. It
/// listens to the clock only while it is switched on, so that a node that stands still costs
/// nothing.
class KALMYR_VISIBLE Clockwork {
public:
    using Tick = std::function<void(double seconds)>;

    /// `on` is the node's own switch.
    Clockwork(SoSFBool& on, Tick tick);
    /// Once the switch has its value; last in the node's constructor.
    void start();
    /// Until the next start(): the node is only there to be compared with.
    void stop();
    Clockwork(const Clockwork&) = delete;
    Clockwork& operator=(const Clockwork&) = delete;

private:
    void followSwitch();
    void advance();

    SoSFBool& m_on;
    Tick m_tick;
    double m_last = 0; ///< real time of the last call
    SoFieldSensor m_switchSensor;
    SoFieldSensor m_clockSensor;
};

/// Where something that goes to and fro stands after so many rounds: 0 at the beginning, 1 where it
/// turns back, slow at both ends.
KALMYR_VISIBLE float toAndFro(double rounds);

} // namespace kalmyr::detail
