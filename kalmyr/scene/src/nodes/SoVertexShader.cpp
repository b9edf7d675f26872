#include <kalmyr/nodes/SoVertexShader.h>

SO_NODE_SOURCE(SoVertexShader)

SoVertexShader::SoVertexShader()
{
    SO_NODE_CONSTRUCTOR(SoShaderObject);
}

SoVertexShader::~SoVertexShader() = default;

void SoVertexShader::initClass()
{
    SO_NODE_INIT_CLASS(SoVertexShader, SoShaderObject, "VertexShader");
}
