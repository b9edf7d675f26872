#include "Reference.h"

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbRotation.h>

#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr int kRounds = 500;
constexpr double kClose = 1e-5;

SbMatrix rebuilt(const SbMatrix& m, const SbVec3f& center = SbVec3f())
{
    SbVec3f t, s;
    SbRotation r, so;
    EXPECT_TRUE(m.getTransform(t, r, s, so, center));
    SbMatrix result;
    result.setTransform(t, r, s, so, center);
    return result;
}

SbMatrix randomGeneral(reference::Random& random)
{
    SbMatrix m;
    for (int i = 0; i < 16; ++i)
        m[i / 4][i % 4] = random.number(-2, 2) + (i % 5 == 0 ? 4.f : 0.f);
    return m;
}

} // namespace

TEST(SbMatrix, TransformComposesScaleRotationAndTranslationAboutTheCenter)
{
    reference::Random random(1);
    for (int i = 0; i < kRounds; ++i) {
        const SbVec3f t = random.vector(), s = random.vector(-4, 4), c = random.vector();
        const SbVec3f axis = random.axis(), soAxis = random.axis();
        const float angle = random.number(-6, 6), soAngle = random.number(-6, 6);
        using namespace reference;
        Matrix expected = translation(-c);
        for (const Matrix& step :
             {reference::rotation(soAxis, -soAngle), scaling(s),
              reference::rotation(soAxis, soAngle), reference::rotation(axis, angle),
              translation(c), translation(t)})
            expected = product(expected, step);
        SbMatrix m;
        m.setTransform(t, SbRotation(axis, angle), s, SbRotation(soAxis, soAngle), c);
        EXPECT_LT(difference(expected, m), kClose);
    }
}

TEST(SbMatrix, ProductAppliesTheLeftFactorFirst)
{
    reference::Random random(2);
    for (int i = 0; i < kRounds; ++i) {
        const SbMatrix a = random.affine(), b = randomGeneral(random);
        EXPECT_LT(reference::difference(reference::product(reference::from(a), reference::from(b)),
                                        a * b),
                  kClose);
        SbMatrix left = b, right = a;
        EXPECT_EQ(left.multLeft(a), a * b);
        EXPECT_EQ(right.multRight(b), a * b);
    }
}

TEST(SbMatrix, PointsAreDividedByWAndDirectionsIgnoreTranslation)
{
    reference::Random random(3);
    for (int i = 0; i < kRounds; ++i) {
        const SbMatrix m = randomGeneral(random);
        SbVec3f p = random.vector(-1, 1);
        const reference::Vector e = reference::applied({p[0], p[1], p[2], 1}, reference::from(m));
        if (std::fabs(e[3]) < 0.1)
            continue;
        const SbVec3f expected = SbVec3f(SbVec3d(e[0] / e[3], e[1] / e[3], e[2] / e[3]));
        const SbVec3f direction = m.direction(p);
        SbVec3f column;
        m.transpose().multMatrixVec(p, column);
        m.multVecMatrix(p, p);
        EXPECT_TRUE(p.equals(expected, 1e-4f));
        EXPECT_EQ(column, p);
        EXPECT_TRUE(direction.equals(
            SbVec3f(SbVec3d(e[0] - m[3][0], e[1] - m[3][1], e[2] - m[3][2])), 1e-5f));
    }
}

TEST(SbMatrix, InverseUndoesTheMatrix)
{
    reference::Random random(4);
    for (int i = 0; i < kRounds; ++i) {
        for (const SbMatrix& m : {random.affine(), randomGeneral(random)}) {
            bool invertible = false;
            const SbMatrix inverse = m.inverse(&invertible);
            if (std::fabs(m.det4()) < 1)
                continue;
            EXPECT_TRUE(invertible);
            const auto unit = reference::product(reference::from(m), reference::from(inverse));
            EXPECT_LT(reference::difference(unit, SbMatrix()), 1e-4);
            EXPECT_NEAR(m.det4() * inverse.det4(), 1, 1e-4);
        }
    }
    // Nothing but zeros on the diagonal.
    const SbMatrix swapped(0, 2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 1, 0, 0, 0);
    EXPECT_EQ(swapped.det4(), -64);
    EXPECT_EQ(swapped.inverse(),
              SbMatrix(0, 0, 0, 1, 0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0.125f, 0));
}

TEST(SbMatrix, InverseKnowsSingularMatricesAtAnyScale)
{
    SbMatrix tiny;
    tiny.setScale(1e-12f);
    bool invertible = false;
    EXPECT_FLOAT_EQ(tiny.inverse(&invertible)[0][0], 1e12f);
    EXPECT_TRUE(invertible);
    for (const SbVec3f& s : {SbVec3f(1, 0, 1), SbVec3f(0, 0, 0), SbVec3f(NAN, 1, 1)}) {
        SbMatrix flat;
        flat.setScale(s);
        EXPECT_TRUE(flat.inverse(&invertible).isIdentity());
        EXPECT_FALSE(invertible);
        flat[2][3] = 1;
        flat.inverse(&invertible);
        EXPECT_FALSE(invertible);
    }
}

TEST(SbMatrix, FactorsGiveTheMatrixBack)
{
    reference::Random random(5);
    for (int i = 0; i < kRounds; ++i) {
        SbMatrix m = random.affine();
        const SbVec3f mirror(i & 1 ? -1.f : 1.f, i & 2 ? -1.f : 1.f, i & 4 ? -1.f : 1.f);
        SbMatrix scale;
        scale.setScale(mirror);
        m.multLeft(scale);
        EXPECT_LT(reference::difference(reference::from(m), rebuilt(m)), 3e-5) << i;
        EXPECT_LT(reference::difference(reference::from(m), rebuilt(m, random.vector())), 3e-5)
            << i;
    }
}

TEST(SbMatrix, FactorsOfSingularMatricesGiveTheMatrixBack)
{
    reference::Random random(6);
    for (int i = 0; i < kRounds; ++i) {
        SbMatrix m;
        const SbVec3f s(i % 2 ? 0.f : 2.f, i / 2 % 2 ? 0.f : 3.f, i / 4 % 2 ? 0.f : -1.f);
        m.setTransform(random.vector(), random.rotation(), s, random.rotation());
        EXPECT_LT(reference::difference(reference::from(m), rebuilt(m)), kClose) << i;
    }
}

TEST(SbMatrix, FactorsOfPlainTransformsAreThoseThatMadeThem)
{
    reference::Random random(7);
    for (int i = 0; i < kRounds; ++i) {
        const SbVec3f t = random.vector(), s = i % 2 ? SbVec3f(2, 2, 2) : random.vector(0.2, 5);
        const SbRotation r = random.rotation();
        SbMatrix m;
        m.setTransform(t, r, s);
        SbVec3f t2, s2;
        SbRotation r2, so2;
        ASSERT_TRUE(m.getTransform(t2, r2, s2, so2));
        EXPECT_EQ(t2, t);
        EXPECT_TRUE(r2.equals(r, 1e-5f));
        EXPECT_TRUE(s2.equals(s, 1e-5f));
        EXPECT_EQ(so2, SbRotation());
    }
    SbMatrix mirror;
    mirror.setScale(SbVec3f(1, 1, -3));
    SbVec3f t, s;
    SbRotation r, so;
    ASSERT_TRUE(mirror.getTransform(t, r, s, so));
    EXPECT_EQ(s, SbVec3f(1, 1, -3));
    EXPECT_EQ(r, SbRotation());
}

TEST(SbMatrix, RefusesToFactorWhatIsNotAffine)
{
    SbVec3f t, s;
    SbRotation r, so;
    SbMatrix projective;
    projective[0][3] = 1;
    EXPECT_FALSE(projective.getTransform(t, r, s, so));
    EXPECT_EQ(s, SbVec3f(1, 1, 1));
    SbMatrix broken;
    broken[1][1] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(broken.getTransform(t, r, s, so));
}

TEST(SbRotation, AgreesWithItsMatrixAndItsAxisAndAngle)
{
    reference::Random random(8);
    for (int i = 0; i < kRounds; ++i) {
        const SbVec3f axis = random.axis();
        const float angle = random.number(-6, 6);
        const SbRotation r(axis, angle);
        SbMatrix m;
        r.getValue(m);
        EXPECT_LT(reference::difference(reference::rotation(axis, angle), m), 1e-6);
        EXPECT_TRUE(SbRotation(m).equals(r, 1e-5f));
        SbVec3f readAxis;
        float readAngle;
        r.getValue(readAxis, readAngle);
        EXPECT_TRUE(readAngle >= 0 && readAngle <= 6.2832f);
        EXPECT_TRUE(SbRotation(readAxis, readAngle).equals(r, 1e-6f));
        const SbVec3f v = random.vector();
        EXPECT_TRUE(r.rotated(v).equals(m.direction(v), 1e-5f));
        EXPECT_TRUE(r.inverse().rotated(r.rotated(v)).equals(v, 1e-5f));
    }
}

TEST(SbRotation, ProductAppliesTheLeftFactorFirst)
{
    reference::Random random(9);
    for (int i = 0; i < kRounds; ++i) {
        const SbRotation a = random.rotation(), b = random.rotation();
        const SbVec3f v = random.vector();
        EXPECT_TRUE((a * b).rotated(v).equals(b.rotated(a.rotated(v)), 1e-4f));
    }
}

TEST(SbRotation, TurnsOneDirectionIntoAnother)
{
    reference::Random random(10);
    for (int i = 0; i < kRounds; ++i) {
        const SbVec3f from = random.axis();
        const SbVec3f to = i % 3 == 0 ? -from : i % 3 == 1 ? from * 7 : random.axis();
        EXPECT_TRUE(SbRotation(from, to).rotated(from.normalized()).equals(to.normalized(), 2e-6f))
            << i;
    }
    // Nearly opposite: the axis must still come out right.
    const SbVec3f x(1, 0, 0), almost(-1, 1e-6f, 0);
    EXPECT_TRUE(SbRotation(x, almost).rotated(x).equals(almost, 1e-7f));
}

TEST(SbRotation, DegenerateInputGivesNoRotation)
{
    EXPECT_EQ(SbRotation(SbVec3f(0, 0, 0), 1), SbRotation());
    EXPECT_EQ(SbRotation(SbVec3f(0, 0, 0), SbVec3f(1, 0, 0)), SbRotation());
    EXPECT_EQ(SbRotation(0, 0, 0, 0), SbRotation());
    EXPECT_EQ(SbRotation(SbVec3f(0, 0, 1), INFINITY), SbRotation());
    SbVec3f axis;
    float angle;
    SbRotation().getValue(axis, angle);
    EXPECT_EQ(axis, SbVec3f(0, 0, 1));
    EXPECT_EQ(angle, 0);
}

TEST(SbRotation, SettingItsOwnQuaternionChangesNothing)
{
    reference::Random random(11);
    for (int i = 0; i < kRounds; ++i) {
        const SbRotation r = random.rotation();
        EXPECT_EQ(SbRotation(r.getValue()), r);
    }
}

TEST(SbRotation, SlerpTurnsEvenlyTheShorterWay)
{
    reference::Random random(12);
    for (int i = 0; i < kRounds; ++i) {
        const SbRotation a = random.rotation();
        const SbVec3f axis = random.axis();
        const float angle = i % 5 == 0 ? 1e-5f : random.number(-3, 3);
        const SbRotation b = a * SbRotation(axis, angle);
        const float t = random.number(0, 1);
        EXPECT_TRUE(SbRotation::slerp(a, b, t).equals(a * SbRotation(axis, angle * t), 1e-5f)) << i;
        EXPECT_TRUE(SbRotation::slerp(a, b, 1).equals(b, 1e-6f));
        SbRotation half(axis, angle);
        half.scaleAngle(0.5f);
        EXPECT_TRUE(half.equals(SbRotation(axis, angle / 2), 1e-5f));
    }
}
