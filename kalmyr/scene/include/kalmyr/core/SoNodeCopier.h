#pragma once

#include <kalmyr/base/Export.h>

#include <unordered_map>

class SoNode;

/// Copies graphs, each node once: what is shared in the original is shared in the copy.
class KALMYR_API SoNodeCopier {
public:
    /// The copy of `original` (reference count 0 when made now); null for null.
    SoNode* copyOf(const SoNode* original);
    /// The copy if one was made already, else the original.
    SoNode* resolve(SoNode* original) const;

private:
    std::unordered_map<const SoNode*, SoNode*> m_copies;
};
