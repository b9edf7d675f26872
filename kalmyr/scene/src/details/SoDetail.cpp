#include <kalmyr/details/SoDetail.h>

#include <kalmyr/details/SoDetailsInit.h>
#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/details/SoLineDetail.h>
#include <kalmyr/details/SoPointDetail.h>
#include <kalmyr/details/SoTextDetail.h>

namespace {

SoType s_type;

} // namespace

SoType SoDetail::getClassTypeId()
{
    return s_type;
}

void SoDetail::initClass()
{
    s_type = SoType::createType(SoType::badType(), SbName("Detail"));
}

void kalmyr::initDetails()
{
    SoDetail::initClass();
    SoPointDetail::initClass();
    SoLineDetail::initClass();
    SoFaceDetail::initClass();
    SoTextDetail::initClass();
}
