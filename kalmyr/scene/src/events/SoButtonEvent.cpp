#include <kalmyr/events/SoButtonEvent.h>

namespace {

SoType s_type;

} // namespace

SoType SoButtonEvent::getClassTypeId()
{
    return s_type;
}

void SoButtonEvent::initClass()
{
    s_type = SoType::createType(SoEvent::getClassTypeId(), SbName("ButtonEvent"));
}
