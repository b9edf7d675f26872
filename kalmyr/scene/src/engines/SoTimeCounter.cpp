#include <kalmyr/engines/SoTimeCounter.h>

#include "EngineTools.h"

#include <cmath>
#include <cstdlib>

SO_ENGINE_SOURCE(SoTimeCounter)

SoTimeCounter::SoTimeCounter()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(timeIn, (0.0));
    SO_ADD_FIELD(min, (0));
    SO_ADD_FIELD(max, (1));
    SO_ADD_FIELD(step, (1));
    SO_ADD_FIELD(on, (true));
    SO_ADD_FIELD(frequency, (1.0f));
    SO_ADD_FIELD(duty, (1.0f));
    SO_ADD_FIELD(reset, (0));
    SO_ADD_FIELD(syncIn, ());
    SO_ADD_OUTPUT(output);
    SO_ADD_OUTPUT(syncOut);
    kalmyr::detail::followRealTime(timeIn);
    m_last = timeIn.getValue().getValue();
}

SoTimeCounter::~SoTimeCounter() = default;

void SoTimeCounter::initClass()
{
    SO_ENGINE_INIT_CLASS(SoTimeCounter, SoEngine, "TimeCounter");
}

int SoTimeCounter::numStages() const
{
    const int range = std::abs(max.getValue() - min.getValue());
    const int by = std::abs(static_cast<int>(step.getValue()));
    return by == 0 ? 1 : range / by + 1;
}

/// Weights up to a stage, not yet divided by the sum.
double SoTimeCounter::shareBefore(int stage) const
{
    double sum = 0;
    const int listed = std::min(stage, duty.getNum());
    for (int i = 0; i < listed; ++i)
        sum += std::max(static_cast<double>(duty[i]), 0.0);
    const double last =
        duty.getNum() > 0 ? std::max(static_cast<double>(duty[duty.getNum() - 1]), 0.0) : 1;
    return sum + last * (stage - listed);
}

int SoTimeCounter::stageAt(double phase) const
{
    const int stages = numStages();
    const double wanted = phase * shareBefore(stages);
    int low = 0, high = stages - 1; // the last stage that begins at or before the phase
    while (low < high) {
        const int middle = (low + high + 1) / 2;
        if (shareBefore(middle) <= wanted)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

std::int16_t SoTimeCounter::valueOf(int stage) const
{
    const int low = std::min(min.getValue(), max.getValue());
    const int high = std::max(min.getValue(), max.getValue());
    const int value = (step.getValue() < 0 ? high : low) + stage * step.getValue();
    return static_cast<std::int16_t>(std::clamp(value, low, high));
}

void SoTimeCounter::show(bool newCycle)
{
    const std::int16_t value = valueOf(stageAt(m_phase));
    if (value != output.getValue())
        output.setValue(value);
    if (newCycle)
        syncOut.trigger();
}

void SoTimeCounter::advance()
{
    const double now = timeIn.getValue().getValue();
    const double passed = now - m_last;
    m_last = now;
    if (!m_running || passed <= 0)
        return;
    m_phase += passed * static_cast<double>(m_frequency);
    const double cycles = std::floor(m_phase);
    m_phase -= cycles;
    show(cycles > 0);
}

void SoTimeCounter::inputChanged(SoField* input)
{
    advance(); // what passed so far passed under the old settings
    m_running = on.getValue();
    m_frequency = std::max(frequency.getValue(), 0.0f);
    if (input == &syncIn) {
        m_phase = 0;
        show(true);
    } else if (input == &reset) {
        const int by = step.getValue() == 0 ? 1 : step.getValue();
        const int stage = (reset.getValue() - valueOf(0)) / by;
        m_phase = shareBefore(std::clamp(stage, 0, numStages() - 1)) / shareBefore(numStages());
        if (!std::isfinite(m_phase))
            m_phase = 0;
        show(false);
    } else if (input != &timeIn) {
        show(false);
    }
}
