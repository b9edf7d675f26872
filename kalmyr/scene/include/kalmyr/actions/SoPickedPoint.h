#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/details/SoDetail.h>

#include <memory>
#include <vector>

/// One place where a pick ray met a shape. World space is that of the picked graph's root.
class KALMYR_API SoPickedPoint {
public:
    SoPickedPoint(SoPath* path, const SbMatrix& objectToWorld, float distance,
                  const SbVec3f& objectPoint, const SbVec3f& objectNormal);
    SoPickedPoint(const SoPickedPoint& other);
    SoPickedPoint& operator=(const SoPickedPoint& other);
    SoPickedPoint(SoPickedPoint&&) noexcept = default;
    SoPickedPoint& operator=(SoPickedPoint&&) noexcept = default;
    ~SoPickedPoint() = default;

    /// From the picked root down to the shape.
    SoPath* getPath() const { return m_path.get(); }
    /// Distance from the start of the ray, in world units.
    float getDistance() const { return m_distance; }

    SbVec3f getPoint() const { return m_objectToWorld.point(m_objectPoint); }
    /// Unit length.
    SbVec3f getNormal() const;
    const SbVec2f& getTextureCoords() const { return m_texCoord; }

    /// In the space of a node on the path; null means the shape. Of a group of copies that is the
    /// space of the copy that was hit.
    SbVec3f getObjectPoint(const SoNode* node = nullptr) const;
    SbVec3f getObjectNormal(const SoNode* node = nullptr) const;
    SbMatrix getObjectToWorld(const SoNode* node = nullptr) const;
    SbMatrix getWorldToObject(const SoNode* node = nullptr) const;

    /// Face, line or point that was hit; null when the shape tells none.
    const SoDetail* getDetail() const { return m_detail.get(); }
    /// Returns the detail of a node on the path about the way through it, such as which of its
    /// copies was hit; null when it tells nothing. For the shape and for null the same as above.
    const SoDetail* getDetail(const SoNode* node) const;

    /// For shapes.
    void setTextureCoords(const SbVec2f& coords) { m_texCoord = coords; }
    void setDetail(std::unique_ptr<SoDetail> detail) { m_detail = std::move(detail); }
    /// For the pick action: of a node above the shape, with the matrix from its space to the world.
    void addDetail(const SoNode* node, std::unique_ptr<SoDetail> detail, const SbMatrix& toWorld);

private:
    SoRef<SoPath> m_path;
    SbMatrix m_objectToWorld;
    float m_distance;
    SbVec3f m_objectPoint;
    SbVec3f m_objectNormal;
    SbVec2f m_texCoord;
    std::unique_ptr<SoDetail> m_detail;
    struct OfNode {
        const SoNode* node; ///< held by the path
        std::unique_ptr<SoDetail> detail;
        SbMatrix toWorld;
    };
    const OfNode* findDetail(const SoNode* node) const;

    std::vector<OfNode> m_ofNodes; ///< from the root downwards
};
