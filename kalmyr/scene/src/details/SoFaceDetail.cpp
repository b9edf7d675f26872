#include <kalmyr/details/SoFaceDetail.h>

namespace {

SoType s_type;

} // namespace

SoType SoFaceDetail::getClassTypeId()
{
    return s_type;
}

void SoFaceDetail::initClass()
{
    s_type = SoType::createType(SoDetail::getClassTypeId(), SbName("FaceDetail"));
}
