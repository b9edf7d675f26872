#pragma once

#include <kalmyr/core/SoType.h>

#include <vector>

class SoField;
class SoFieldData;
class SoNode;

/// Rows below a node in the tree: its children, then the nodes that its fields hold.
namespace mirabo {

struct TreeContext;

/// The shown part of a child list; entry i stands in row i.
struct ShownChildren {
    const std::vector<SoNode*>* nodes = nullptr; ///< Not owned; null: no children are shown.
    int first = 0;                               ///< entries before this are not shown

    int count() const;
    SoNode* operator[](int row) const { return (*nodes)[static_cast<std::size_t>(row + first)]; }
};

/// A node and the field that holds it; no field for a child.
struct PlacedNode {
    SoField* field = nullptr;
    SoNode* node = nullptr;
    friend bool operator==(const PlacedNode&, const PlacedNode&) = default;
};

/// The scene is a VRML97 world, or has groups of one in it (not in its files and inlines): file and
/// inline nodes then show no children.
bool isVrmlScene();
void setVrmlScene(bool on);
/// Another root, or null. It is searched when isVrmlScene() is first asked after that, as it is
/// then, which most scenes never need: a search takes as long as a look at every node.
void setVrmlSceneBy(SoNode* root);

ShownChildren shownChildren(const SoNode* node, const TreeContext& context);

/// Whether a field of that type may hold nodes that are shown.
bool isNodeField(const SoField* field);

/// Finds the nodes held by fields. Keeps what it has learnt about the classes that it meets, so one
/// of them serves one walk through the graph and is dropped before the graph changes.
class FieldNodes {
public:
    /// Appends the nodes in the order of the fields.
    void collect(const SoNode* node, std::vector<PlacedNode>& out);
    void forget() { m_plans.clear(); }

private:
    struct Plan {
        const SoFieldData* data = nullptr;
        std::vector<int> fields;
    };
    const Plan& planOf(const SoNode* node, const SoFieldData* data);

    std::vector<Plan> m_plans; ///< by index of the node's type
};

} // namespace mirabo
