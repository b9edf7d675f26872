#include "ActionTestNodes.h"

#include <kalmyr/io/SoDB.h>

namespace actiontest {

SO_NODE_SOURCE(Mover)
SO_NODE_SOURCE(Leaf)
SO_NODE_SOURCE(View)

void init()
{
    SoDB::init();
    Mover::initClass();
    Leaf::initClass();
    View::initClass();
}

Mover::Mover()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(by, (0.0f, 0.0f, 0.0f));
    SO_ADD_EMPTY_FIELD(held);
}

Mover::Mover(const SbVec3f& amount) : Mover()
{
    by = amount;
}

void Mover::initClass()
{
    SO_NODE_INIT_CLASS(Mover, SoNode, "TestMover");
}

void Mover::doAction(SoAction* action)
{
    SbMatrix m;
    m.setTranslate(by.getValue());
    SoModelMatrixElement::mult(action->getState(), this, m);
    action->traverse(held.getValue(), -1);
}

Leaf::Leaf()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

void Leaf::initClass()
{
    SO_NODE_INIT_CLASS(Leaf, SoNode, "TestLeaf");
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode*) {
        static_cast<SoGetBoundingBoxAction*>(action)->extendBy(
            SbBox3f(-0.5f, -0.5f, -0.5f, 0.5f, 0.5f, 0.5f));
    });
    SoRayPickAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode*) {
        auto* pick = static_cast<SoRayPickAction*>(action);
        SoPickHit hit;
        if (pick->intersectBox(SbBox3f(-0.5f, -0.5f, -0.5f, 0.5f, 0.5f, 0.5f), hit))
            pick->addHit(hit);
    });
}

View::View()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

void View::initClass()
{
    SO_NODE_INIT_CLASS(View, SoNode, "TestView");
}

void View::doAction(SoAction* action)
{
    SoView view;
    view.valid = true;
    view.volume = volume;
    action->getState()->write<SoViewElement>().set(this, view);
}

RandomGraph::RandomGraph(unsigned seed, int numGroups) : root(new SoSeparator), random(seed)
{
    groups.push_back(root.get());
    for (int i = 1; i < numGroups; ++i)
        groups.push_back(pick(2) ? new SoSeparator : new SoGroup);
    const auto coordinate = [this] { return static_cast<float>(pick(41) - 20); };
    for (std::size_t i = 0; i < groups.size(); ++i) {
        for (int n = 0; n < 3; ++n) {
            movers.push_back(new Mover(SbVec3f(coordinate(), coordinate(), coordinate())));
            groups[i]->addChild(movers.back());
            leaves.push_back(new Leaf);
            groups[i]->addChild(leaves.back());
        }
        // Every group hangs below an earlier one, some below two.
        for (int times = i == 0 ? 0 : 1 + pick(8) / 7; times > 0; --times) {
            SoGroup* parent = groups[static_cast<std::size_t>(pick(i))];
            parent->insertChild(groups[i],
                                pick(static_cast<std::size_t>(parent->getNumChildren()) + 1));
        }
    }
}

SoSeparator* chain(int depth)
{
    auto* below = new SoSeparator;
    below->addChild(new Mover(SbVec3f(1, 0, 0)));
    below->addChild(new Leaf);
    for (int i = 1; i < depth; ++i) {
        auto* above = new SoSeparator;
        above->addChild(new Mover(SbVec3f(1, 0, 0)));
        above->addChild(below);
        below = above;
    }
    return below;
}

} // namespace actiontest
