#include <kalmyr/nodes/SoGeometryShader.h>

SO_NODE_SOURCE(SoGeometryShader)

SoGeometryShader::SoGeometryShader()
{
    SO_NODE_CONSTRUCTOR(SoShaderObject);
}

SoGeometryShader::~SoGeometryShader() = default;

void SoGeometryShader::initClass()
{
    SO_NODE_INIT_CLASS(SoGeometryShader, SoShaderObject, "GeometryShader");
}
