#include <kalmyr/nodes/SoLabel.h>

SO_NODE_SOURCE(SoLabel)

SoLabel::SoLabel()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(label, ("<Undefined label>"));
}

SoLabel::~SoLabel() = default;

void SoLabel::initClass()
{
    SO_NODE_INIT_CLASS(SoLabel, SoNode, "Label");
}
