#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbLine.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbPlane.h>
#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbVec.h>

#include <array>

/// The space that a camera sees: a box (orthographic) or a truncated pyramid (perspective) in
/// space. Kept in double, so that small windows far away stay exact. A new volume is the cube from
/// -1 to 1 seen along -z. "Normalised" screen positions run from 0 0 (lower left) to 1 1; depth
/// from 0 (near) to 1 (far).
class SbViewVolume {
public:
    enum ProjectionType { ORTHOGRAPHIC = 0, PERSPECTIVE = 1 };

    SbViewVolume() = default;

    /// Bounds in camera space; `near` and `far` are distances in front of the eye, negative ones
    /// behind it.
    KALMYRBASE_API void ortho(double left, double right, double bottom, double top, double nearDist,
                              double farDist);
    /// `fovy` is the whole vertical angle in radians, `aspect` width divided by height.
    KALMYRBASE_API void perspective(double fovy, double aspect, double nearDist, double farDist);
    /// Bounds on the near plane; 0 < near < far.
    KALMYRBASE_API void frustum(double left, double right, double bottom, double top,
                                double nearDist, double farDist);

    /// New near and far distances; the lines of sight stay as they are. A perspective near distance
    /// that is not positive becomes a small part of the far distance, here as above.
    KALMYRBASE_API void zSet(double nearDist, double farDist);

    /// Turns the camera about the eye's position. The rotation is applied after those that came
    /// before.
    KALMYRBASE_API void rotateCamera(const SbRotation& rotation);
    KALMYRBASE_API void translateCamera(const SbVec3f& translation);
    /// Carries the whole volume through the affine part of a matrix; shear and uneven scale
    /// included.
    KALMYRBASE_API void transform(const SbMatrix& m);
    /// Multiplies the width and height of the window.
    KALMYRBASE_API void scale(double factor);
    KALMYRBASE_API void scaleWidth(double factor);
    KALMYRBASE_API void scaleHeight(double factor);

    ProjectionType getProjectionType() const { return m_type; }
    /// The eye. For orthographic volumes the point from which near and far distances count.
    SbVec3f getProjectionPoint() const { return SbVec3f(m_origin); }
    /// Unit vector into the scene, square to the near plane.
    KALMYRBASE_API SbVec3f getProjectionDirection() const;
    /// Unit vector that points up on the screen.
    KALMYRBASE_API SbVec3f getViewUp() const;
    /// Unit vector that points right on the screen.
    KALMYRBASE_API SbVec3f getViewRight() const;
    /// Window size on the near plane.
    KALMYRBASE_API float getWidth() const;
    KALMYRBASE_API float getHeight() const;
    KALMYRBASE_API float getNearDist() const;
    /// Far distance minus near distance.
    KALMYRBASE_API float getDepth() const;

    /// World to eye space, and eye to clip space with the clip conventions of OpenGL (-w to w on
    /// all axes).
    KALMYRBASE_API void getMatrices(SbMatrix& affine, SbMatrix& projection) const;
    /// World to clip space: affine * projection, multiplied in double.
    KALMYRBASE_API SbMatrix getMatrix() const;
    /// Eye to world space.
    KALMYRBASE_API SbMatrix getCameraSpaceMatrix() const;

    /// World point to normalised screen position and depth. Points at the eye's own depth give no
    /// sensible result.
    KALMYRBASE_API void projectToScreen(const SbVec3f& src, SbVec3f& dst) const;
    /// The line of sight through a normalised screen position, from near to far.
    KALMYRBASE_API void projectPointToLine(const SbVec2f& pt, SbLine& line) const;
    /// The points of that line on the near and on the far plane.
    KALMYRBASE_API void projectPointToLine(const SbVec2f& pt, SbVec3f& nearPoint,
                                           SbVec3f& farPoint) const;
    /// The plane at a distance in front of the eye; its normal points at the eye.
    KALMYRBASE_API SbPlane getPlane(float distFromEye) const;
    /// The point straight ahead of the eye.
    KALMYRBASE_API SbVec3f getSightPoint(float distFromEye) const;
    /// The point at a distance in front of the eye that a normalised screen position shows.
    KALMYRBASE_API SbVec3f getPlanePoint(float distFromEye, const SbVec2f& normPoint) const;
    /// The rotation that turns x to the right and y up on the screen; to the nearest right angles
    /// on request.
    KALMYRBASE_API SbRotation getAlignRotation(bool rightAngleOnly = false) const;
    /// The world radius at `worldCenter` that covers `normRadius` of the screen's smaller side.
    KALMYRBASE_API float getWorldToScreenScale(const SbVec3f& worldCenter, float normRadius) const;
    /// Size of the screen rectangle that a box covers, in fractions of the screen; 1 1 when it
    /// reaches behind the eye.
    KALMYRBASE_API SbVec2f projectBox(const SbBox3f& box) const;

    /// The part of the volume behind a rectangle of the normalised screen.
    KALMYRBASE_API SbViewVolume narrow(float left, float bottom, float right, float top) const;
    /// The part between two depths: 1 is the near plane, 0 the far plane.
    KALMYRBASE_API SbViewVolume zNarrow(float nearVal, float farVal) const;

    /// Left, right, bottom, top, near, far; all face inwards.
    KALMYRBASE_API std::array<SbPlane, 6> getPlanes() const;
    KALMYRBASE_API bool intersect(const SbVec3f& p) const;
    /// False when the box is certainly outside. May say true for a box that passes close to an
    /// edge.
    KALMYRBASE_API bool intersect(const SbBox3f& box) const;
    /// The axis-parallel box around the volume.
    KALMYRBASE_API SbBox3f getBoundingBox() const;

    KALMYRBASE_API friend bool operator==(const SbViewVolume& a, const SbViewVolume& b);

private:
    SbVec3d toWorld(double x, double y, double z) const;
    SbVec3d onScreen(double x, double y, double depth) const;
    SbVec3d forward() const;
    double depthScale() const;
    void setWindow(double left, double right, double bottom, double top);

    ProjectionType m_type = ORTHOGRAPHIC;
    // Eye space: world = origin + x * right + y * up + z * back; the axes are unit and square until
    // transform().
    SbVec3d m_origin{0, 0, 0};
    SbVec3d m_right{1, 0, 0};
    SbVec3d m_up{0, 1, 0};
    SbVec3d m_back{0, 0, 1};
    // Window on the near plane and distances, in eye space.
    double m_left = -1;
    double m_rightEdge = 1;
    double m_bottom = -1;
    double m_top = 1;
    double m_near = -1;
    double m_far = 1;
};
