#pragma once

#include <kalmyr/events/SoEvent.h>

/// The pointer moved to the event's position.
class KALMYR_API SoLocation2Event final : public SoEvent {
    SO_EVENT_HEADER(SoLocation2Event)
};
