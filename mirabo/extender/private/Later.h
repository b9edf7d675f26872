#pragma once

#include "mirabo/extender/MrbExport.h"

#include <functional>

class QObject;

namespace mirabo {

/// Calls a function from the event loop after a delay, in milliseconds, unless `context` has died
/// by then. The call is a frame of the tool (Frame), as events of its windows are; the timers of
/// QTimer::singleShot() belong to no window.
MRBEXT_API void callLater(QObject* context, int delay, std::function<void()> call);

} // namespace mirabo
