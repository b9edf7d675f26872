#pragma once

#include <kalmyr/details/SoDetail.h>

/// A vertex of a shape: indices of what its coordinate, material, normal and texture coordinate
/// come from, in the fields or nodes that hold them; -1 where there is none, or it is generated.
class KALMYR_API SoPointDetail final : public SoDetail {
    SO_DETAIL_HEADER(SoPointDetail)

public:
    int getCoordinateIndex() const { return m_coordinate; }
    int getMaterialIndex() const { return m_material; }
    int getNormalIndex() const { return m_normal; }
    int getTextureCoordIndex() const { return m_textureCoord; }
    void setCoordinateIndex(int i) { m_coordinate = i; }
    void setMaterialIndex(int i) { m_material = i; }
    void setNormalIndex(int i) { m_normal = i; }
    void setTextureCoordIndex(int i) { m_textureCoord = i; }

private:
    int m_coordinate = -1;
    int m_material = -1;
    int m_normal = -1;
    int m_textureCoord = -1;
};
