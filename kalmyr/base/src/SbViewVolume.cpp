#include <kalmyr/base/SbViewVolume.h>

#include <algorithm>
#include <cmath>

namespace {

// A near distance that no perspective can have is replaced by this part of the far distance.
constexpr double kNearestPart = 1e-4;

struct Mat4d {
    double v[4][4] = {};

    SbMatrix narrow() const
    {
        SbMatrix m;
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                m[i][j] = static_cast<float>(v[i][j]);
            }
        }
        return m;
    }
};

Mat4d operator*(const Mat4d& a, const Mat4d& b)
{
    Mat4d r;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            for (int k = 0; k < 4; ++k) {
                r.v[i][j] += a.v[i][k] * b.v[k][j];
            }
        }
    }
    return r;
}

// Turns world positions into coordinates along three axes that need be neither unit nor square.
struct ToAxes {
    SbVec3d origin;
    SbVec3d column[3];

    ToAxes(const SbVec3d& o, const SbVec3d& x, const SbVec3d& y, const SbVec3d& z) : origin(o)
    {
        const double volume = x.dot(y.cross(z));
        const double f = volume != 0 ? 1 / volume : 0;
        column[0] = y.cross(z) * f;
        column[1] = z.cross(x) * f;
        column[2] = x.cross(y) * f;
    }

    SbVec3d operator()(const SbVec3f& p) const
    {
        const SbVec3d v = SbVec3d(p) - origin;
        return {v.dot(column[0]), v.dot(column[1]), v.dot(column[2])};
    }

    Mat4d matrix() const
    {
        Mat4d m;
        for (int j = 0; j < 3; ++j) {
            for (int i = 0; i < 3; ++i) {
                m.v[i][j] = column[j][i];
            }
            m.v[3][j] = -origin.dot(column[j]);
        }
        m.v[3][3] = 1;
        return m;
    }
};

SbVec3d turned(const SbMatrix& m, const SbVec3d& v)
{
    SbVec3d r;
    for (int j = 0; j < 3; ++j) {
        r[j] = v[0] * m[0][j] + v[1] * m[1][j] + v[2] * m[2][j];
    }
    return r;
}

Mat4d orthoMatrix(double l, double r, double b, double t, double n, double f)
{
    Mat4d m;
    m.v[0][0] = 2 / (r - l);
    m.v[1][1] = 2 / (t - b);
    m.v[2][2] = -2 / (f - n);
    m.v[3][0] = -(r + l) / (r - l);
    m.v[3][1] = -(t + b) / (t - b);
    m.v[3][2] = -(f + n) / (f - n);
    m.v[3][3] = 1;
    return m;
}

Mat4d frustumMatrix(double l, double r, double b, double t, double n, double f)
{
    Mat4d m;
    m.v[0][0] = 2 * n / (r - l);
    m.v[1][1] = 2 * n / (t - b);
    m.v[2][0] = (r + l) / (r - l);
    m.v[2][1] = (t + b) / (t - b);
    m.v[2][2] = -(f + n) / (f - n);
    m.v[2][3] = -1;
    m.v[3][2] = -2 * f * n / (f - n);
    return m;
}

double mix(double a, double b, double t)
{
    return a + (b - a) * t;
}

int largestAxis(const SbVec3d& v, int except)
{
    int best = except == 0 ? 1 : 0;
    for (int i = 0; i < 3; ++i) {
        best = i != except && std::fabs(v[i]) > std::fabs(v[best]) ? i : best;
    }
    return best;
}

SbVec3d unitAlong(const SbVec3d& v, int axis)
{
    SbVec3d r;
    r[axis] = v[axis] < 0 ? -1 : 1;
    return r;
}

} // namespace

void SbViewVolume::setWindow(double left, double right, double bottom, double top)
{
    m_left = left;
    m_rightEdge = right;
    m_bottom = bottom;
    m_top = top;
}

void SbViewVolume::ortho(double left, double right, double bottom, double top, double nearDist,
                         double farDist)
{
    *this = SbViewVolume();
    setWindow(left, right, bottom, top);
    m_near = nearDist;
    m_far = farDist;
}

void SbViewVolume::perspective(double fovy, double aspect, double nearDist, double farDist)
{
    const double height = std::tan(fovy / 2);
    frustum(-height * aspect, height * aspect, -height, height, 1, 2);
    zSet(nearDist, farDist);
}

void SbViewVolume::frustum(double left, double right, double bottom, double top, double nearDist,
                           double farDist)
{
    *this = SbViewVolume();
    m_type = PERSPECTIVE;
    setWindow(left, right, bottom, top);
    m_near = nearDist > 0 ? nearDist : std::max(farDist, 1.) * kNearestPart;
    m_far = farDist;
}

void SbViewVolume::zSet(double nearDist, double farDist)
{
    if (m_type == PERSPECTIVE) {
        nearDist = nearDist > 0 ? nearDist : std::max(farDist, 1.) * kNearestPart;
        const double f = nearDist / m_near;
        setWindow(m_left * f, m_rightEdge * f, m_bottom * f, m_top * f);
    }
    m_near = nearDist;
    m_far = farDist;
}

void SbViewVolume::rotateCamera(const SbRotation& rotation)
{
    SbMatrix m;
    m.setRotate(rotation);
    for (SbVec3d* axis : {&m_right, &m_up, &m_back}) {
        *axis = turned(m, *axis);
    }
}

void SbViewVolume::translateCamera(const SbVec3f& translation)
{
    m_origin += SbVec3d(translation);
}

void SbViewVolume::transform(const SbMatrix& m)
{
    for (SbVec3d* axis : {&m_right, &m_up, &m_back}) {
        *axis = turned(m, *axis);
    }
    m_origin = turned(m, m_origin) + SbVec3d(m[3][0], m[3][1], m[3][2]);
}

void SbViewVolume::scale(double factor)
{
    scaleWidth(factor);
    scaleHeight(factor);
}

void SbViewVolume::scaleWidth(double factor)
{
    const double middle = (m_left + m_rightEdge) / 2;
    const double half = (m_rightEdge - m_left) / 2 * factor;
    setWindow(middle - half, middle + half, m_bottom, m_top);
}

void SbViewVolume::scaleHeight(double factor)
{
    const double middle = (m_bottom + m_top) / 2;
    const double half = (m_top - m_bottom) / 2 * factor;
    setWindow(m_left, m_rightEdge, middle - half, middle + half);
}

SbVec3d SbViewVolume::toWorld(double x, double y, double z) const
{
    return m_origin + m_right * x + m_up * y + m_back * z;
}

SbVec3d SbViewVolume::onScreen(double x, double y, double depth) const
{
    const double spread = m_type == PERSPECTIVE ? depth / m_near : 1;
    return toWorld(mix(m_left, m_rightEdge, x) * spread, mix(m_bottom, m_top, y) * spread, -depth);
}

SbVec3d SbViewVolume::forward() const
{
    const SbVec3d normal = m_right.cross(m_up).normalized();
    return normal.dot(m_back) > 0 ? -normal : normal;
}

double SbViewVolume::depthScale() const
{
    return std::fabs(forward().dot(m_back));
}

SbVec3f SbViewVolume::getProjectionDirection() const
{
    return SbVec3f(forward());
}

SbVec3f SbViewVolume::getViewUp() const
{
    return SbVec3f(m_up.normalized());
}

SbVec3f SbViewVolume::getViewRight() const
{
    return SbVec3f(m_right.normalized());
}

float SbViewVolume::getWidth() const
{
    return static_cast<float>((m_rightEdge - m_left) * m_right.length());
}

float SbViewVolume::getHeight() const
{
    return static_cast<float>((m_top - m_bottom) * m_up.length());
}

float SbViewVolume::getNearDist() const
{
    return static_cast<float>(m_near * depthScale());
}

float SbViewVolume::getDepth() const
{
    return static_cast<float>((m_far - m_near) * depthScale());
}

void SbViewVolume::getMatrices(SbMatrix& affine, SbMatrix& projection) const
{
    const auto make = m_type == PERSPECTIVE ? frustumMatrix : orthoMatrix;
    affine = ToAxes(m_origin, m_right, m_up, m_back).matrix().narrow();
    projection = make(m_left, m_rightEdge, m_bottom, m_top, m_near, m_far).narrow();
}

SbMatrix SbViewVolume::getMatrix() const
{
    const auto make = m_type == PERSPECTIVE ? frustumMatrix : orthoMatrix;
    const Mat4d projection = make(m_left, m_rightEdge, m_bottom, m_top, m_near, m_far);
    return (ToAxes(m_origin, m_right, m_up, m_back).matrix() * projection).narrow();
}

SbMatrix SbViewVolume::getCameraSpaceMatrix() const
{
    SbMatrix m;
    const SbVec3d* rows[4] = {&m_right, &m_up, &m_back, &m_origin};
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 3; ++j) {
            m[i][j] = static_cast<float>((*rows[i])[j]);
        }
    }
    return m;
}

void SbViewVolume::projectToScreen(const SbVec3f& src, SbVec3f& dst) const
{
    const SbVec3d eye = ToAxes(m_origin, m_right, m_up, m_back)(src);
    const double depth = -eye[2];
    const bool perspective = m_type == PERSPECTIVE;
    const double spread = perspective ? m_near / depth : 1;
    const double linear = (depth - m_near) / (m_far - m_near);
    dst[0] = static_cast<float>((eye[0] * spread - m_left) / (m_rightEdge - m_left));
    dst[1] = static_cast<float>((eye[1] * spread - m_bottom) / (m_top - m_bottom));
    dst[2] = static_cast<float>(perspective ? linear * m_far / depth : linear);
}

void SbViewVolume::projectPointToLine(const SbVec2f& pt, SbLine& line) const
{
    // Directions straight from double: the points themselves may be too coarse as floats.
    const SbVec3d nearPoint = onScreen(pt[0], pt[1], m_near);
    const SbVec3d farPoint = onScreen(pt[0], pt[1], m_far);
    line.setPosDir(SbVec3f(nearPoint), SbVec3f((farPoint - nearPoint).normalized()));
}

void SbViewVolume::projectPointToLine(const SbVec2f& pt, SbVec3f& nearPoint,
                                      SbVec3f& farPoint) const
{
    nearPoint = SbVec3f(onScreen(pt[0], pt[1], m_near));
    farPoint = SbVec3f(onScreen(pt[0], pt[1], m_far));
}

SbPlane SbViewVolume::getPlane(float distFromEye) const
{
    return {SbVec3f(-forward()), getSightPoint(distFromEye)};
}

SbVec3f SbViewVolume::getSightPoint(float distFromEye) const
{
    return SbVec3f(m_origin + forward() * distFromEye);
}

SbVec3f SbViewVolume::getPlanePoint(float distFromEye, const SbVec2f& normPoint) const
{
    return SbVec3f(onScreen(normPoint[0], normPoint[1], distFromEye / depthScale()));
}

SbRotation SbViewVolume::getAlignRotation(bool rightAngleOnly) const
{
    SbVec3d back = -forward();
    SbVec3d up = m_up.normalized();
    if (rightAngleOnly) {
        const int axis = largestAxis(back, -1);
        back = unitAlong(back, axis);
        up = unitAlong(up, largestAxis(up, axis));
    }
    const SbVec3d right = up.cross(back);
    SbMatrix m;
    for (int j = 0; j < 3; ++j) {
        m[0][j] = static_cast<float>(right[j]);
        m[1][j] = static_cast<float>(up[j]);
        m[2][j] = static_cast<float>(back[j]);
    }
    return SbRotation(m);
}

float SbViewVolume::getWorldToScreenScale(const SbVec3f& worldCenter, float normRadius) const
{
    double spread = 1;
    if (m_type == PERSPECTIVE) {
        spread = std::fabs(ToAxes(m_origin, m_right, m_up, m_back)(worldCenter)[2]) / m_near;
    }
    return static_cast<float>(std::min(getWidth(), getHeight()) * spread * normRadius);
}

SbVec2f SbViewVolume::projectBox(const SbBox3f& box) const
{
    const ToAxes toEye(m_origin, m_right, m_up, m_back);
    SbBox2f covered;
    for (int i = 0; i < 8 && !box.isEmpty(); ++i) {
        const SbVec3f corner = box.getCorner(i);
        if (m_type == PERSPECTIVE && toEye(corner)[2] >= 0) {
            return {1, 1};
        }
        SbVec3f p;
        projectToScreen(corner, p);
        covered.extendBy(SbVec2f(p[0], p[1]));
    }
    return covered.getSize();
}

SbViewVolume SbViewVolume::narrow(float left, float bottom, float right, float top) const
{
    SbViewVolume r = *this;
    r.setWindow(mix(m_left, m_rightEdge, left), mix(m_left, m_rightEdge, right),
                mix(m_bottom, m_top, bottom), mix(m_bottom, m_top, top));
    return r;
}

SbViewVolume SbViewVolume::zNarrow(float nearVal, float farVal) const
{
    SbViewVolume r = *this;
    r.zSet(mix(m_far, m_near, nearVal), mix(m_far, m_near, farVal));
    return r;
}

std::array<SbPlane, 6> SbViewVolume::getPlanes() const
{
    // Three corners of each side as bits: 1 right, 2 top, 4 far.
    constexpr int kSides[6][3] = {{0, 2, 4}, {1, 3, 5}, {0, 1, 4}, {2, 3, 6}, {0, 1, 2}, {4, 5, 6}};
    SbVec3d corner[8];
    SbVec3d middle;
    for (int i = 0; i < 8; ++i) {
        corner[i] = onScreen(i & 1, (i >> 1) & 1, i & 4 ? m_far : m_near);
        middle += corner[i] / 8;
    }
    std::array<SbPlane, 6> planes;
    for (int side = 0; side < 6; ++side) {
        const SbVec3d& p = corner[kSides[side][0]];
        SbVec3d normal =
            (corner[kSides[side][1]] - p).cross(corner[kSides[side][2]] - p).normalized();
        normal *= normal.dot(middle - p) < 0 ? -1 : 1;
        planes[side] = SbPlane(SbVec3f(normal), static_cast<float>(normal.dot(p)));
    }
    return planes;
}

bool SbViewVolume::intersect(const SbVec3f& p) const
{
    const SbVec3d eye = ToAxes(m_origin, m_right, m_up, m_back)(p);
    const double depth = -eye[2];
    const double spread = m_type == PERSPECTIVE ? depth / m_near : 1;
    return depth >= m_near && depth <= m_far && eye[0] >= m_left * spread
           && eye[0] <= m_rightEdge * spread && eye[1] >= m_bottom * spread
           && eye[1] <= m_top * spread;
}

bool SbViewVolume::intersect(const SbBox3f& box) const
{
    if (box.isEmpty()) {
        return false;
    }
    for (const SbPlane& plane : getPlanes()) {
        const SbVec3f& n = plane.getNormal();
        const SbVec3f inmost =
            box.getCorner((n[0] > 0 ? 1 : 0) | (n[1] > 0 ? 2 : 0) | (n[2] > 0 ? 4 : 0));
        if (!plane.isInHalfSpace(inmost)) {
            return false;
        }
    }
    return getBoundingBox().intersect(box);
}

SbBox3f SbViewVolume::getBoundingBox() const
{
    SbBox3f box;
    for (int i = 0; i < 8; ++i) {
        box.extendBy(SbVec3f(onScreen(i & 1, (i >> 1) & 1, i & 4 ? m_far : m_near)));
    }
    return box;
}

bool operator==(const SbViewVolume& a, const SbViewVolume& b)
{
    return a.m_type == b.m_type && a.m_origin == b.m_origin && a.m_right == b.m_right
           && a.m_up == b.m_up && a.m_back == b.m_back && a.m_left == b.m_left
           && a.m_rightEdge == b.m_rightEdge && a.m_bottom == b.m_bottom && a.m_top == b.m_top
           && a.m_near == b.m_near && a.m_far == b.m_far;
}
