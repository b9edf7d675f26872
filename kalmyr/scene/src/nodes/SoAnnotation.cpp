#include <kalmyr/nodes/SoAnnotation.h>

SO_NODE_SOURCE(SoAnnotation)

SoAnnotation::SoAnnotation()
{
    SO_NODE_CONSTRUCTOR(SoSeparator);
}

SoAnnotation::~SoAnnotation() = default;

void SoAnnotation::initClass()
{
    SO_NODE_INIT_CLASS(SoAnnotation, SoSeparator, "Annotation");
}
