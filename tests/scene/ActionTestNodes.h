#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <random>
#include <vector>

/// Small nodes and graphs for the tests of actions.
namespace actiontest {

/// Registers the toolkit's classes and those below.
void init();

/// A node that sets the state, by a matrix.
class Mover : public SoNode {
    SO_NODE_HEADER(Mover)

public:
    Mover();
    explicit Mover(const SbVec3f& by);
    static void initClass();
    void doAction(SoAction* action) override;

    SoSFVec3f by;
    SoSFNode held; ///< any node, as the appearance of a shape is
};

/// Something of size 1 about the origin that sets nothing.
class Leaf : public SoNode {
    SO_NODE_HEADER(Leaf)

public:
    Leaf();
    static void initClass();
    bool affectsState() const override { return false; }
};

/// Sets a view, as a camera does.
class View : public SoNode {
    SO_NODE_HEADER(View)

public:
    View();
    static void initClass();
    void doAction(SoAction* action) override;

    SbViewVolume volume;
};

/// A random graph of groups, separators, movers and leaves; groups are shared now and then.
struct RandomGraph {
    explicit RandomGraph(unsigned seed, int numGroups = 40);

    SoRef<SoSeparator> root;
    std::vector<SoGroup*> groups; ///< the root first; a group holds only later ones
    std::vector<Leaf*> leaves;
    std::vector<Mover*> movers;
    std::mt19937 random;

    int pick(std::size_t count) { return static_cast<int>(random() % count); }
};

/// A chain of separators, each holding a mover and the next; a leaf at the end.
SoSeparator* chain(int depth);

} // namespace actiontest
