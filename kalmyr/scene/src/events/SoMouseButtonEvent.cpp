#include <kalmyr/events/SoMouseButtonEvent.h>

namespace {

SoType s_type;

} // namespace

SoType SoMouseButtonEvent::getClassTypeId()
{
    return s_type;
}

void SoMouseButtonEvent::initClass()
{
    s_type = SoType::createType(SoButtonEvent::getClassTypeId(), SbName("MouseButtonEvent"));
}

bool SoMouseButtonEvent::isPressEvent(const SoEvent* event, Button button)
{
    return isChange(event, button, DOWN);
}

bool SoMouseButtonEvent::isReleaseEvent(const SoEvent* event, Button button)
{
    return isChange(event, button, UP);
}

bool SoMouseButtonEvent::isChange(const SoEvent* event, Button button, State state)
{
    if (!event || !event->isOfType(s_type))
        return false;
    const auto* own = static_cast<const SoMouseButtonEvent*>(event);
    return own->getState() == state && (button == ANY || own->m_button == button);
}
