#pragma once

#include <kalmyr/base/Export.h>

/// The vector export module. Counted: it starts with the first init() and finishes with the last
/// finish(). Its actions may be made and applied while it is started.
class PLOTREL_API SoPlotrel {
public:
    SoPlotrel() = delete;

    static void init();
    /// One that was not started is left alone.
    static void finish();
    static bool isInitialized();
};
