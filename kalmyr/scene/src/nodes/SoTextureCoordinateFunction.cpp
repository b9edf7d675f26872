#include <kalmyr/nodes/SoTextureCoordinateFunction.h>

SO_NODE_SOURCE(SoTextureCoordinateFunction)

SoTextureCoordinateFunction::SoTextureCoordinateFunction()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

SoTextureCoordinateFunction::~SoTextureCoordinateFunction() = default;

void SoTextureCoordinateFunction::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoTextureCoordinateFunction, SoNode, "TextureCoordinateFunction");
}
