#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbPlane.h>
#include <kalmyr/base/SbViewVolume.h>

/// Maps positions on the screen to points of a line or a surface: what a pointer points at while it
/// moves something that can go nowhere else.
///
/// The line or surface, and the points, are those of a working space, which any affine matrix leads
/// to the space of the view volume: the points are exact under uneven scale and shear as well.
/// Positions are normalised, 0 0 to 1 1, and may lie outside the screen. Computed in double.
class KALMYRBASE_API SbProjector {
public:
    SbProjector() = default;
    virtual ~SbProjector() = default;

    void setViewVolume(const SbViewVolume& volume) { m_volume = volume; }
    const SbViewVolume& getViewVolume() const { return m_volume; }
    /// From the working space to that of the view volume. The identity at first.
    void setWorkingSpace(const SbMatrix& toWorld);
    const SbMatrix& getWorkingSpace() const { return m_toWorld; }

    /// The point that a position points at. False, and `point` unchanged, when there is none that
    /// makes sense: behind the eye, or on what is seen from its edge or end.
    virtual bool project(const SbVec2f& position, SbVec3f& point) const = 0;

    /// Lines and planes are taken as seen from the end or edge below this sine of the angle to the
    /// line of sight.
    static constexpr double kMinSine = 0.01;

protected:
    /// Points origin + t * direction with t > 0 lie before the eye; all do for orthographic views.
    struct Sight {
        SbVec3d origin;
        SbVec3d direction; ///< of no certain length
        bool isEndless;    ///< points with t <= 0 are seen as well

        SbVec3d at(double t) const { return origin + direction * t; }
        bool sees(double t) const { return isEndless || t > 0; }
    };
    /// The line of sight through a position, in the working space.
    Sight sightThrough(const SbVec2f& position) const;
    SbVec3d directionToWorld(const SbVec3d& direction) const;
    bool isInvertible() const { return m_invertible; }

private:
    SbViewVolume m_volume;
    SbMatrix m_toWorld;
    SbMatrix m_fromWorld;
    bool m_invertible = true;
};

/// A straight line. Beside the line counts the point of it whose picture is nearest to the
/// position.
class KALMYRBASE_API SbLineProjector final : public SbProjector {
public:
    /// The direction may have any length but 0.
    void setLine(const SbVec3f& point, const SbVec3f& direction)
    {
        m_point = point;
        m_direction = direction;
    }
    bool project(const SbVec2f& position, SbVec3f& point) const override;

private:
    SbVec3f m_point;
    SbVec3f m_direction{1, 0, 0};
};

class KALMYRBASE_API SbPlaneProjector final : public SbProjector {
public:
    void setPlane(const SbPlane& plane) { m_plane = plane; }
    /// The plane through a point of the working space that lies square to the view direction in
    /// the world, after view volume and working space were set.
    void setAcrossView(const SbVec3f& point);
    const SbPlane& getPlane() const { return m_plane; }
    bool project(const SbVec2f& position, SbVec3f& point) const override;

private:
    SbPlane m_plane;
};

/// A cylinder without ends. Beside it the surface goes on as if it were rolled along the screen, so
/// that what is dragged on goes on turning, without a jump at the silhouette.
class KALMYRBASE_API SbCylinderProjector final : public SbProjector {
public:
    /// The direction may have any length but 0.
    void setCylinder(const SbVec3f& center, const SbVec3f& axis, float radius);
    /// Whether the side that faces the eye counts (at first), or that behind.
    void setFront(bool on) { m_front = on; }
    bool project(const SbVec2f& position, SbVec3f& point) const override;

private:
    SbVec3f m_center;
    SbVec3f m_axis{0, 1, 0};
    float m_radius = 1;
    bool m_front = true;
};

/// A ball, which is rolled on beside its silhouette as the cylinder is.
class KALMYRBASE_API SbSphereProjector final : public SbProjector {
public:
    void setSphere(const SbVec3f& center, float radius)
    {
        m_center = center;
        m_radius = radius;
    }
    void setFront(bool on) { m_front = on; }
    bool project(const SbVec2f& position, SbVec3f& point) const override;

private:
    SbVec3f m_center;
    float m_radius = 1;
    bool m_front = true;
};
