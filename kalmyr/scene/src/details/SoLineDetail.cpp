#include <kalmyr/details/SoLineDetail.h>

namespace {

SoType s_type;

} // namespace

SoType SoLineDetail::getClassTypeId()
{
    return s_type;
}

void SoLineDetail::initClass()
{
    s_type = SoType::createType(SoDetail::getClassTypeId(), SbName("LineDetail"));
}
