#include <kalmyr/base/SbBox.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kLargest = std::numeric_limits<float>::max();

float toFloatRange(double v)
{
    return static_cast<float>(std::clamp(v, -kLargest, kLargest));
}

// Each output axis takes the smaller product for the minimum and the larger one for the maximum.
SbBox3f transformAffine(const SbBox3f& box, const SbMatrix& m)
{
    SbBox3f result;
    SbVec3f min;
    SbVec3f max;
    for (int j = 0; j < 3; ++j) {
        double low = m[3][j];
        double high = m[3][j];
        for (int i = 0; i < 3; ++i) {
            const double a = double(box.getMin()[i]) * m[i][j];
            const double b = double(box.getMax()[i]) * m[i][j];
            low += a < b ? a : b;
            high += a < b ? b : a;
        }
        min[j] = toFloatRange(low);
        max[j] = toFloatRange(high);
    }
    result.setBounds(min, max);
    return result;
}

SbBox3f allSpace()
{
    constexpr float kEnd = std::numeric_limits<float>::max();
    return {-kEnd, -kEnd, -kEnd, kEnd, kEnd, kEnd};
}

SbBox3f transformProjective(const SbBox3f& box, const SbMatrix& m)
{
    SbBox3f result;
    bool front = false;
    bool behind = false;
    for (int i = 0; i < 8; ++i) {
        SbVec4f p(box.getCorner(i), 1.f);
        m.multVecMatrix(p, p);
        front = front || p[3] > 0;
        behind = behind || p[3] < 0;
        if (p[3] == 0 || (front && behind)) {
            return allSpace();
        }
        result.extendBy(SbVec3f(p[0] / p[3], p[1] / p[3], p[2] / p[3]));
    }
    return result;
}

double worldVolume(const SbBox3f& box, const SbMatrix& m)
{
    return std::fabs(double(box.getVolume()) * m.det3());
}

// Whether the extents of two convex bodies on an axis have a gap between them. Each body is a
// centre and three half edges.
struct Body {
    SbVec3d center;
    SbVec3d edge[3];

    explicit Body(const SbBox3f& box, const SbMatrix& m)
    {
        center = SbVec3d(m.point(box.SbBox<float, 3>::getCenter()));
        for (int i = 0; i < 3; ++i) {
            SbVec3f e;
            e[i] = box.getSize()[i] / 2;
            edge[i] = SbVec3d(m.direction(e));
        }
    }

    double extent(const SbVec3d& axis) const
    {
        return std::fabs(edge[0].dot(axis)) + std::fabs(edge[1].dot(axis))
               + std::fabs(edge[2].dot(axis));
    }
};

bool isApart(const Body& a, const Body& b, const SbVec3d& axis)
{
    const double gap = std::fabs((a.center - b.center).dot(axis));
    const double reach = a.extent(axis) + b.extent(axis);
    return gap > reach * (1 + 1e-9);
}

} // namespace

void SbBox3f::transform(const SbMatrix& m)
{
    if (!isEmpty()) {
        *this = m.isAffine() ? transformAffine(*this, m) : transformProjective(*this, m);
    }
}

void SbBox3f::getSpan(const SbVec3f& direction, float& min, float& max) const
{
    min = 0;
    max = 0;
    for (int i = 0; i < 3 && !isEmpty(); ++i) {
        const float a = direction[i] * m_min[i];
        const float b = direction[i] * m_max[i];
        min += std::min(a, b);
        max += std::max(a, b);
    }
}

void SbXfBox3f::setTransform(const SbMatrix& m)
{
    m_matrix = m;
    m_inverse = m.inverse(&m_invertible);
}

SbBox3f SbXfBox3f::project() const
{
    SbBox3f box(*this);
    box.transform(m_matrix);
    return box;
}

void SbXfBox3f::flatten(const SbBox3f& add)
{
    SbBox3f box = project();
    box.extendBy(add);
    *this = SbXfBox3f(box);
}

void SbXfBox3f::extendBy(const SbVec3f& p)
{
    if (isEmpty() || !m_invertible) {
        flatten(SbBox3f(p, p));
    } else {
        SbBox3f::extendBy(m_inverse.point(p));
    }
}

void SbXfBox3f::extendBy(const SbBox3f& box)
{
    if (!box.isEmpty()) {
        extendBy(SbXfBox3f(box, SbMatrix()));
    }
}

void SbXfBox3f::extendBy(const SbXfBox3f& box)
{
    if (box.isEmpty()) {
        return;
    }
    if (isEmpty()) {
        *this = box;
        return;
    }
    // In the surrounding axes, in my axes, in the other's axes: the smallest wins.
    SbXfBox3f best(project(), SbMatrix());
    best.SbBox3f::extendBy(box.project());
    const auto tryAxes = [&best](const SbXfBox3f& host, const SbXfBox3f& guest) {
        SbBox3f local(guest);
        local.transform(guest.m_matrix * host.m_inverse);
        local.extendBy(host);
        if (host.m_invertible
            && worldVolume(local, host.m_matrix) < worldVolume(best, best.m_matrix)) {
            static_cast<SbBox3f&>(best) = local;
            best.setTransform(host.m_matrix);
        }
    };
    tryAxes(*this, box);
    tryAxes(box, *this);
    *this = best;
}

bool SbXfBox3f::intersect(const SbVec3f& p) const
{
    return m_invertible ? SbBox3f::intersect(m_inverse.point(p)) : project().intersect(p);
}

bool SbXfBox3f::intersect(const SbBox3f& box) const
{
    if (isEmpty() || box.isEmpty()) {
        return false;
    }
    const Body mine(*this, m_matrix);
    const Body other(box, SbMatrix());
    for (int i = 0; i < 3; ++i) {
        SbVec3d axis;
        axis[i] = 1;
        const SbVec3d face = mine.edge[i].cross(mine.edge[(i + 1) % 3]);
        if (isApart(mine, other, axis) || isApart(mine, other, face)) {
            return false;
        }
        for (const SbVec3d& edge : mine.edge) {
            if (isApart(mine, other, axis.cross(edge))) {
                return false;
            }
        }
    }
    return true;
}

void SbXfBox3f::getSpan(const SbVec3f& direction, float& min, float& max) const
{
    if (isEmpty()) {
        min = 0;
        max = 0;
        return;
    }
    min = std::numeric_limits<float>::max();
    max = std::numeric_limits<float>::lowest();
    for (int i = 0; i < 8; ++i) {
        const float along = m_matrix.point(getCorner(i)).dot(direction);
        min = std::min(min, along);
        max = std::max(max, along);
    }
}
