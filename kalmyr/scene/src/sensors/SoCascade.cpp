#include <kalmyr/sensors/SoCascade.h>

#include <kalmyr/sensors/SoSensorManager.h>

bool SoCascade::mayReact()
{
    const std::uint64_t now = SoSensorManager::getCascade();
    if (now != m_cascade)
        m_reactions = 0;
    m_cascade = now;
    return m_reactions++ < kMaxReactions;
}
