#pragma once

#include <kalmyr/details/SoPointDetail.h>

#include <vector>

/// A face of a shape: its index, the index of the part that it belongs to (a strip, the side of a
/// cylinder; the face itself where there are no others), and its corners.
///
/// The corners are those of the whole face in the order of the shape's indices. A shape without
/// positions of its own has the three corners of the triangle, which tell the material only.
class KALMYR_API SoFaceDetail final : public SoDetail {
    SO_DETAIL_HEADER(SoFaceDetail)

public:
    int getFaceIndex() const { return m_face; }
    int getPartIndex() const { return m_part; }
    void setFaceIndex(int i) { m_face = i; }
    void setPartIndex(int i) { m_part = i; }
    int getNumPoints() const { return static_cast<int>(m_points.size()); }
    /// A corner; 0 <= i < getNumPoints().
    const SoPointDetail& getPoint(int i) const;
    const std::vector<SoPointDetail>& getPoints() const { return m_points; }
    void setPoints(std::vector<SoPointDetail> points) { m_points = std::move(points); }

private:
    int m_face = 0;
    int m_part = 0;
    std::vector<SoPointDetail> m_points;
};
