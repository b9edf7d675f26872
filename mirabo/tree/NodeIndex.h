#pragma once

#include <cstddef>
#include <vector>

class SoNode;
class SoTreeViewItem;

namespace mirabo {

/// From a node to the rows that stand for it: an open hash table of nodes, and a list through the
/// rows themselves. Adding and removing a row is constant time however often its node occurs.
class NodeIndex {
public:
    void add(SoTreeViewItem* item);
    void remove(SoTreeViewItem* item);
    /// Takes out all rows of a node and returns them.
    std::vector<SoTreeViewItem*> take(const SoNode* node);
    /// Rows of the node will be added soon.
    void prefetch(const SoNode* node) const;

    /// Rows in the order in which they were added; empty for a node that the tree does not show.
    /// The pointer is only compared, so a node that died may be asked for.
    std::vector<SoTreeViewItem*> itemsOf(const SoNode* node) const;
    /// The first of them, or null.
    SoTreeViewItem* firstOf(const SoNode* node) const;
    bool contains(const SoNode* node) const { return firstOf(node) != nullptr; }

    std::size_t nodeCount() const { return m_nodes; }
    std::size_t itemCount() const { return m_items; }

    /// Forgets everything. Rows that are destroyed before endDiscard() no longer take themselves
    /// out, which saves a search for each.
    void beginDiscard();
    void endDiscard() { m_discarding = false; }

private:
    struct Slot {
        const SoNode* node = nullptr;
        SoTreeViewItem* first = nullptr; ///< its previous row is the last one
    };

    std::size_t home(const SoNode* node) const;
    std::size_t find(const SoNode* node) const; ///< its slot, or the free one where it belongs
    void grow();
    void erase(std::size_t at);

    std::vector<Slot> m_slots; ///< a power of two, at most two thirds full
    std::size_t m_nodes = 0;
    std::size_t m_items = 0;
    bool m_discarding = false;
};

} // namespace mirabo
