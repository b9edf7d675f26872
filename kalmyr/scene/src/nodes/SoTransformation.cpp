#include <kalmyr/nodes/SoTransformation.h>

SO_NODE_SOURCE(SoTransformation)

SoTransformation::SoTransformation()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

SoTransformation::~SoTransformation() = default;

void SoTransformation::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoTransformation, SoNode, "Transformation");
}
