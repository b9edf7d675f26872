#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace mirabo {

/// A place in a child list from which a node was taken.
struct ParentLink {
    SoRef<SoNode> parent;
    int index;
};

/// A disabled node and where it belongs; the places in rising order for each parent.
struct SavedLinks {
    SoRef<SoNode> node;
    std::vector<ParentLink> links;
};

/// The nodes that are out of the graph for a while and the places that wait for them. What is kept
/// here is shared with the commands that can take it back.
class DisabledPlaces {
public:
    struct Place {
        int index;
        SoNode* node;
    };

    bool isEmpty() const { return m_nodes.empty(); }
    /// Null for a node that is not disabled.
    std::shared_ptr<const SavedLinks> find(const SoNode* node) const;
    /// Keeps a disabled node from being forgotten, for those who mean to show its grey row again;
    /// shows in no reference count. Null for a node that is not disabled.
    std::shared_ptr<const void> claim(const SoNode* node) const;
    /// Returns the places in a node's child list from which nodes were taken.
    std::vector<Place> below(const SoNode* parent) const;

    /// All nodes that something was taken out of.
    std::vector<const SoNode*> parents() const;

    void add(std::shared_ptr<const SavedLinks> saved);
    /// The node may die of it.
    void remove(const SoNode* node);
    void clear();
    /// Drops the nodes that nobody else remembers or claims and `isKept` does not want either.
    template <class Predicate>
    void forget(Predicate isKept)
    {
        std::vector<const SoNode*> gone;
        for (const auto& [node, record] : m_nodes)
            if (record.saved.use_count() == 1 && record.claim.use_count() == 1 && !isKept(node))
                gone.push_back(node);
        for (const SoNode* node : gone)
            remove(node);
    }

private:
    struct Record {
        std::shared_ptr<const SavedLinks> saved;
        std::shared_ptr<const void> claim;
    };
    std::unordered_map<const SoNode*, Record> m_nodes;
    std::unordered_multimap<const SoNode*, SoNode*> m_byParent;
};

} // namespace mirabo
