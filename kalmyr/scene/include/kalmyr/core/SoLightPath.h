#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoPath.h>

#include <vector>

/// A path that neither holds nor watches what is below its head: for keeping many of them.
///
/// Nodes are only compared, so one that died does no harm; the way is looked up when asked for.
class KALMYR_API SoLightPath {
public:
    SoLightPath() = default;
    /// With `keepHead` off not even the head is held; resolveFrom() is the way then.
    explicit SoLightPath(const SoPath& path, bool keepHead = true);

    /// Null for an empty path.
    SoNode* getHead() const { return m_head.get(); }
    int getLength() const { return m_head ? static_cast<int>(m_steps.size()) + 1 : 0; }

    /// The path as the graph is now, with the present places of its nodes; null when a node of it
    /// is no longer below the one above it. Cost: constant per node that kept its place.
    SoRef<SoPath> resolve() const { return resolveFrom(m_head.get()); }
    /// The same from a head that the caller knows to be alive; null for null.
    SoRef<SoPath> resolveFrom(SoNode* head) const;

private:
    struct Step {
        const SoNode* node; // Not owned, only compared.
        int index;
    };
    SoRef<SoNode> m_head;
    std::vector<Step> m_steps;
};
