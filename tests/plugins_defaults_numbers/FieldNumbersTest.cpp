#include "mirabo/plugins/defaults/FieldNumbers.h"

#include "EditSupport.h"
#include "mirabo/plugins/defaults/NumberText.h"

#include <kalmyr/io/SoDB.h>

#include <QStringList>

#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include <gtest/gtest.h>

using Kind = FieldNumbers::Kind;

namespace {

constexpr const char* kTypes[] = {"Int32",   "UInt32", "Short",     "UShort", "Float",    "Double",
                                  "Time",    "Vec2f",  "Vec3f",     "Vec4f",  "Vec2d",    "Vec3d",
                                  "Vec4d",   "Vec2s",  "Vec3s",     "Vec4s",  "Vec2i32",  "Vec3i32",
                                  "Vec4i32", "Color",  "ColorRGBA", "Plane",  "Rotation", "Matrix",
                                  "Box2f",   "Box2s",  "Box3f",     "Box3s"};

std::unique_ptr<SoField> makeField(const std::string& name)
{
    const SoType type = SoType::fromName(SbName(name.c_str()));
    if (type.isBad() || !type.canCreateInstance())
        return nullptr; // there are no lists of boxes
    return std::unique_ptr<SoField>(static_cast<SoField*>(type.createInstance()));
}

/// Every field type with numbers, multiple-value fields with three values.
class FieldNumbersTest : public ::testing::TestWithParam<const char*> {
protected:
    FieldNumbersTest()
    {
        SoDB::init();
        for (const char* prefix : {"SF", "MF"})
            if (std::unique_ptr<SoField> field = makeField(std::string(prefix) + GetParam())) {
                if (auto* multiple = dynamic_cast<SoMField*>(field.get()))
                    multiple->setNum(3);
                m_fields.push_back(std::move(field));
            }
    }

    static const FieldNumbers& numbersOf(const SoField& field)
    {
        return *FieldNumbers::of(field.getTypeId());
    }
    static int lastIndex(const SoField& field)
    {
        const auto* multiple = dynamic_cast<const SoMField*>(&field);
        return multiple ? multiple->getNum() - 1 : 0;
    }
    /// What is always a value: a direction of length 1 where one is needed.
    static std::vector<double> someNumbers(const FieldNumbers& numbers)
    {
        std::vector<double> some;
        for (int i = 0; i < numbers.count(); ++i)
            some.push_back(i + 2);
        const QString name = GetParam();
        if (name == "Plane" || name == "Rotation")
            some = {0, 1, 0, 1.5};
        return some;
    }

    std::vector<std::unique_ptr<SoField>> m_fields;
};

} // namespace

TEST_P(FieldNumbersTest, WritesAndReadsAllNumbers)
{
    for (const auto& field : m_fields) {
        const FieldNumbers& numbers = numbersOf(*field);
        const int last = lastIndex(*field);
        const std::vector<double> written = someNumbers(numbers);
        ASSERT_TRUE(numbers.setAll(*field, last, written.data()));
        std::vector<double> read(written.size());
        numbers.get(*field, last, read.data());
        EXPECT_EQ(read, written);
        if (last > 0) {
            EXPECT_FALSE(numbers.setAll(*field, last + 1, written.data()));
        }
        EXPECT_EQ(lastIndex(*field), last);

        ASSERT_TRUE(numbers.set(*field, last, numbers.count() - 1, 3));
        numbers.get(*field, last, read.data());
        EXPECT_EQ(read.back(), 3);
        EXPECT_FALSE(numbers.set(*field, last, numbers.count(), 3));
        EXPECT_FALSE(numbers.set(*field, last, -1, 3));
    }
}

TEST_P(FieldNumbersTest, RefusesNumbersThatTheTypeCannotHold)
{
    for (const auto& field : m_fields) {
        const FieldNumbers& numbers = numbersOf(*field);
        ASSERT_TRUE(numbers.setAll(*field, 0, someNumbers(numbers).data()));
        SbString before, after;
        field->get(before);
        const int last = numbers.count() - 1;
        if (isWhole(numbers.kind())) {
            EXPECT_FALSE(numbers.set(*field, 0, last, 0.5));
            EXPECT_FALSE(numbers.set(*field, 0, last, highest(numbers.kind()) + 1));
            EXPECT_FALSE(numbers.set(*field, 0, last, lowest(numbers.kind()) - 1));
            EXPECT_FALSE(numbers.set(*field, 0, last, NAN));
            EXPECT_FALSE(numbers.set(*field, 0, last, HUGE_VAL));
        } else if (numbers.kind() == Kind::Float) {
            EXPECT_FALSE(numbers.set(*field, 0, last, 1e300));
        }
        field->get(after);
        EXPECT_EQ(before, after);
        if (isWhole(numbers.kind())) {
            EXPECT_TRUE(numbers.set(*field, 0, last, highest(numbers.kind())));
            EXPECT_TRUE(numbers.set(*field, 0, last, lowest(numbers.kind())));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllTypes, FieldNumbersTest, ::testing::ValuesIn(kTypes),
                         [](const auto& test) { return std::string(test.param); });

TEST(FieldNumbersTypesTest, KnowsTypesOfNumbersOnly)
{
    SoDB::init();
    for (const char* name : {"SFString", "SFNode", "MFNode", "SFBool", "SFImage", "SField"})
        EXPECT_EQ(FieldNumbers::of(SoType::fromName(SbName(name))), nullptr) << name;
    const FieldNumbers* box = FieldNumbers::of(SoSFBox3f::getClassTypeId());
    EXPECT_EQ(box->labels(), QStringList({"min x", "min y", "min z", "max x", "max y", "max z"}));
    EXPECT_EQ(FieldNumbers::of(SoSFFloat::getClassTypeId())->labels(), QStringList({""}));
}

TEST(FieldNumbersTypesTest, LeavesTheBitsOfOtherNumbersAlone)
{
    SoDB::init();
    const float payload = std::nanf("0x1234");
    SoSFVec3f vector;
    vector.setValue(payload, -0.f, 1e-45f);
    FieldNumbers::of(vector.getTypeId())->set(vector, 0, 0, 1);
    EXPECT_TRUE(std::signbit(vector.getValue()[1]));
    EXPECT_EQ(vector.getValue()[2], 1e-45f);

    // The distance of a plane alone: the normal is not made anew.
    SoSFPlane plane;
    plane = SbPlane(SbVec3f(1, 2, 3), 4);
    const SbVec3f normal = plane.getValue().getNormal();
    EXPECT_TRUE(FieldNumbers::of(plane.getTypeId())->set(plane, 0, 3, 7));
    EXPECT_EQ(plane.getValue().getNormal(), normal);
    EXPECT_EQ(plane.getValue().getDistanceFromOrigin(), 7);
    const double nowhere[] = {0, 0, 0, 1};
    EXPECT_FALSE(FieldNumbers::of(plane.getTypeId())->setAll(plane, 0, nowhere));
    SoSFRotation rotation;
    EXPECT_FALSE(FieldNumbers::of(rotation.getTypeId())->setAll(rotation, 0, nowhere));
}

TEST(FieldNumbersTypesTest, ReadsRotationsAsTheyWereMade)
{
    SoDB::init();
    SoSFRotation rotation;
    const FieldNumbers* numbers = FieldNumbers::of(rotation.getTypeId());
    for (const double angle : {0.5, 1.5708, 3.0, 6.0}) {
        rotation.setValue(SbVec3f(0, 1, 0), static_cast<float>(angle));
        double read[4];
        numbers->get(rotation, 0, read);
        EXPECT_EQ(numberText(Kind::Float, read[3]), numberText(Kind::Double, angle));
    }
}

TEST(NumberTextTest, IsTheShortestThatReadsBack)
{
    EXPECT_EQ(numberText(Kind::Float, 0.1f), "0.1");
    EXPECT_EQ(numberText(Kind::Double, 0.1), "0.1");
    EXPECT_EQ(numberText(Kind::Double, 0.1f), "0.10000000149011612");
    EXPECT_EQ(numberText(Kind::UInt32, 255, true), "0x000000ff");
    EXPECT_EQ(numberText(Kind::UInt16, 255, true), "0x00ff");
    EXPECT_EQ(numberText(Kind::Int32, -5, true), "-5");
    EXPECT_EQ(numberText(Kind::UInt32, 4294967295.0), "4294967295");
    EXPECT_EQ(numberText(Kind::Float, -HUGE_VAL), "-inf");
}
