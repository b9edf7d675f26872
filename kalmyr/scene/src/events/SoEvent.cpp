#include <kalmyr/events/SoEvent.h>

#include <kalmyr/events/SoEventsInit.h>
#include <kalmyr/events/SoGestureEvent.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/events/SoMouseWheelEvent.h>

namespace {

SoType s_type;

} // namespace

SoType SoEvent::getClassTypeId()
{
    return s_type;
}

void SoEvent::initClass()
{
    s_type = SoType::createType(SoType::badType(), SbName("Event"));
}

void kalmyr::initEvents()
{
    SoEvent::initClass();
    SoButtonEvent::initClass();
    SoMouseButtonEvent::initClass();
    SoKeyboardEvent::initClass();
    SoLocation2Event::initClass();
    SoMouseWheelEvent::initClass();
    SoGestureEvent::initClass();
}
