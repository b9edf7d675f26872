#include <kalmyr/animation/SoClockwork.h>

#include <kalmyr/engines/SoGlobalField.h>

#include <cmath>
#include <numbers>

namespace kalmyr::detail {

namespace {

SoSFTime* realTime()
{
    return static_cast<SoSFTime*>(SoGlobalField::find(SbName("realTime")));
}

} // namespace

Clockwork::Clockwork(SoSFBool& on, Tick tick)
    : m_on(on),
      m_tick(std::move(tick)),
      m_switchSensor([](void* self, SoSensor*) { static_cast<Clockwork*>(self)->followSwitch(); },
                     this),
      m_clockSensor([](void* self, SoSensor*) { static_cast<Clockwork*>(self)->advance(); }, this)
{
    m_switchSensor.setPriority(0);
}

void Clockwork::start()
{
    m_switchSensor.attach(&m_on);
    followSwitch();
}

void Clockwork::stop()
{
    m_switchSensor.detach();
    m_clockSensor.detach();
}

void Clockwork::followSwitch()
{
    SoSFTime* clock = realTime();
    if (!clock)
        return;
    if (!m_on.getValue()) {
        m_clockSensor.detach();
    } else if (!m_clockSensor.getAttachedField()) {
        m_last = clock->getValue().getValue();
        m_clockSensor.attach(clock);
    }
}

void Clockwork::advance()
{
    // Of the thread that started it, perhaps.
    const auto* clock = static_cast<const SoSFTime*>(m_clockSensor.getAttachedField());
    const double now = clock->getValue().getValue();
    const double passed = now - m_last;
    m_last = now;
    if (passed > 0)
        m_tick(passed);
}

float toAndFro(double rounds)
{
    return static_cast<float>((1 - std::cos(2 * std::numbers::pi * rounds)) / 2);
}

} // namespace kalmyr::detail
