#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoPath.h>

#include <cstdint>
#include <unordered_set>
#include <vector>

class SoField;
class SoFieldData;

/// Finds nodes by identity, type or name, below a node or a path.
///
/// Follows children and node-valued fields; a node found through a field has index -1 on the path.
/// A node that occurs several times is found at each place; where nothing was found below it once,
/// nobody looks again. At most kMaxPaths are kept of all that could be found. Only what is found
/// allocates memory, and, in large graphs, nodes that occur several times.
class KALMYR_API SoSearchAction : public SoAction {
    SO_ACTION_HEADER(SoSearchAction)

public:
    static constexpr std::size_t kMaxPaths = 5'000'000;

    /// The criteria that must agree; combined by |.
    enum Find : unsigned { NODE = 1, TYPE = 2, NAME = 4 };
    enum Interest { FIRST, LAST, ALL };

    SoSearchAction();

    /// Back to a new action's settings, results forgotten.
    void reset();

    /// Each of these adds its criterion.
    void setNode(SoNode* node);
    /// With `derived` off only nodes of exactly that type are found.
    void setType(SoType type, bool derived = true);
    void setName(const SbName& name);
    /// Replaces the criteria; 0 finds nothing.
    void setFind(unsigned what) { m_find = what; }
    unsigned getFind() const { return m_find; }

    /// FIRST stops at the first node found.
    void setInterest(Interest interest) { m_interest = interest; }
    Interest getInterest() const { return m_interest; }
    /// Also looks where an action would not go at present: children that a switch does not choose,
    /// and children that are a node's own business.
    void setSearchingAll(bool on) { m_searchingAll = on; }
    bool isSearchingAll() const { return m_searchingAll; }
    /// Also looks at the parts of node kits. Searches for everything do so in any case, and all of
    /// a thread where SoBaseKit::setSearchingChildren() is on.
    void setSearchingKits(bool on) { m_searchingKits = on; }
    bool isSearchingKits() const { return m_searchingKits; }

    using SoAction::apply;
    void apply(SoNode* root) override;
    void apply(SoPath* path) override;

    bool isFound() const { return !m_paths.empty(); }
    /// The path found (FIRST, LAST), or the first of all; null when none.
    SoPath* getPath() const { return m_paths.empty() ? nullptr : m_paths.front().get(); }
    /// All paths found, in order of traversal.
    const std::vector<SoRef<SoPath>>& getPaths() const { return m_paths; }

    /// For the methods of nodes that choose among their children: first check(node), then, unless
    /// searching all, the fields and the chosen child; the usual method does check() and
    /// searchBelow().
    void check(SoNode* node);
    void searchBelow(SoNode* node);
    void searchFields(SoNode* node);
    void searchField(SoNode* container, SoField* field);
    /// Notes that the nodes found below the one visited depend on where it stands.
    void dependsOnPlace() { ++m_numPlaceBound; }

protected:
    void beginTraversal(SoNode* root) override;

private:
    struct NodeFields {
        const SoFieldData* data = nullptr;
        std::vector<int> indices;
    };
    bool mayExist() const;
    bool matches(const SoNode* node) const;
    static void collectNodeFields(const SoNode* node, const SoFieldData* data, NodeFields& known);
    void searchEverywhereBelow(SoNode* node);
    void searchFieldNode(SoNode* container, SoNode* node);

    SoNode* m_node = nullptr; // Not owned, only compared.
    SoType m_type;
    SbName m_name;
    unsigned m_find = 0;
    Interest m_interest = FIRST;
    bool m_derived = true;
    bool m_searchingAll = false;
    bool m_searchingKits = false;
    std::vector<SoRef<SoPath>> m_paths;
    std::vector<NodeFields> m_nodeFields;          ///< by type index
    std::unordered_set<const SoNode*> m_nothingIn; ///< shared nodes that need no second look
    std::uint64_t m_numFound = 0;
    std::uint64_t m_numPlaceBound = 0;
};
