#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

class SbRotation;

/// A 4x4 matrix of floats for row vectors: a point is transformed by `point * matrix`, a
/// translation stands in row 3, and in `a * b` the transformation a happens first. Products and
/// inverses are computed in double where cancellation would hurt.
class SbMatrix {
public:
    using Values = float[4][4];

    /// The identity.
    constexpr SbMatrix() : m_v{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}} {}
    /// Row by row.
    constexpr SbMatrix(float a11, float a12, float a13, float a14, float a21, float a22, float a23,
                       float a24, float a31, float a32, float a33, float a34, float a41, float a42,
                       float a43, float a44)
        : m_v{
            {a11, a12, a13, a14}, {a21, a22, a23, a24}, {a31, a32, a33, a34}, {a41, a42, a43, a44}}
    {
    }
    explicit SbMatrix(const Values& values) { setValue(&values[0][0]); }
    /// Copies 16 values, row by row; the identity, with an error posted, without values.
    explicit SbMatrix(const float* values) : SbMatrix() { setValue(values); }

    static constexpr SbMatrix identity() { return SbMatrix(); }
    constexpr void makeIdentity() { *this = SbMatrix(); }
    KALMYRBASE_API bool isIdentity() const;

    /// Copies 16 values, row by row. Nothing changes, and an error is posted, without values.
    KALMYRBASE_API void setValue(const float* values);
    /// The four rows, contiguous.
    constexpr const Values& getValue() const { return m_v; }
    KALMYRBASE_API void getValue(Values& out) const;
    /// A row, 0 <= row < 4; unchecked, as the components of vectors are.
    constexpr float* operator[](int row) { return m_v[row]; }
    constexpr const float* operator[](int row) const { return m_v[row]; }
    constexpr operator const Values&() const { return m_v; }

    /// Each of these replaces the whole matrix.
    KALMYRBASE_API void setTranslate(const SbVec3f& t);
    KALMYRBASE_API void setScale(float s);
    KALMYRBASE_API void setScale(const SbVec3f& s);
    KALMYRBASE_API void setRotate(const SbRotation& r);
    /// Moves `center` to the origin, scales by `s` along the axes of `scaleOrientation`, rotates,
    /// moves back, translates; in this order.
    KALMYRBASE_API void setTransform(const SbVec3f& t, const SbRotation& r, const SbVec3f& s,
                                     const SbRotation& scaleOrientation, const SbVec3f& center);
    KALMYRBASE_API void setTransform(const SbVec3f& t, const SbRotation& r, const SbVec3f& s,
                                     const SbRotation& scaleOrientation);
    KALMYRBASE_API void setTransform(const SbVec3f& t, const SbRotation& r, const SbVec3f& s);

    /// Splits the affine part so that setTransform() with the results gives it back; works for
    /// singular and mirroring matrices too. Mirroring shows as negative scale factors. False when
    /// the matrix is projective or has values that are not finite; the results are then those of
    /// the identity.
    KALMYRBASE_API bool getTransform(SbVec3f& t, SbRotation& r, SbVec3f& s,
                                     SbRotation& scaleOrientation) const;
    KALMYRBASE_API bool getTransform(SbVec3f& t, SbRotation& r, SbVec3f& s,
                                     SbRotation& scaleOrientation, const SbVec3f& center) const;
    /// As getTransform(), as matrices: this = inverse(orientation) * scale * orientation * rotation
    /// * translation.
    KALMYRBASE_API bool factor(SbMatrix& orientation, SbVec3f& scale, SbMatrix& rotation,
                               SbVec3f& translation) const;

    KALMYRBASE_API float det3() const;
    KALMYRBASE_API float det4() const;
    KALMYRBASE_API SbMatrix transpose() const;
    /// The inverse, or the identity when there is none; `invertible` then becomes false.
    KALMYRBASE_API SbMatrix inverse(bool* invertible = nullptr) const;
    /// True when the last column is 0 0 0 1, so that no division by w is needed.
    constexpr bool isAffine() const
    {
        return m_v[0][3] == 0 && m_v[1][3] == 0 && m_v[2][3] == 0 && m_v[3][3] == 1;
    }

    /// this = m * this: m happens before what this matrix does.
    SbMatrix& multLeft(const SbMatrix& m) { return *this = m * *this; }
    /// this = this * m: m happens after what this matrix does.
    SbMatrix& multRight(const SbMatrix& m) { return *this = *this * m; }
    SbMatrix& operator*=(const SbMatrix& m) { return multRight(m); }
    KALMYRBASE_API friend SbMatrix operator*(const SbMatrix& a, const SbMatrix& b);

    /// dst = src * this, divided by w. `src` and `dst` may be the same. A w of 0 is not divided by.
    KALMYRBASE_API void multVecMatrix(const SbVec3f& src, SbVec3f& dst) const;
    /// dst = src * this without any division.
    KALMYRBASE_API void multVecMatrix(const SbVec4f& src, SbVec4f& dst) const;
    /// dst = src * this for a direction: rows 0 to 2 only.
    KALMYRBASE_API void multDirMatrix(const SbVec3f& src, SbVec3f& dst) const;
    /// dst = this * src, src being a column, divided by w.
    KALMYRBASE_API void multMatrixVec(const SbVec3f& src, SbVec3f& dst) const;

    /// The transformed point.
    SbVec3f point(const SbVec3f& src) const
    {
        SbVec3f r;
        multVecMatrix(src, r);
        return r;
    }
    /// The transformed direction.
    SbVec3f direction(const SbVec3f& src) const
    {
        SbVec3f r;
        multDirMatrix(src, r);
        return r;
    }

    /// True when no value differs by more than `tolerance`.
    KALMYRBASE_API bool equals(const SbMatrix& o, float tolerance) const;
    KALMYRBASE_API friend bool operator==(const SbMatrix& a, const SbMatrix& b);

private:
    float m_v[4][4];
};
