#include <kalmyr/events/SoLocation2Event.h>

namespace {

SoType s_type;

} // namespace

SoType SoLocation2Event::getClassTypeId()
{
    return s_type;
}

void SoLocation2Event::initClass()
{
    s_type = SoType::createType(SoEvent::getClassTypeId(), SbName("Location2Event"));
}
