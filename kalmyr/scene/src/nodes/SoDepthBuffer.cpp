#include <kalmyr/nodes/SoDepthBuffer.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoLookExtras.h>

#include <algorithm>

namespace {

constexpr SoEnumEntry kFunctions[] = {
    {"NEVER", SoLookExtras::NEVER},     {"ALWAYS", SoLookExtras::ALWAYS},
    {"LESS", SoLookExtras::LESS},       {"LEQUAL", SoLookExtras::LEQUAL},
    {"EQUAL", SoLookExtras::EQUAL},     {"GEQUAL", SoLookExtras::GEQUAL},
    {"GREATER", SoLookExtras::GREATER}, {"NOTEQUAL", SoLookExtras::NOTEQUAL},
};

} // namespace

SO_NODE_SOURCE(SoDepthBuffer)

SoDepthBuffer::SoDepthBuffer()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(test, (true));
    SO_ADD_FIELD(write, (true));
    SO_ADD_FIELD(function, (LEQUAL));
    function.setEnums(kFunctions);
    SO_ADD_FIELD(range, (0.0f, 1.0f));
}

SoDepthBuffer::~SoDepthBuffer() = default;

void SoDepthBuffer::initClass()
{
    SO_NODE_INIT_CLASS(SoDepthBuffer, SoNode, "DepthBuffer");
}

void SoDepthBuffer::doAction(SoAction* action)
{
    SoLookExtras& extras = SoLookExtrasElement::edit(action->getState(), this);
    extras.depthTest = test.getValue();
    extras.depthWrite = write.getValue();
    extras.depthFunction = static_cast<SoLookExtras::DepthFunction>(function.getValue());
    for (int i = 0; i < 2; ++i)
        extras.depthRange[i] = std::clamp(range.getValue()[i], 0.0f, 1.0f);
}
