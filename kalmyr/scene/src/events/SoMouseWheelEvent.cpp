#include <kalmyr/events/SoMouseWheelEvent.h>

namespace {

SoType s_type;

} // namespace

SoType SoMouseWheelEvent::getClassTypeId()
{
    return s_type;
}

void SoMouseWheelEvent::initClass()
{
    s_type = SoType::createType(SoEvent::getClassTypeId(), SbName("MouseWheelEvent"));
}
