#pragma once

#include <kalmyr/details/SoPointDetail.h>

/// A segment of a polyline: the polyline's index in its shape, the segment's in the polyline.
class KALMYR_API SoLineDetail final : public SoDetail {
    SO_DETAIL_HEADER(SoLineDetail)

public:
    int getLineIndex() const { return m_line; }
    int getPartIndex() const { return m_part; }
    void setLineIndex(int i) { m_line = i; }
    void setPartIndex(int i) { m_part = i; }
    const SoPointDetail& getPoint0() const { return m_point0; }
    const SoPointDetail& getPoint1() const { return m_point1; }
    void setPoint0(const SoPointDetail& point) { m_point0 = point; }
    void setPoint1(const SoPointDetail& point) { m_point1 = point; }

private:
    int m_line = 0;
    int m_part = 0;
    SoPointDetail m_point0;
    SoPointDetail m_point1;
};
