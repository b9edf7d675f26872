#include <kalmyr/nodes/SoAlphaTest.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

namespace {

constexpr SoEnumEntry kFunctions[] = {
    {"NEVER", SoLookExtras::NEVER},     {"ALWAYS", SoLookExtras::ALWAYS},
    {"LESS", SoLookExtras::LESS},       {"LEQUAL", SoLookExtras::LEQUAL},
    {"EQUAL", SoLookExtras::EQUAL},     {"GEQUAL", SoLookExtras::GEQUAL},
    {"GREATER", SoLookExtras::GREATER}, {"NOTEQUAL", SoLookExtras::NOTEQUAL},
};

} // namespace

SO_NODE_SOURCE(SoAlphaTest)

SoAlphaTest::SoAlphaTest()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(function, (ALWAYS));
    function.setEnums(kFunctions);
    SO_ADD_FIELD(value, (0.5f));
}

SoAlphaTest::~SoAlphaTest() = default;

void SoAlphaTest::initClass()
{
    SO_NODE_INIT_CLASS(SoAlphaTest, SoNode, "AlphaTest");
}

void SoAlphaTest::doAction(SoAction* action)
{
    SoLookExtras& extras = SoLookExtrasElement::edit(action->getState(), this);
    extras.alphaFunction = static_cast<SoLookExtras::DepthFunction>(function.getValue());
    extras.alphaValue = value.getValue();
}
