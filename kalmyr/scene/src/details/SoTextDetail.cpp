#include <kalmyr/details/SoTextDetail.h>

namespace {

SoType s_type;

} // namespace

SoType SoTextDetail::getClassTypeId()
{
    return s_type;
}

void SoTextDetail::initClass()
{
    s_type = SoType::createType(SoDetail::getClassTypeId(), SbName("TextDetail"));
}
