#pragma once

#include "mirabo/extender/MrbExport.h"

class QObject;

namespace mirabo {

/// Opens a Frame around every event that Qt delivers to a root (the main window, the objects of the
/// tool that have no parent, an extension) or to anything below one. Whatever a slot or handler of such an event does, the receiver and what
/// is around it are there when Qt returns to them.
///
/// Windows below a root do not count for Qt's rule that the application ends with its last window.
class MRBEXT_API EventFrames {
public:
    EventFrames() = delete;

    /// Once a process, at best before it has threads: Qt keeps its list of callbacks unguarded.
    /// Later calls do nothing. Events of threads other than the GUI's pass unseen.
    static void install();

    /// Until it is removed, before it dies.
    static void addRoot(const QObject* root);
    static void removeRoot(const QObject* root);
};

} // namespace mirabo
