#include <kalmyr/draggers/SoScaleUniformDragger.h>

SO_KIT_SOURCE(SoScaleUniformDragger)

SoScaleUniformDragger::SoScaleUniformDragger()
{
    SO_NODE_CONSTRUCTOR(SoScaleDragger);
    SO_KIT_MAKE_PARTS();
    addBox();
}

SoScaleUniformDragger::~SoScaleUniformDragger() = default;

void SoScaleUniformDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoScaleUniformDragger, SoScaleDragger, "ScaleUniformDragger");
}
