#include <kalmyr/engines/SoCounter.h>

#include <algorithm>

SO_ENGINE_SOURCE(SoCounter)

SoCounter::SoCounter()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(min, (0));
    SO_ADD_FIELD(max, (1));
    SO_ADD_FIELD(step, (1));
    SO_ADD_FIELD(trigger, ());
    SO_ADD_FIELD(reset, (0));
    SO_ADD_OUTPUT(output);
    SO_ADD_OUTPUT(syncOut);
}

SoCounter::~SoCounter() = default;

void SoCounter::initClass()
{
    SO_ENGINE_INIT_CLASS(SoCounter, SoEngine, "Counter");
}

std::int16_t SoCounter::clamped(int value) const
{
    const int low = min.getValue();
    return static_cast<std::int16_t>(
        std::clamp(value, low, std::max(low, static_cast<int>(max.getValue()))));
}

void SoCounter::inputChanged(SoField* input)
{
    if (input == &reset) {
        output.setValue(clamped(reset.getValue()));
        return;
    }
    if (input != &trigger) {
        const std::int16_t value = clamped(output.getValue());
        if (value != output.getValue())
            output.setValue(value); // the range moved away from it
        return;
    }
    const int next = output.getValue() + step.getValue();
    const bool beyond = clamped(next) != next;
    if (!beyond)
        output.setValue(static_cast<std::int16_t>(next));
    else
        output.setValue(clamped(step.getValue() < 0 ? max.getValue() : min.getValue()));
    if (beyond)
        syncOut.trigger();
}
