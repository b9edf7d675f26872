#include <kalmyr/engines/SoElapsedTime.h>

#include "EngineTools.h"

SO_ENGINE_SOURCE(SoElapsedTime)

SoElapsedTime::SoElapsedTime()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(timeIn, (0.0));
    SO_ADD_FIELD(speed, (1.0f));
    SO_ADD_FIELD(on, (true));
    SO_ADD_FIELD(pause, (false));
    SO_ADD_FIELD(reset, ());
    SO_ADD_OUTPUT(timeOut);
    kalmyr::detail::followRealTime(timeIn);
    m_last = timeIn.getValue().getValue();
}

SoElapsedTime::~SoElapsedTime() = default;

void SoElapsedTime::initClass()
{
    SO_ENGINE_INIT_CLASS(SoElapsedTime, SoEngine, "ElapsedTime");
}

void SoElapsedTime::advance()
{
    const double now = timeIn.getValue().getValue();
    if (m_running)
        m_elapsed += (now - m_last) * static_cast<double>(m_speed);
    m_last = now;
}

void SoElapsedTime::inputChanged(SoField* input)
{
    if (input == &timeIn) {
        if (m_running)
            outputsChanged();
        return;
    }
    // The time so far passed under the old settings.
    advance();
    if (input == &reset || (input == &on && on.getValue()))
        m_elapsed = 0;
    m_speed = speed.getValue();
    m_running = on.getValue() && !pause.getValue();
    outputsChanged();
}

void SoElapsedTime::evaluate()
{
    advance();
    timeOut.setValue(SbTime(m_elapsed));
}
