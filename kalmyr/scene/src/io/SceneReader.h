#pragma once

#include "NodeReader.h"

#include <kalmyr/base/SoRef.h>

#include <memory>
#include <vector>

class SoPath;

namespace kalmyr::detail {

/// Reads one file from its header to its end.
class SceneReader {
public:
    /// The reader for the input's format; null after a posted error when there is none.
    /// A text without a header is Kalmyr text if `headerNeeded` is false.
    static std::unique_ptr<SceneReader> make(SoInput& in, bool headerNeeded);

    SceneReader(SoInput& in, const Dialect& dialect) : m_nodes(in, dialect)
    {
        if (!in.getHeader().isEmpty())
            m_nodes.getScene().warnOfEnds();
    }

    /// Next node of the file itself; null with `true` at its end.
    bool readTop(SoNode*& node);
    /// The rest of the file.
    bool readAll(std::vector<SoRef<SoNode>>& nodes);
    /// "Path { head NODE indices [ ... ] }"
    bool readPath(SoRef<SoPath>& path);

    /// Lets the root of the scene keep the prototypes that nothing in the file uses.
    void keepUnused(const SoNode* root) { m_nodes.getPrototypes().keepUnused(root); }

    /// Ends reading after a fault or a stop: posts it as a read error, once, and lets go of all
    /// that was kept for the rest of the file.
    void abandon();

private:
    /// Whether nothing follows; goes on to the next piece of a binary file.
    bool atEnd();

    NodeReader m_nodes;
    bool m_abandoned = false;
};

} // namespace kalmyr::detail
