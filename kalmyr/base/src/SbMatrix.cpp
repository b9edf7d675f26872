#include <kalmyr/base/SbMatrix.h>

#include <kalmyr/base/SoContract.h>

#include <kalmyr/base/SbRotation.h>

#include "Polar.h"

#include <algorithm>
#include <cmath>
#include <utility>

using kalmyr::detail::Mat3d;

namespace {

// A determinant below this part of the product of the row lengths is rounding noise even in double.
constexpr double kSingularRatio = 1e-14;

Mat3d linearPart(const SbMatrix& m)
{
    Mat3d r;
    for (int i = 0; i < 3; ++i) {
        std::copy(m[i], m[i] + 3, r[i].begin());
    }
    return r;
}

void setLinearPart(SbMatrix& m, const Mat3d& a)
{
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            m[i][j] = static_cast<float>(a[i][j]);
        }
    }
}

Mat3d rotationMatrix(const SbRotation& rotation)
{
    const float* q = rotation.getValue();
    const double x = q[0];
    const double y = q[1];
    const double z = q[2];
    const double w = q[3];
    return {{{1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)},
             {2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)},
             {2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)}}};
}

// a scaled along its own axes, seen from those of `orientation`: orientation^T * s * orientation.
Mat3d orientedScale(const SbVec3f& s, const SbRotation& orientation)
{
    if (orientation == SbRotation()) {
        return {{{s[0], 0, 0}, {0, s[1], 0}, {0, 0, s[2]}}};
    }
    const Mat3d o = rotationMatrix(orientation);
    Mat3d r{};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            for (int k = 0; k < 3; ++k) {
                r[i][j] += o[k][i] * s[k] * o[k][j];
            }
        }
    }
    return r;
}

bool isSingular(double determinant, double bound)
{
    return !(std::fabs(determinant) > kSingularRatio * bound) || !std::isfinite(determinant);
}

bool invertAffine(const SbMatrix& m, SbMatrix& out)
{
    const Mat3d a = linearPart(m);
    const double det = kalmyr::detail::determinant(a);
    double bound = 1;
    for (const auto& row : a) {
        bound *= std::hypot(row[0], row[1], row[2]);
    }
    if (isSingular(det, bound)) {
        return false;
    }
    Mat3d inv;
    for (int i = 0; i < 3; ++i) {
        const int i1 = (i + 1) % 3;
        const int i2 = (i + 2) % 3;
        for (int j = 0; j < 3; ++j) {
            const int j1 = (j + 1) % 3;
            const int j2 = (j + 2) % 3;
            inv[i][j] = (a[j1][i1] * a[j2][i2] - a[j1][i2] * a[j2][i1]) / det;
        }
    }
    out.makeIdentity();
    setLinearPart(out, inv);
    for (int j = 0; j < 3; ++j) {
        out[3][j] =
            static_cast<float>(-(m[3][0] * inv[0][j] + m[3][1] * inv[1][j] + m[3][2] * inv[2][j]));
    }
    return true;
}

// Gauss-Jordan elimination with row pivots. Leaves the inverse in the right half and returns the
// determinant.
double eliminate(double (&m)[4][8])
{
    double det = 1;
    for (int column = 0; column < 4; ++column) {
        int pivot = column;
        for (int row = column + 1; row < 4; ++row) {
            pivot = std::fabs(m[row][column]) > std::fabs(m[pivot][column]) ? row : pivot;
        }
        if (pivot != column) {
            std::swap(m[pivot], m[column]);
            det = -det;
        }
        const double value = m[column][column];
        det *= value;
        if (value == 0 || !std::isfinite(value)) {
            return value == 0 ? 0 : det;
        }
        for (double& x : m[column]) {
            x /= value;
        }
        for (int row = 0; row < 4; ++row) {
            const double factor = m[row][column];
            for (int k = 0; row != column && k < 8; ++k) {
                m[row][k] -= factor * m[column][k];
            }
        }
    }
    return det;
}

double loadWithIdentity(const SbMatrix& m, double (&work)[4][8])
{
    double bound = 1;
    for (int i = 0; i < 4; ++i) {
        double sum = 0;
        for (int j = 0; j < 4; ++j) {
            work[i][j] = m[i][j];
            work[i][j + 4] = i == j;
            sum += work[i][j] * work[i][j];
        }
        bound *= std::sqrt(sum);
    }
    return bound;
}

bool invertGeneral(const SbMatrix& m, SbMatrix& out)
{
    double work[4][8];
    const double bound = loadWithIdentity(m, work);
    if (isSingular(eliminate(work), bound)) {
        return false;
    }
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            out[i][j] = static_cast<float>(work[i][j + 4]);
        }
    }
    return true;
}

bool isFinite(const SbMatrix& m)
{
    return std::all_of(&m[0][0], &m[0][0] + 16, [](float v) { return std::isfinite(v); });
}

} // namespace

bool SbMatrix::isIdentity() const
{
    return *this == SbMatrix();
}

void SbMatrix::setValue(const float* values)
{
    if (!kalmyr::holds(values, "16 values"))
        return;
    std::copy(values, values + 16, &m_v[0][0]);
}

void SbMatrix::getValue(Values& out) const
{
    std::copy(&m_v[0][0], &m_v[0][0] + 16, &out[0][0]);
}

void SbMatrix::setTranslate(const SbVec3f& t)
{
    makeIdentity();
    std::copy(t.getValue(), t.getValue() + 3, m_v[3]);
}

void SbMatrix::setScale(float s)
{
    setScale(SbVec3f(s, s, s));
}

void SbMatrix::setScale(const SbVec3f& s)
{
    makeIdentity();
    for (int i = 0; i < 3; ++i) {
        m_v[i][i] = s[i];
    }
}

void SbMatrix::setRotate(const SbRotation& r)
{
    makeIdentity();
    setLinearPart(*this, rotationMatrix(r));
}

void SbMatrix::setTransform(const SbVec3f& t, const SbRotation& r, const SbVec3f& s,
                            const SbRotation& scaleOrientation, const SbVec3f& center)
{
    const Mat3d a = kalmyr::detail::multiply(orientedScale(s, scaleOrientation), rotationMatrix(r));
    makeIdentity();
    setLinearPart(*this, a);
    for (int j = 0; j < 3; ++j) {
        const double moved = center[0] * a[0][j] + center[1] * a[1][j] + center[2] * a[2][j];
        m_v[3][j] = static_cast<float>(center[j] - moved + t[j]);
    }
}

void SbMatrix::setTransform(const SbVec3f& t, const SbRotation& r, const SbVec3f& s,
                            const SbRotation& scaleOrientation)
{
    setTransform(t, r, s, scaleOrientation, SbVec3f());
}

void SbMatrix::setTransform(const SbVec3f& t, const SbRotation& r, const SbVec3f& s)
{
    setTransform(t, r, s, SbRotation(), SbVec3f());
}

bool SbMatrix::factor(SbMatrix& orientation, SbVec3f& scale, SbMatrix& rotation,
                      SbVec3f& translation) const
{
    orientation.makeIdentity();
    rotation.makeIdentity();
    scale.setValue(1, 1, 1);
    translation.setValue(0, 0, 0);
    if (!isAffine() || !isFinite(*this)) {
        return false;
    }
    const kalmyr::detail::Polar polar = kalmyr::detail::polarDecompose(linearPart(*this));
    setLinearPart(orientation, polar.orientation);
    setLinearPart(rotation, polar.rotation);
    scale = SbVec3f(SbVec3d(polar.scale.data()));
    translation.setValue(m_v[3]);
    return true;
}

bool SbMatrix::getTransform(SbVec3f& t, SbRotation& r, SbVec3f& s,
                            SbRotation& scaleOrientation) const
{
    return getTransform(t, r, s, scaleOrientation, SbVec3f());
}

bool SbMatrix::getTransform(SbVec3f& t, SbRotation& r, SbVec3f& s, SbRotation& scaleOrientation,
                            const SbVec3f& center) const
{
    SbMatrix orientation;
    SbMatrix rotation;
    const bool ok = factor(orientation, s, rotation, t);
    r.setValue(rotation);
    scaleOrientation.setValue(orientation);
    if (ok) {
        for (int j = 0; j < 3; ++j) {
            const double moved = double(center[0]) * m_v[0][j] + double(center[1]) * m_v[1][j]
                                 + double(center[2]) * m_v[2][j];
            t[j] = static_cast<float>(m_v[3][j] - center[j] + moved);
        }
    }
    return ok;
}

float SbMatrix::det3() const
{
    return static_cast<float>(kalmyr::detail::determinant(linearPart(*this)));
}

float SbMatrix::det4() const
{
    double work[4][8];
    loadWithIdentity(*this, work);
    return static_cast<float>(eliminate(work));
}

SbMatrix SbMatrix::transpose() const
{
    SbMatrix r;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            r.m_v[i][j] = m_v[j][i];
        }
    }
    return r;
}

SbMatrix SbMatrix::inverse(bool* invertible) const
{
    SbMatrix r;
    const bool ok = isAffine() ? invertAffine(*this, r) : invertGeneral(*this, r);
    if (invertible) {
        *invertible = ok;
    }
    return ok ? r : SbMatrix();
}

SbMatrix operator*(const SbMatrix& a, const SbMatrix& b)
{
    SbMatrix r;
    for (int i = 0; i < 4; ++i) {
        const float* row = a.m_v[i];
        for (int j = 0; j < 4; ++j) {
            r.m_v[i][j] = row[0] * b.m_v[0][j] + row[1] * b.m_v[1][j] + row[2] * b.m_v[2][j]
                          + row[3] * b.m_v[3][j];
        }
    }
    return r;
}

void SbMatrix::multVecMatrix(const SbVec3f& src, SbVec3f& dst) const
{
    const float x = src[0];
    const float y = src[1];
    const float z = src[2];
    for (int j = 0; j < 3; ++j) {
        dst[j] = x * m_v[0][j] + y * m_v[1][j] + z * m_v[2][j] + m_v[3][j];
    }
    const float w = x * m_v[0][3] + y * m_v[1][3] + z * m_v[2][3] + m_v[3][3];
    if (w != 1 && w != 0) {
        dst /= w;
    }
}

void SbMatrix::multVecMatrix(const SbVec4f& src, SbVec4f& dst) const
{
    const SbVec4f v = src;
    for (int j = 0; j < 4; ++j) {
        dst[j] = v[0] * m_v[0][j] + v[1] * m_v[1][j] + v[2] * m_v[2][j] + v[3] * m_v[3][j];
    }
}

void SbMatrix::multDirMatrix(const SbVec3f& src, SbVec3f& dst) const
{
    const SbVec3f v = src;
    for (int j = 0; j < 3; ++j) {
        dst[j] = v[0] * m_v[0][j] + v[1] * m_v[1][j] + v[2] * m_v[2][j];
    }
}

void SbMatrix::multMatrixVec(const SbVec3f& src, SbVec3f& dst) const
{
    transpose().multVecMatrix(src, dst);
}

bool SbMatrix::equals(const SbMatrix& o, float tolerance) const
{
    const auto isNear = [tolerance](float a, float b) { return std::fabs(a - b) <= tolerance; };
    for (int i = 0; i < 4; ++i) {
        if (!std::equal(m_v[i], m_v[i] + 4, o.m_v[i], isNear)) {
            return false;
        }
    }
    return true;
}

bool operator==(const SbMatrix& a, const SbMatrix& b)
{
    for (int i = 0; i < 4; ++i) {
        if (!std::equal(a.m_v[i], a.m_v[i] + 4, b.m_v[i])) {
            return false;
        }
    }
    return true;
}
