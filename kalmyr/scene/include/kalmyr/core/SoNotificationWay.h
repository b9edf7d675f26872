#pragma once

#include <kalmyr/base/Export.h>

#include <vector>

class SoFieldContainer;
class SoNotification;

namespace kalmyr {

/// Fills `way` with all containers from the one being told now down to the change, outermost first.
///
/// The `chain` of a notification has the first and the second of them, and the change itself. In
/// deep graphs it leaves others out: nodes with one parent that have had news since somebody asked
/// last, and at which nobody listens. Cost: the length of the way. Call it inside a walk only.
KALMYR_API void getWay(const SoNotification& notification, std::vector<SoFieldContainer*>& way);

} // namespace kalmyr
