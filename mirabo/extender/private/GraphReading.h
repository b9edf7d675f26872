#pragma once

#include "mirabo/extender/MrbExport.h"

#include <kalmyr/io/SoReadLock.h>

#include <functional>
#include <optional>

class QObject;

namespace mirabo {

/// Keeps the editors of other threads out of the host's graph while the tool looks at it, in the
/// thread of the user interface.
///
/// Everything of the tool that follows children, reads fields, or attaches and detaches its own
/// sensors and auditors in an event (painting, keys, timers) does so under one of these; code that
/// runs inside a change made in this thread needs none. Taken again by nested code at no cost.
///
/// It may be refused: the editor that holds the lock may itself be waiting for the user interface,
/// so this waits for kPatience at most, and not at all until the lock was had again. The caller
/// then leaves the graph alone and tries later:
///
///     const GraphReading graph;
///     if (!graph)
///         return; // painted again later
///
/// Give it up before a dialog, a menu or a drag, before signals that leave the tool, and before
/// anything that waits. What was found in the graph is not valid afterwards unless a reference was
/// taken; the last reference on a node of the host is released under it, too.
class [[nodiscard]] GraphReading {
public:
    static constexpr double kPatience = 0.02;     ///< seconds
    static constexpr int kRetryMilliseconds = 20; ///< when to try again

    MRBEXT_API GraphReading();
    MRBEXT_API ~GraphReading();
    GraphReading(const GraphReading&) = delete;
    GraphReading& operator=(const GraphReading&) = delete;

    /// Whether the graph may be looked at.
    [[nodiscard]] explicit operator bool() const { return m_isHeld; }

private:
    std::optional<SoReadLock> m_lock; ///< of the outermost one
    bool m_isHeld;
};

/// Does the work under a GraphReading: at once if that is possible, else in a later pass of the
/// event loop, unless the context dies before.
MRBEXT_API void whenReadable(QObject* context, std::function<void()> work);

} // namespace mirabo
