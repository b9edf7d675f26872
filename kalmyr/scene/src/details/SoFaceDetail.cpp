#include <kalmyr/details/SoFaceDetail.h>

#include <kalmyr/base/SoContract.h>

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

const SoPointDetail& SoFaceDetail::getPoint(int i) const
{
    static const SoPointDetail none;
    if (!kalmyr::holds(i >= 0 && i < getNumPoints(), "0 <= i < getNumPoints()"))
        return none;
    return m_points[static_cast<std::size_t>(i)];
}
