#include <kalmyr/nodes/SoInfo.h>

SO_NODE_SOURCE(SoInfo)

SoInfo::SoInfo()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(string, ("<Undefined info>"));
}

SoInfo::~SoInfo() = default;

void SoInfo::initClass()
{
    SO_NODE_INIT_CLASS(SoInfo, SoNode, "Info");
}
