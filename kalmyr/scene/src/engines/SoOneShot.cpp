#include <kalmyr/engines/SoOneShot.h>

#include "EngineTools.h"

SO_ENGINE_SOURCE(SoOneShot)

namespace {

constexpr SoEnumEntry kFlags[] = {
    {"RETRIGGERABLE", SoOneShot::RETRIGGERABLE},
    {"HOLD_FINAL", SoOneShot::HOLD_FINAL},
};

} // namespace

SoOneShot::SoOneShot()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(timeIn, (0.0));
    SO_ADD_FIELD(duration, (1.0));
    SO_ADD_FIELD(trigger, ());
    SO_ADD_FIELD(flags, (0));
    SO_ADD_FIELD(disable, (false));
    SO_ADD_OUTPUT(timeOut);
    SO_ADD_OUTPUT(isActive);
    SO_ADD_OUTPUT(ramp);
    flags.setEnums(kFlags);
    kalmyr::detail::followRealTime(timeIn);
}

SoOneShot::~SoOneShot() = default;

void SoOneShot::initClass()
{
    SO_ENGINE_INIT_CLASS(SoOneShot, SoEngine, "OneShot");
}

double SoOneShot::elapsed() const
{
    const double passed = timeIn.getValue().getValue() - m_start;
    return std::clamp(passed, 0.0, std::max(duration.getValue().getValue(), 0.0));
}

void SoOneShot::stop()
{
    m_final = (flags.getValue() & HOLD_FINAL) ? elapsed() : 0;
    m_active = false;
    outputsChanged();
}

void SoOneShot::inputChanged(SoField* input)
{
    if (input == &trigger) {
        if (disable.getValue() || (m_active && !(flags.getValue() & RETRIGGERABLE)))
            return;
        m_start = timeIn.getValue().getValue();
        m_active = true;
        outputsChanged();
    } else if (m_active) {
        if (disable.getValue() || elapsed() >= duration.getValue().getValue())
            stop();
        else
            outputsChanged();
    }
}

void SoOneShot::evaluate()
{
    const double time = m_active ? elapsed() : m_final;
    const double whole = duration.getValue().getValue();
    timeOut.setValue(SbTime(time));
    isActive.setValue(m_active);
    ramp.setValue(static_cast<float>(whole > 0 ? std::min(time / whole, 1.0) : 0.0));
}
