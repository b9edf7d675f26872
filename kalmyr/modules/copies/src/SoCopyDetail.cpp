#include <kalmyr/copies/SoCopyDetail.h>

namespace {

SoType s_type;

} // namespace

SoType SoCopyDetail::getClassTypeId()
{
    return s_type;
}

void SoCopyDetail::initClass()
{
    s_type = SoType::createType(SoDetail::getClassTypeId(), SbName("CopyDetail"));
}
