#include "FieldsSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/fields/SoBufferObject.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFTrigger.h>

#include <gtest/gtest.h>

using fieldtest::Listener;
using fieldtest::textOf;

namespace {

constexpr SoEnumEntry kStyles[] = {{"FILLED", 0}, {"LINES", 1}, {"POINTS", 7}, {"DOTS", 7}};
constexpr SoEnumEntry kParts[] = {{"SIDES", 1}, {"BOTTOM", 2}, {"TOP", 4}};

class NamedFields : public testing::Test {
protected:
    static void SetUpTestSuite() { fieldtest::initTypes(); }
};

} // namespace

TEST_F(NamedFields, EnumsAreReadByNameOrNumber)
{
    SoSFEnum field;
    field.setEnums(kStyles);
    EXPECT_TRUE(field.isDefault());
    ASSERT_TRUE(field.set("LINES"));
    EXPECT_EQ(field.getValue(), 1);
    ASSERT_TRUE(field.set("7"));
    EXPECT_EQ(textOf(field), "POINTS") << "the first of several names";
    ASSERT_TRUE(field.set("-3"));
    EXPECT_EQ(textOf(field), "-3");
    const auto errors = support::expectErrors();
    EXPECT_FALSE(field.set("WAVES"));
    EXPECT_TRUE(errors.contains("expected FILLED, LINES, POINTS or DOTS"));
    EXPECT_FALSE(field.set("LINES FILLED"));
    EXPECT_EQ(field.getValue(), -3);
}

TEST_F(NamedFields, EnumsListTheirNames)
{
    SoSFEnum field;
    EXPECT_EQ(field.getNumEnums(), 0);
    field.setEnums(kStyles);
    field.setFieldType(SoField::EXPOSED);
    field.setIgnored(true);
    ASSERT_EQ(field.getNumEnums(), 4) << "flags and number of names share a word";
    EXPECT_EQ(field.getFieldType(), SoField::EXPOSED);
    SbName name;
    EXPECT_EQ(field.getEnum(2, name), 7);
    EXPECT_EQ(name, "POINTS");
    EXPECT_TRUE(field.setValue(SbName("LINES")));
    EXPECT_FALSE(field.setValue(SbName("WAVES")));
    EXPECT_EQ(field.getValue(), 1);
}

TEST_F(NamedFields, EnumListsKeepNamesThroughText)
{
    SoMFEnum field;
    field.setEnums(kStyles);
    ASSERT_TRUE(field.set("[ LINES, 0 7, 9 ]"));
    EXPECT_EQ(textOf(field), "[ LINES, FILLED, POINTS, 9 ]");
    ASSERT_TRUE(field.set("POINTS"));
    EXPECT_EQ(textOf(field), "POINTS");
    ASSERT_TRUE(field.set1(2, "LINES"));
    EXPECT_EQ(textOf(field), "[ POINTS, FILLED, LINES ]");
    const auto errors = support::expectErrors();
    EXPECT_FALSE(field.set("[ LINES WAVES ]"));
    EXPECT_EQ(field.getNum(), 3);
}

TEST_F(NamedFields, BitMasksReadEveryWayOfWriting)
{
    SoSFBitMask field;
    field.setEnums(kParts);
    const std::pair<const char*, int> cases[] = {
        {"NONE", 0},
        {"ALL", 7},
        {"TOP", 4},
        {"(SIDES|TOP)", 5},
        {"6", 6},
        {"(SIDES)", 1},
        {"( SIDES | ALL )", 7},
        {"(TOP | 0x18)", 28},
    };
    for (const auto& [text, value] : cases) {
        ASSERT_TRUE(field.set(text)) << text;
        EXPECT_EQ(field.getValue(), value) << text;
        SoSFBitMask back;
        back.setEnums(kParts);
        ASSERT_TRUE(back.set(textOf(field).c_str())) << textOf(field);
        EXPECT_EQ(back.getValue(), value) << textOf(field);
    }
    field.setValue(5);
    EXPECT_EQ(textOf(field), "(SIDES | TOP)");
    for (const char* text : {"(SIDES", "(SIDES TOP)", "()", "(|TOP)", "LID", "(SIDES | LID)"}) {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(field.set(text)) << text;
    }
    EXPECT_EQ(field.getValue(), 5);
}

TEST_F(NamedFields, TriggersTellWithoutAValue)
{
    SoSFTrigger trigger, follower;
    ASSERT_TRUE(follower.connectFrom(&trigger));
    Listener listener;
    follower.addAuditor(&listener, SoAuditor::SENSOR);
    trigger.trigger();
    trigger.trigger();
    EXPECT_EQ(listener.take(), 2) << "no event is lost although nobody reads";
    EXPECT_TRUE(trigger.set(""));
    EXPECT_EQ(listener.take(), 1);
    EXPECT_EQ(textOf(trigger), "");
    follower.removeAuditor(&listener);
}

TEST_F(NamedFields, ArraysKeepTypeAndSizeThroughText)
{
    const float floats[] = {0, -0.5f, 1e38f, 3};
    const std::uint8_t bytes[] = {0, 1, 254, 255};
    SoSFArray field, back;
    ASSERT_TRUE(field.setValue({2, 2, 1}, SoSFArray::FLOAT, floats));
    EXPECT_EQ(textOf(field), "FLOAT 2 2 1 [ 0, -0.5, 1e+38, 3 ]");
    ASSERT_TRUE(back.set(textOf(field).c_str()));
    EXPECT_TRUE(back.isSame(field));
    ASSERT_TRUE(field.setValue({4, 1, 1}, SoSFArray::UNSIGNED_BYTE, bytes));
    EXPECT_FALSE(back.isSame(field));
    ASSERT_TRUE(back.set(textOf(field).c_str()));
    EXPECT_TRUE(back.isSame(field));
    EXPECT_EQ(back.getValueAt(3), 255);
    EXPECT_EQ(back.getDimensions(), SbVec3i32(4, 1, 1));
    EXPECT_EQ(back.getNumValues(), 4u);

    for (const char* text :
         {"FLOAT 2 1 1 [ 1 ]", "FLOAT 1 1 1 [ 1 2 ]", "UNSIGNED_BYTE 1 1 1 [ 256 ]",
          "FLOAT 60000 60000 1 [ 0 ]", "WORD 1 1 1 [ 0 ]", "FLOAT -1 1 1 [ ]"}) {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(back.set(text)) << text;
    }
    EXPECT_TRUE(back.isSame(field));
    ASSERT_TRUE(back.set("DOUBLE 0 0 0 [ ]"));
    EXPECT_EQ(back.getValues(), nullptr);
}

TEST_F(NamedFields, BuffersAreSharedAndTellTheirFields)
{
    const SoRef<SoBufferObject> buffer(new SoBufferObject);
    SoSFBufferObject field, other;
    field = buffer.get();
    other = buffer.get();
    EXPECT_EQ(buffer->getRefCount(), 3);
    Listener listener;
    field.addAuditor(&listener, SoAuditor::SENSOR);
    const std::byte bytes[] = {std::byte(0), std::byte(0xff), std::byte(0x1a)};
    const auto before = buffer->getChangeId();
    buffer->setBytes(bytes);
    EXPECT_EQ(listener.take(), 1);
    EXPECT_GT(buffer->getChangeId(), before);
    EXPECT_EQ(textOf(field), "BufferObject { 3 \"00ff1a\" }");

    SoSFBufferObject back;
    ASSERT_TRUE(back.set(textOf(field).c_str()));
    EXPECT_TRUE(back.isSame(field));
    EXPECT_NE(back.getValue(), buffer.get());
    for (const char* text : {"BufferObject { 2 \"00\" }", "BufferObject { 1 \"0g\" }", "Buffer"}) {
        const auto errors = support::expectErrors();
        EXPECT_FALSE(back.set(text)) << text;
    }
    field = nullptr;
    EXPECT_EQ(listener.take(), 1);
    EXPECT_EQ(textOf(field), "NULL");
    EXPECT_EQ(buffer->getRefCount(), 2);
    field.removeAuditor(&listener);
}
