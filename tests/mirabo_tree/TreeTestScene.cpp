#include "TreeTestScene.h"

SO_NODE_SOURCE(FieldHolder)

FieldHolder::FieldHolder()
{
    SO_NODE_CONSTRUCTOR(FieldHolder);
    SO_ADD_FIELD(one, (nullptr));
    SO_ADD_EMPTY_FIELD(many);
    SO_ADD_FIELD(number, (0.f));
}

FieldHolder::~FieldHolder() = default;

void FieldHolder::initClass()
{
    if (s_classTypeId.isBad())
        SO_NODE_INIT_CLASS(FieldHolder, SoNode, "FieldHolder");
}

namespace {

SoGroup* makeRoot()
{
    SoDB::init();
    FieldHolder::initClass();
    return new SoGroup;
}

} // namespace

TreeTest::TreeTest() : root(makeRoot())
{
    view.resize(500, 400);
    view.setSceneGraph(root.get());
}

TreeTest::~TreeTest() = default;
