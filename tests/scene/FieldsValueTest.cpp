#include "FieldsSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoFieldContainer.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>

#include <gtest/gtest.h>

using fieldtest::Listener;
using fieldtest::textOf;

namespace {

template <class T>
std::vector<T> numberSamples()
{
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_floating_point_v<T>) {
        return {T(0),
                -T(0),
                T(1) / 3,
                -T(1e-7),
                T(16777217),
                Limits::denorm_min(),
                Limits::min(),
                Limits::max(),
                Limits::lowest(),
                Limits::epsilon(),
                Limits::infinity(),
                -Limits::infinity(),
                Limits::quiet_NaN()};
    } else {
        return {T(0), T(1), T(7), Limits::max(), Limits::min()};
    }
}

/// Values that are easily spoilt on the way through text.
template <class T>
struct Samples {
    static std::vector<T> make() { return numberSamples<T>(); }
};
template <>
struct Samples<bool> {
    static std::vector<bool> make() { return {true, false, true}; }
};
template <class T, int N>
struct Samples<SbVec<T, N>> {
    static std::vector<SbVec<T, N>> make()
    {
        const auto numbers = numberSamples<T>();
        std::vector<SbVec<T, N>> result;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            for (int c = 0; c < N; ++c) {
                if (c == 0) {
                    result.emplace_back();
                }
                result.back()[c] = numbers[(i + static_cast<std::size_t>(c) * 3) % numbers.size()];
            }
        }
        return result;
    }
};
template <class T, class From>
std::vector<T> converted()
{
    std::vector<T> result;
    for (const From& v : Samples<From>::make()) {
        result.emplace_back(v);
    }
    return result;
}
template <>
struct Samples<SbColor> {
    static auto make() { return converted<SbColor, SbVec3f>(); }
};
template <>
struct Samples<SbColorRGBA> {
    static auto make() { return converted<SbColorRGBA, SbVec4f>(); }
};
template <>
struct Samples<SbTime> {
    static auto make() { return converted<SbTime, double>(); }
};
template <class T, int N>
struct BoxSamples {
    template <class Box>
    static std::vector<Box> make()
    {
        const auto corners = Samples<SbVec<T, N>>::make();
        std::vector<Box> result(1); // an empty one
        for (std::size_t i = 0; i < corners.size(); ++i) {
            result.emplace_back(corners[i], corners[corners.size() - 1 - i]);
        }
        return result;
    }
};
template <class T, int N>
struct Samples<SbBox<T, N>> {
    static auto make() { return BoxSamples<T, N>::template make<SbBox<T, N>>(); }
};
template <>
struct Samples<SbBox3f> {
    static auto make() { return BoxSamples<float, 3>::make<SbBox3f>(); }
};
template <>
struct Samples<SbMatrix> {
    static std::vector<SbMatrix> make()
    {
        std::vector<SbMatrix> result{SbMatrix::identity()};
        const auto numbers = numberSamples<float>();
        SbMatrix m;
        for (int i = 0; i < 16; ++i) {
            m[i / 4][i % 4] = numbers[static_cast<std::size_t>(i) % numbers.size()];
        }
        result.push_back(m);
        return result;
    }
};
template <>
struct Samples<SbRotation> {
    static std::vector<SbRotation> make()
    {
        std::vector<SbRotation> result{SbRotation(),
                                       SbRotation(SbVec3f(0, 1, 0), 1.57f),
                                       SbRotation(0, 0, 0, -1),
                                       SbRotation(1, 0, 0, 0),
                                       SbRotation(1e-20f, 0, 0, 1),
                                       SbRotation(-0.0f, 1, 0, 1e-8f),
                                       SbRotation(SbVec3f(1, 1, 1), 6.28318f)};
        std::mt19937 random(7);
        std::uniform_real_distribution<float> number(-1, 1);
        for (int i = 0; i < 3000; ++i) {
            const SbRotation turn(number(random), number(random), number(random), number(random));
            result.push_back(i % 2 ? turn : turn * result.back());
        }
        return result;
    }
};
template <>
struct Samples<SbPlane> {
    static std::vector<SbPlane> make()
    {
        std::vector<SbPlane> result{SbPlane()};
        std::mt19937 random(11);
        std::uniform_real_distribution<float> number(-9, 9);
        for (int i = 0; i < 1000; ++i) {
            result.emplace_back(SbVec3f(number(random), number(random), number(random)),
                                number(random));
        }
        return result;
    }
};
const std::vector<const char*> kTexts{"",
                                      "plain",
                                      "two words",
                                      "say \"hi\"",
                                      "C:\\new\\",
                                      "\\\"",
                                      "line\nbreak\t# no comment",
                                      "gr\xc3\xbc\xc3\x9f",
                                      "[,]{}",
                                      "IS",
                                      "7up",
                                      "~"};
template <>
struct Samples<SbString> {
    static std::vector<SbString> make() { return {kTexts.begin(), kTexts.end()}; }
};
template <>
struct Samples<SbName> {
    static std::vector<SbName> make() { return {kTexts.begin(), kTexts.end()}; }
};
template <>
struct Samples<SbImage> {
    static std::vector<SbImage> make()
    {
        std::vector<SbImage> result(1);
        for (int components = 1; components <= 4; ++components) {
            std::vector<unsigned char> bytes;
            for (int i = 0; i < 6 * components; ++i) {
                bytes.push_back(static_cast<unsigned char>(i * 41 + 250));
            }
            result.emplace_back(SbVec2i32(3, 2), components, bytes.data());
        }
        return result;
    }
};

template <class T>
bool sameBits(const T& a, const T& b)
{
    if constexpr (std::is_trivially_copyable_v<T>) {
        return std::memcmp(&a, &b, sizeof(T)) == 0;
    } else {
        return a == b;
    }
}

/// Half and whole turns leave a tiny component at the mercy of the rounding of pi.
template <>
bool sameBits(const SbRotation& a, const SbRotation& b)
{
    for (int i = 0; i < 4; ++i) {
        const float x = a.getValue()[i], y = b.getValue()[i];
        if (std::memcmp(&x, &y, sizeof x) != 0 && !(std::fabs(x - y) < 3e-16f)) {
            return false;
        }
    }
    return true;
}

class Fields : public testing::Test {
protected:
    static void SetUpTestSuite() { fieldtest::initTypes(); }
};

} // namespace

// ---- single values

template <class Field>
class SingleField : public Fields {
};

using SingleFields =
    testing::Types<SoSFBool, SoSFInt32, SoSFUInt32, SoSFShort, SoSFUShort, SoSFFloat, SoSFDouble,
                   SoSFTime, SoSFString, SoSFName, SoSFVec2f, SoSFVec3f, SoSFVec4f, SoSFVec2d,
                   SoSFVec3d, SoSFVec4d, SoSFVec2s, SoSFVec3s, SoSFVec4s, SoSFVec2i32, SoSFVec3i32,
                   SoSFVec4i32, SoSFColor, SoSFColorRGBA, SoSFRotation, SoSFMatrix, SoSFPlane,
                   SoSFBox2f, SoSFBox2s, SoSFBox3f, SoSFBox3s, SoSFImage>;
TYPED_TEST_SUITE(SingleField, SingleFields);

TYPED_TEST(SingleField, TextGivesTheSameBitsBack)
{
    using T = typename TypeParam::Value;
    for (const T& value : Samples<T>::make()) {
        TypeParam field, back;
        field.setValue(value);
        const std::string text = textOf(field);
        ASSERT_TRUE(back.set(text.c_str())) << text;
        ASSERT_TRUE(sameBits<T>(back.getValue(), value)) << text << " became " << textOf(back);
    }
}

TYPED_TEST(SingleField, TellsOfEachSetOnceAndStopsBeingDefault)
{
    using T = typename TypeParam::Value;
    const auto samples = Samples<T>::make();
    Listener listener;
    TypeParam field;
    field.addAuditor(&listener, SoAuditor::SENSOR);
    field.initValue(samples[0]);
    EXPECT_TRUE(field.isDefault());
    EXPECT_EQ(listener.take(), 0);
    field.setValue(samples[0]);
    EXPECT_EQ(listener.take(), 1) << "a set is an event even if the value stays";
    EXPECT_EQ(listener.field, &field);
    EXPECT_FALSE(field.isDefault());
    ASSERT_TRUE(field.set(textOf(field).c_str()));
    EXPECT_EQ(listener.take(), 1);

    TypeParam other;
    other = field;
    EXPECT_TRUE(sameBits<T>(other.getValue(), field.getValue()));
    other = samples.back();
    EXPECT_TRUE(sameBits<T>(other.getValue(), samples.back()));
    field.removeAuditor(&listener);
}

TYPED_TEST(SingleField, KeepsItsValueWhenTextIsNoValue)
{
    using T = typename TypeParam::Value;
    const T value = Samples<T>::make()[1];
    TypeParam field;
    field.setValue(value);
    Listener listener;
    field.addAuditor(&listener, SoAuditor::SENSOR);
    const std::string good = textOf(field);
    for (const std::string& bad : {std::string("}"), std::string(), good + " ]"}) {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(field.set(bad.c_str())) << bad;
        EXPECT_TRUE(errors.contains("expected"));
    }
    EXPECT_TRUE(sameBits<T>(field.getValue(), value));
    EXPECT_EQ(listener.take(), 0);
    field.removeAuditor(&listener);
}

TYPED_TEST(SingleField, FollowsItsMaster)
{
    using T = typename TypeParam::Value;
    const auto samples = Samples<T>::make();
    TypeParam follower;
    Listener listener;
    follower.addAuditor(&listener, SoAuditor::SENSOR);
    {
        TypeParam master;
        ASSERT_TRUE(follower.connectFrom(&master));
        listener.take();
        master.setValue(samples[0]);
        master.setValue(samples[1]);
        EXPECT_EQ(listener.take(), 2) << "each change is told, also when nobody reads";
        EXPECT_TRUE(sameBits<T>(follower.getValue(), samples[1]));
    }
    EXPECT_FALSE(follower.isConnected());
    EXPECT_TRUE(sameBits<T>(follower.getValue(), samples[1])) << "the value last read stays";
    follower.removeAuditor(&listener);
}

// ---- multiple values

template <class Field>
class MultipleField : public Fields {
};

using MultipleFields =
    testing::Types<SoMFBool, SoMFInt32, SoMFUInt32, SoMFShort, SoMFUShort, SoMFFloat, SoMFDouble,
                   SoMFTime, SoMFString, SoMFName, SoMFVec2f, SoMFVec3f, SoMFVec4f, SoMFVec2d,
                   SoMFVec3d, SoMFVec4d, SoMFVec2s, SoMFVec3s, SoMFVec4s, SoMFVec2i32, SoMFVec3i32,
                   SoMFVec4i32, SoMFColor, SoMFColorRGBA, SoMFRotation, SoMFMatrix, SoMFPlane>;
TYPED_TEST_SUITE(MultipleField, MultipleFields);

namespace {

template <class Field>
void fill(Field& field, const std::vector<typename Field::Value>& values)
{
    field.setNum(0);
    for (std::size_t i = 0; i < values.size(); ++i) {
        field.set1Value(static_cast<int>(i), values[i]);
    }
}

template <class Field>
void expectHolds(const Field& field, const std::vector<typename Field::Value>& values)
{
    ASSERT_EQ(field.getNum(), static_cast<int>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const typename Field::Value value = values[i];
        EXPECT_TRUE(sameBits<typename Field::Value>(field[static_cast<int>(i)], value)) << i;
    }
}

} // namespace

TYPED_TEST(MultipleField, TextGivesTheSameBitsBack)
{
    using T = typename TypeParam::Value;
    std::vector<T> samples = Samples<T>::make();
    // More than one piece of the list reader.
    while (samples.size() < 6000) {
        const std::vector<T> more = samples;
        samples.insert(samples.end(), more.begin(), more.end());
    }
    for (const std::size_t size :
         {std::size_t(0), std::size_t(1), std::size_t(2), samples.size()}) {
        const std::vector<T> some(samples.begin(), samples.begin() + static_cast<long>(size));
        TypeParam field, back;
        fill(field, some);
        const std::string text = textOf(field);
        ASSERT_TRUE(back.set(text.c_str())) << text.substr(0, 200);
        expectHolds(back, some);
    }
}

TYPED_TEST(MultipleField, EditsLikeAVectorWithOneNotificationEach)
{
    using T = typename TypeParam::Value;
    std::vector<T> expected = Samples<T>::make();
    expected.resize(3);
    TypeParam field;
    EXPECT_TRUE(field.isDefault());
    fill(field, expected);
    EXPECT_FALSE(field.isDefault());
    Listener listener;
    field.addAuditor(&listener, SoAuditor::SENSOR);
    const auto step = [&](const char* name) {
        EXPECT_EQ(listener.take(), 1) << name;
        SCOPED_TRACE(name);
        expectHolds(field, expected);
    };

    field.insertSpace(1, 2);
    expected.insert(expected.begin() + 1, 2, T{});
    step("insertSpace");
    field.deleteValues(0, 2);
    expected.erase(expected.begin(), expected.begin() + 2);
    step("deleteValues");
    field.setNum(7);
    expected.resize(7, T{});
    step("setNum");
    field.set1Value(9, expected[1]);
    expected.resize(10, T{});
    expected[9] = expected[1];
    step("set1Value beyond the end");
    const T value = expected[1];
    const std::vector<T> other(1, value);
    for (int i = 0; i < 100; ++i) {
        field.set1Value(field.getNum(), field[1]);
        expected.push_back(value);
    }
    EXPECT_EQ(listener.take(), 100);
    field.deleteValues(4);
    expected.resize(4);
    step("deleteValues to the end");
    T* edited = field.startEditing();
    edited[0] = value;
    expected[0] = value;
    field.finishEditing();
    step("startEditing");
    TypeParam source;
    source.setNum(3);
    source.set1Value(1, value);
    for (const auto& [removed, count] : {std::pair{0, 2}, {3, 1}, {1, 1}, {1, 0}, {0, 3}}) {
        const int from = 3 - count;
        ASSERT_TRUE(field.replaceValues(1, removed, source, from, count));
        expected.erase(expected.begin() + 1, expected.begin() + 1 + removed);
        expected.insert(expected.begin() + 1, source.getValues() + from, source.getValues() + 3);
        step("replaceValues");
    }
    field.setValue(value);
    expected = other;
    step("setValue");

    field.insertSpace(0, 0);
    field.deleteValues(0, 0);
    field.deleteValues(field.getNum());
    EXPECT_EQ(listener.take(), 0) << "edits of nothing are none";
    expectHolds(field, expected);
    field.removeAuditor(&listener);
}

TYPED_TEST(MultipleField, ReadsAndWritesOneValueAtATime)
{
    using T = typename TypeParam::Value;
    std::vector<T> samples = Samples<T>::make();
    samples.resize(3);
    TypeParam field, back;
    fill(field, samples);
    for (int i = 2; i >= 0; --i) {
        SbString text;
        field.get1(i, text);
        ASSERT_TRUE(back.set1(i, text.getString()));
    }
    expectHolds(back, samples);
    const auto errors = support::expectErrors();
    SbString text("old");
    field.get1(3, text);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_FALSE(back.set1(0, "}"));
    expectHolds(back, samples);
}

TYPED_TEST(MultipleField, KeepsItsValuesWhenTheListIsFaulty)
{
    using T = typename TypeParam::Value;
    std::vector<T> samples = Samples<T>::make();
    samples.resize(2);
    TypeParam field;
    fill(field, samples);
    const std::string good = textOf(field);
    std::string open = good;
    open.pop_back();
    for (const std::string& bad : {open, good + " 1", good.substr(1), std::string("[ { ]")}) {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(field.set(bad.c_str())) << bad;
    }
    expectHolds(field, samples);
}

// ---- particulars

TEST_F(Fields, AreSmall)
{
    static_assert(sizeof(SoSFFloat) == 32);
    static_assert(sizeof(SoSFBool) == 32);
    static_assert(sizeof(SoSFVec3f) == 40);
    static_assert(sizeof(SoSFEnum) == 40);
    static_assert(sizeof(SoMFInt32) <= 48);
    static_assert(sizeof(SoMFColor) <= 56);
    // One small value lies inside the field itself.
    SoMFColor color;
    color.setValue(1, 0, 0);
    const auto* at = reinterpret_cast<const char*>(color.getValues());
    const auto* field = reinterpret_cast<const char*>(&color);
    EXPECT_TRUE(at > field && at < field + sizeof color);
}

TEST_F(Fields, AcceptOwnValuesAsSource)
{
    SoMFVec3f points;
    points.setValues({SbVec3f(1, 2, 3), SbVec3f(4, 5, 6)});
    for (int i = 0; i < 10; ++i) {
        points.setValues(points.getNum(), points.values());
    }
    ASSERT_EQ(points.getNum(), 2048);
    EXPECT_EQ(points[2047], SbVec3f(4, 5, 6));
    EXPECT_EQ(points.find(SbVec3f(4, 5, 6)), 1);
    EXPECT_EQ(points.find(SbVec3f(0, 5, 6)), -1);
}

TEST_F(Fields, WriteWhatPeopleRead)
{
    SoSFRotation rotation;
    rotation.setValue(SbVec3f(0, 1, 0), 1.57f);
    EXPECT_EQ(textOf(rotation), "0 1 0 1.57");
    ASSERT_TRUE(rotation.set("0.57735026 0.57735026 0.57735026 -2.5"));
    EXPECT_EQ(rotation.getValue(),
              SbRotation(SbVec3f(0.57735026f, 0.57735026f, 0.57735026f), -2.5f));
    SoMFInt32 list;
    list.setValues({0, 1, -1});
    EXPECT_EQ(textOf(list), "[ 0, 1, -1 ]");
    list.setNum(0);
    EXPECT_EQ(textOf(list), "[ ]");
    SoSFString string;
    string = "say \"hi\"";
    EXPECT_EQ(textOf(string), "\"say \\\"hi\\\"\"");
    SoSFFloat number;
    number = 0.1f;
    EXPECT_EQ(textOf(number), "0.1");
}

TEST_F(Fields, NormaliseWhatTextGivesUnnormalised)
{
    SoSFRotation rotation;
    ASSERT_TRUE(rotation.set("0 0 5 3.14159265"));
    EXPECT_TRUE(rotation.getValue().equals(SbRotation(0, 0, 1, 0), 1e-6f));
    ASSERT_TRUE(rotation.set("0 0 0 1"));
    EXPECT_EQ(rotation.getValue(), SbRotation());
    SoSFPlane plane;
    ASSERT_TRUE(plane.set("0 4 0 2"));
    EXPECT_EQ(plane.getValue().getNormal(), SbVec3f(0, 1, 0));
    const auto errors = support::expectErrors();
    EXPECT_FALSE(plane.set("0 0 0 2"));
}

TEST_F(Fields, RefusePicturesThatTheTextCannotHold)
{
    SoSFImage image;
    for (const char* text : {"100000 100000 4 0", "2 2 5 0 0 0 0", "-1 2 1", "2 2 1 0 0 0"}) {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(image.set(text)) << text;
    }
    ASSERT_TRUE(image.set("1 1 3 0xFF8000"));
    EXPECT_EQ(image.getValue().getPixel(0, 0)[1], 0x80);
    ASSERT_TRUE(image.set("0 0 0"));
    EXPECT_TRUE(image.getValue().isNull());
}

TEST_F(Fields, AreMadeByTypeName)
{
    for (const char* name : {"SFVec3f", "MFVec3f", "SFBox3s", "MFUShort", "SFTrigger", "SFPath",
                             "MFEnum", "SFBitMask", "MFUniformShaderParameter", "SFArray"}) {
        const SoType type = SoType::fromName(name);
        const std::unique_ptr<SoField> field(static_cast<SoField*>(type.createInstance()));
        ASSERT_TRUE(field) << name;
        EXPECT_EQ(field->getTypeId(), type);
        EXPECT_TRUE(field->isOfType(name[0] == 'S' ? SoSField::getClassTypeId()
                                                   : SoMField::getClassTypeId()));
    }
}
