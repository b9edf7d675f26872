#include <kalmyr/shapes/SoAsciiText.h>

namespace {

constexpr SoEnumEntry kJustifications[] = {
    {"LEFT", SoAsciiText::LEFT}, {"RIGHT", SoAsciiText::RIGHT}, {"CENTER", SoAsciiText::CENTER}};

} // namespace

SO_NODE_SOURCE(SoAsciiText)

SoAsciiText::SoAsciiText()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(string, (""));
    SO_ADD_FIELD(spacing, (1.0f));
    SO_ADD_FIELD(justification, (LEFT));
    SO_ADD_FIELD(width, (0.0f));
    justification.setEnums(kJustifications);
}

SoAsciiText::~SoAsciiText() = default;

void SoAsciiText::initClass()
{
    SO_NODE_INIT_CLASS(SoAsciiText, SoShape, "AsciiText");
}

void SoAsciiText::buildGeometry(SoState*, SoGeometry&) {}
