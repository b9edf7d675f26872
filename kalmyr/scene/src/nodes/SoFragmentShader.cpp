#include <kalmyr/nodes/SoFragmentShader.h>

SO_NODE_SOURCE(SoFragmentShader)

SoFragmentShader::SoFragmentShader()
{
    SO_NODE_CONSTRUCTOR(SoShaderObject);
}

SoFragmentShader::~SoFragmentShader() = default;

void SoFragmentShader::initClass()
{
    SO_NODE_INIT_CLASS(SoFragmentShader, SoShaderObject, "FragmentShader");
}
