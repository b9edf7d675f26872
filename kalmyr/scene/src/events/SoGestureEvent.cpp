#include <kalmyr/events/SoGestureEvent.h>

namespace {

SoType s_type;

} // namespace

SoType SoGestureEvent::getClassTypeId()
{
    return s_type;
}

void SoGestureEvent::initClass()
{
    s_type = SoType::createType(SoEvent::getClassTypeId(), SbName("GestureEvent"));
}
