#include <kalmyr/details/SoPointDetail.h>

namespace {

SoType s_type;

} // namespace

SoType SoPointDetail::getClassTypeId()
{
    return s_type;
}

void SoPointDetail::initClass()
{
    s_type = SoType::createType(SoDetail::getClassTypeId(), SbName("PointDetail"));
}
