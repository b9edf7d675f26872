#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>

#include <limits>

/// An axis-parallel box in N dimensions, closed. A box whose minimum exceeds its maximum is empty;
/// a new box is empty, and extending it starts at the first point.
template <typename T, int N>
class SbBox {
public:
    using Vec = SbVec<T, N>;

    constexpr SbBox() { makeEmpty(); }
    constexpr SbBox(const Vec& min, const Vec& max) : m_min(min), m_max(max) {}

    constexpr void setBounds(const Vec& min, const Vec& max)
    {
        m_min = min;
        m_max = max;
    }
    constexpr void getBounds(Vec& min, Vec& max) const
    {
        min = m_min;
        max = m_max;
    }
    constexpr const Vec& getMin() const { return m_min; }
    constexpr const Vec& getMax() const { return m_max; }

    constexpr void makeEmpty()
    {
        for (int i = 0; i < N; ++i) {
            m_min[i] = std::numeric_limits<T>::max();
            m_max[i] = std::numeric_limits<T>::lowest();
        }
    }
    constexpr bool isEmpty() const
    {
        for (int i = 0; i < N; ++i) {
            if (!(m_min[i] <= m_max[i])) {
                return true;
            }
        }
        return false;
    }

    /// Points that are not a number are ignored, component by component.
    constexpr void extendBy(const Vec& p)
    {
        for (int i = 0; i < N; ++i) {
            m_min[i] = p[i] < m_min[i] ? p[i] : m_min[i];
            m_max[i] = p[i] > m_max[i] ? p[i] : m_max[i];
        }
    }
    constexpr void extendBy(const SbBox& box)
    {
        if (!box.isEmpty()) {
            extendBy(box.m_min);
            extendBy(box.m_max);
        }
    }

    /// Whether a point lies inside or on the border.
    constexpr bool intersect(const Vec& p) const
    {
        for (int i = 0; i < N; ++i) {
            if (!(p[i] >= m_min[i] && p[i] <= m_max[i])) {
                return false;
            }
        }
        return true;
    }
    /// Whether two boxes have a point in common.
    constexpr bool intersect(const SbBox& box) const
    {
        for (int i = 0; i < N; ++i) {
            if (!(box.m_max[i] >= m_min[i] && box.m_min[i] <= m_max[i])) {
                return false;
            }
        }
        return !isEmpty() && !box.isEmpty();
    }

    /// The middle; the origin for an empty box.
    constexpr Vec getCenter() const
    {
        Vec c;
        if (!isEmpty()) {
            for (int i = 0; i < N; ++i) {
                c[i] = static_cast<T>(m_min[i] / 2 + m_max[i] / 2);
                if constexpr (!std::is_floating_point_v<T>) {
                    c[i] = static_cast<T>((static_cast<long long>(m_min[i]) + m_max[i]) / 2);
                }
            }
        }
        return c;
    }
    /// The edge lengths; zero for an empty box.
    constexpr Vec getSize() const { return isEmpty() ? Vec() : m_max - m_min; }
    /// The point of the box that is nearest to `p`.
    constexpr Vec getClosestPoint(const Vec& p) const
    {
        Vec c = p;
        for (int i = 0; i < N; ++i) {
            c[i] = c[i] < m_min[i] ? m_min[i] : (c[i] > m_max[i] ? m_max[i] : c[i]);
        }
        return c;
    }

    friend constexpr bool operator==(const SbBox& a, const SbBox& b)
    {
        return a.m_min == b.m_min && a.m_max == b.m_max;
    }

protected:
    Vec m_min;
    Vec m_max;
};

using SbBox2f = SbBox<float, 2>;
using SbBox2d = SbBox<double, 2>;
using SbBox2s = SbBox<short, 2>;
using SbBox2i32 = SbBox<std::int32_t, 2>;
using SbBox3d = SbBox<double, 3>;
using SbBox3s = SbBox<short, 3>;
using SbBox3i32 = SbBox<std::int32_t, 3>;

/// The box of scene geometry.
class SbBox3f : public SbBox<float, 3> {
public:
    constexpr SbBox3f() = default;
    constexpr SbBox3f(const SbBox<float, 3>& box) : SbBox<float, 3>(box) {}
    constexpr SbBox3f(const SbVec3f& min, const SbVec3f& max) : SbBox<float, 3>(min, max) {}
    constexpr SbBox3f(float xmin, float ymin, float zmin, float xmax, float ymax, float zmax)
        : SbBox<float, 3>({xmin, ymin, zmin}, {xmax, ymax, zmax})
    {
    }

    /// 0 for an empty box.
    constexpr float getVolume() const
    {
        const SbVec3f s = getSize();
        return s[0] * s[1] * s[2];
    }
    /// Becomes the axis-parallel box of the transformed box; an empty one stays empty.
    /// When a projective matrix sends part of the box through infinity the result is all space.
    KALMYRBASE_API void transform(const SbMatrix& m);
    /// The interval that the box covers along a direction of any length, in units of that length.
    KALMYRBASE_API void getSpan(const SbVec3f& direction, float& min, float& max) const;
    /// Corner 0 to 7: bits 0, 1, 2 choose maximum x, y, z.
    constexpr SbVec3f getCorner(int i) const
    {
        return {(i & 1 ? m_max : m_min)[0], (i & 2 ? m_max : m_min)[1], (i & 4 ? m_max : m_min)[2]};
    }
};

/// A box together with the transformation from its own space to the surrounding one.
/// Keeps boxes tight under rotation until a plain one is asked for.
class SbXfBox3f : public SbBox3f {
public:
    SbXfBox3f() = default;
    SbXfBox3f(const SbVec3f& min, const SbVec3f& max) : SbBox3f(min, max) {}
    SbXfBox3f(const SbBox3f& box) : SbBox3f(box) {}
    SbXfBox3f(const SbBox3f& box, const SbMatrix& transform) : SbBox3f(box)
    {
        setTransform(transform);
    }

    KALMYRBASE_API void setTransform(const SbMatrix& m);
    const SbMatrix& getTransform() const { return m_matrix; }
    /// The identity when the transformation has no inverse.
    const SbMatrix& getInverse() const { return m_inverse; }
    /// Appends a transformation.
    void transform(const SbMatrix& m) { setTransform(m_matrix * m); }

    /// Grows by a point or box of the surrounding space. The box stays in its own space unless its
    /// transformation has no inverse or the surrounding axes give a smaller box.
    KALMYRBASE_API void extendBy(const SbVec3f& p);
    KALMYRBASE_API void extendBy(const SbBox3f& box);
    KALMYRBASE_API void extendBy(const SbXfBox3f& box);

    /// Whether a point of the surrounding space is inside.
    KALMYRBASE_API bool intersect(const SbVec3f& p) const;
    /// Whether a box of the surrounding space has a point in common with this one.
    KALMYRBASE_API bool intersect(const SbBox3f& box) const;
    KALMYRBASE_API void getSpan(const SbVec3f& direction, float& min, float& max) const;
    /// The middle, in the surrounding space.
    SbVec3f getCenter() const { return m_matrix.point(SbBox3f::getCenter()); }
    /// The axis-parallel box in the surrounding space.
    KALMYRBASE_API SbBox3f project() const;

    friend bool operator==(const SbXfBox3f& a, const SbXfBox3f& b)
    {
        return static_cast<const SbBox3f&>(a) == static_cast<const SbBox3f&>(b)
               && a.m_matrix == b.m_matrix;
    }

private:
    void flatten(const SbBox3f& add);

    SbMatrix m_matrix;
    SbMatrix m_inverse;
    bool m_invertible = true;
};
