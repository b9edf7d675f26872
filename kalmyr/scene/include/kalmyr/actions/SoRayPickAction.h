#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoPickedPoint.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <limits>
#include <vector>

class SbViewVolume;
class SoBoundingBoxCache;
struct SoBounds;

/// A half line with limits: the points origin + t * direction, t from tMin to tMax.
struct SoPickRay {
    SbVec3f origin;
    SbVec3f direction{0, 0, -1};
    float tMin = 0;
    float tMax = std::numeric_limits<float>::max();
};

/// Where a ray met a primitive, in object space. `t` is the same in object and world space.
struct SoPickHit {
    float t = 0;
    SbVec3f point;
    SbVec3f normal{0, 0, 1};
};

/// Finds the shapes that a ray meets: through a pixel of the viewport, as the latest camera that
/// was traversed sees it, or any ray of world space.
///
/// Faces are met by the ray itself, lines and points within the pick radius. Only the nearest hit
/// is kept unless all are asked for. What lies outside the near and far distance is not met.
class KALMYR_API SoRayPickAction : public SoAction {
    SO_ACTION_HEADER(SoRayPickAction)

public:
    static constexpr float kDefaultRadius = 5;

    explicit SoRayPickAction(const SbViewportRegion& region);

    void setViewportRegion(const SbViewportRegion& region) { m_region = region; }
    const SbViewportRegion& getViewportRegion() const { return m_region; }

    /// Window position in pixels, origin at the lower left.
    void setPoint(const SbVec2s& windowPixel);
    /// Position within the viewport, 0 to 1.
    void setNormalizedPoint(const SbVec2f& position);
    /// In pixels; 5 at first. Not used with setRay().
    void setRadius(float pixels) { m_radius = pixels; }
    float getRadius() const { return m_radius; }

    /// A ray of world space; `direction` may have any length. Distances are world units from the
    /// start; a negative near distance means 0, a negative far distance no limit. Lines and points
    /// are met within `radius` world units.
    void setRay(const SbVec3f& start, const SbVec3f& direction, float nearDistance = -1,
                float farDistance = -1, float radius = 0);

    void setPickAll(bool on) { m_pickAll = on; }
    bool isPickAll() const { return m_pickAll; }

    /// Results, nearest first; of hits at one distance the one traversed first comes first.
    const std::vector<SoPickedPoint>& getPickedPoints() const { return m_points; }
    /// Null when there are not that many; `index` is not negative.
    const SoPickedPoint* getPickedPoint(int index = 0) const;

    /// For separators: true when a valid cache says that nothing inside can be met.
    bool isCulled(const SoNode* node, const SoBoundingBoxCache* cache);

    /// For shapes. False while there is no ray: no camera was traversed yet.
    bool hasRay();
    /// Whether the ray comes near a box of object space, pick radius included, before the nearest
    /// hit so far.
    bool mayHit(const SbBox3f& box);
    bool mayHit(const SoBounds& bounds);
    /// The ray in object space; tMax is the nearest hit so far unless all hits are wanted. The
    /// direction is not of unit length. tMin > tMax when the model matrix has no inverse.
    SoPickRay getObjectRay();

    /// Tests of primitives in object space; true when met within the ray's limits.
    bool intersectTriangle(const SbVec3f& p0, const SbVec3f& p1, const SbVec3f& p2, SoPickHit& hit,
                           SbVec3f* barycentric = nullptr);
    bool intersectLine(const SbVec3f& p0, const SbVec3f& p1, SoPickHit& hit);
    bool intersectPoint(const SbVec3f& p, SoPickHit& hit);
    /// Nearest point on the outside of a box.
    bool intersectBox(const SbBox3f& box, SoPickHit& hit);

    /// Records a hit on the present node. Null when it is not wanted: beyond the limits, or not
    /// the nearest. The pointer is valid until the next hit; the shape may add details to it.
    SoPickedPoint* addHit(const SoPickHit& hit);

    /// For groups that lead to their children in several ways: what each hit below tells of the way
    /// through the node, until popDetail(). Called with the matrix of that way in the state. Not
    /// owned; each hit gets a copy.
    void pushDetail(const SoNode* node, const SoDetail* detail);
    void popDetail() { m_details.pop_back(); }

protected:
    void beginTraversal(SoNode* root) override;
    void endTraversal(SoNode* root) override;
    /// Whether anything in a box of world space is of interest; what separators ask before they
    /// pass the ray on.
    virtual bool mayHitWorldBox(const SbBox3f& box) const;

private:
    enum class Source { NONE, PIXEL, POSITION, RAY };
    void rayFromView(const SbViewVolume& volume);
    float radiusAt(float t) const { return m_radius0 + m_radiusSlope * t; }
    float limit() const;

    SbViewportRegion m_region;
    Source m_source = Source::NONE;
    SbVec2s m_pixel;
    SbVec2f m_position;
    float m_radius = kDefaultRadius;
    bool m_pickAll = false;

    SoPickRay m_ray; ///< world space; unit direction
    float m_radius0 = 0;
    float m_radiusSlope = 0;
    std::uint64_t m_viewId = 0;

    SoPickRay m_objectRay;
    std::uint64_t m_matrixId = 0;
    bool m_objectRayKnown = false;
    bool m_invertible = true;

    std::vector<SoPickedPoint> m_points;
    SoRef<SoPath> m_curPath; ///< of the visit that hit last
    std::uint64_t m_visitOfPath = 0;
    struct OnWay {
        const SoNode* node;     // Not owned.
        const SoDetail* detail; // Not owned.
        SbMatrix toWorld;
    };
    std::vector<OnWay> m_details;
};
