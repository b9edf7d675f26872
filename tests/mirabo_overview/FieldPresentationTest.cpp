#include "OverviewSupport.h"

#include "mirabo/extender/MrbFieldPresentation.h"

#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoSFPath.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>

#include <chrono>
#include <map>

namespace {

struct Case {
    const char* type;
    const char* set;
    const char* shown;
    bool editable = true;
};

/// What is set, and what the row shows of it. Types that hold objects come further down.
const Case kCases[] = {
    {"SFBool", "TRUE", "TRUE"},
    {"MFBool", "[ TRUE, FALSE ]", "TRUE, FALSE"},
    {"SFInt32", "-7", "-7"},
    {"MFInt32", "[ 1, 2, 3, 4, 5, 6 ]", "1, 2, 3, 4, 5, 6"},
    {"MFInt32", "[ 1, 2, 3, 4, 5, 6, 7 ]", "1, 2, 3, 4, 5, 6..."},
    {"MFInt32", "[ ]", "[ ]"},
    {"MFInt32", "5", "5"},
    {"SFUInt32", "4294967295", "4294967295"},
    {"MFUInt32", "[ 0, 1 ]", "0, 1"},
    {"SFShort", "-32768", "-32768"},
    {"MFShort", "[ -1, 1 ]", "-1, 1"},
    {"SFUShort", "65535", "65535"},
    {"MFUShort", "[ 1, 2 ]", "1, 2"},
    {"SFFloat", "0.1", "0.1"},
    {"MFFloat", "[ 0.5, 1e+20 ]", "0.5, 1e+20"},
    {"SFDouble", "0.1", "0.1"},
    {"MFDouble", "[ 0.25, -3 ]", "0.25, -3"},
    {"SFTime", "12.5", "12.5"},
    {"MFTime", "[ 1, 2 ]", "1, 2"},
    {"SFString", "\"a \\\"b\\\" <i>\"", "\"a \\\"b\\\" <i>\""},
    {"SFString", "\"\"", "\"\""},
    {"MFString", "[ \"a\", \"b c\" ]", "\"a\", \"b c\""},
    {"MFString", "\"\"", "\"\""},
    {"SFName", "part", "part"},
    {"MFName", "[ a, b ]", "a, b"},
    {"SFVec2f", "1 2", "1 2"},
    {"MFVec2f", "[ 1 2, 3 4 ]", "1 2, 3 4"},
    {"SFVec3f", "1 2.5 3", "1 2.5 3"},
    {"MFVec3f", "[ 1 2 3, 4 5 6 ]", "1 2 3, 4 5 6"},
    {"SFVec4f", "1 2 3 4", "1 2 3 4"},
    {"MFVec4f", "[ 1 2 3 4 ]", "1 2 3 4"},
    {"SFVec2d", "1 2", "1 2"},
    {"MFVec2d", "[ 1 2, 3 4 ]", "1 2, 3 4"},
    {"SFVec3d", "1 2 3", "1 2 3"},
    {"MFVec3d", "[ 1 2 3 ]", "1 2 3"},
    {"SFVec4d", "1 2 3 4", "1 2 3 4"},
    {"MFVec4d", "[ 1 2 3 4 ]", "1 2 3 4"},
    {"SFVec2s", "1 2", "1 2"},
    {"MFVec2s", "[ 1 2, 3 4 ]", "1 2, 3 4"},
    {"SFVec3s", "1 2 3", "1 2 3"},
    {"MFVec3s", "[ 1 2 3 ]", "1 2 3"},
    {"SFVec4s", "1 2 3 4", "1 2 3 4"},
    {"MFVec4s", "[ 1 2 3 4 ]", "1 2 3 4"},
    {"SFVec2i32", "1 2", "1 2"},
    {"MFVec2i32", "[ 1 2, 3 4 ]", "1 2, 3 4"},
    {"SFVec3i32", "1 2 3", "1 2 3"},
    {"MFVec3i32", "[ 1 2 3 ]", "1 2 3"},
    {"SFVec4i32", "1 2 3 4", "1 2 3 4"},
    {"MFVec4i32", "[ 1 2 3 4 ]", "1 2 3 4"},
    {"SFColor", "1 0.5 0", "1 0.5 0"},
    {"MFColor", "[ 1 0 0, 0 1 0 ]", "1 0 0, 0 1 0"},
    {"SFColorRGBA", "1 0.5 0 0.25", "1 0.5 0 0.25"},
    {"MFColorRGBA", "[ 1 0 0 1, 0 1 0 1 ]", "1 0 0 1, 0 1 0 1"},
    {"SFRotation", "0 0 1 0", "0 0 1 0"},
    {"MFRotation", "[ 0 0 1 0, 0 0 1 0 ]", "0 0 1 0, 0 0 1 0"},
    {"SFMatrix", "1 0 0 0 0 1 0 0 0 0 1 0 2 3 4 1", "1 0 0 0 0 1 0 0 0 0 1 0 2 3 4 1"},
    {"MFMatrix", "[ 1 0 0 0 0 1 0 0 0 0 1 0 2 3 4 1 ]", "1 0 0 0 0 1 0 0 0 0 1 0 2 3 4 1"},
    {"SFPlane", "0 0 1 5", "0 0 1 5"},
    {"MFPlane", "[ 0 0 1 5, 1 0 0 2 ]", "0 0 1 5, 1 0 0 2"},
    {"SFBox2f", "0 1 2 3", "0 1 2 3"},
    {"SFBox2s", "0 1 2 3", "0 1 2 3"},
    {"SFBox3f", "0 1 2 3 4 5", "0 1 2 3 4 5"},
    {"SFBox3s", "0 1 2 3 4 5", "0 1 2 3 4 5"},
    {"SFImage", "1 1 1 0xff", ""},
    {"SFEnum", "3", "3"},
    {"MFEnum", "[ 1, 2 ]", "1, 2"},
    {"SFBitMask", "5", "5"},
    {"SFArray", "FLOAT 2 1 1 [ 1, 2 ]", "FLOAT 2 1 1 [ 1, 2 ]"},
    {"SFTrigger", "", ""},
    {"SFBufferObject", "NULL", "", false},
    {"SFBufferObject", "BufferObject { 2 \"01ff\" }", "SoBufferObject", false},
    {"SFNode", "NULL", "", false},
    {"MFNode", "[ NULL, NULL ]", "", false},
    {"MFNode", "[ ]", "[ ]", false},
    {"MFUniformShaderParameter", "[ ]", "[ ]", false},
    {"MFInstanceParameter", "[ ]", ""},
    {"SFPath", "NULL", "NULL"},
    {"MFPath", "[ NULL, NULL ]", "NULL, NULL"},
    {"SFFieldContainer", "NULL", "NULL"},
};

using FieldPresentationTest = OverviewTest;

std::unique_ptr<SoField> makeField(SoType type)
{
    return std::unique_ptr<SoField>(static_cast<SoField*>(type.createInstance()));
}

std::string shownText(const SoField& field)
{
    return MrbFieldPresentations::of(field)->shown(field).text.toStdString();
}

bool isEditable(const SoField& field)
{
    return MrbFieldPresentations::of(field)->isEditable(field);
}

bool isWatchable(const SoField& field)
{
    return MrbFieldPresentations::of(field)->isWatchable(field);
}

QString clipboardText(const SoField& field)
{
    return MrbFieldPresentations::of(field)->clipboardText(field);
}

QString toolTip(const SoField& field, const QString& shown)
{
    return MrbFieldPresentations::of(field)->toolTip(field, shown);
}

} // namespace

TEST_F(FieldPresentationTest, ShowsTheValueOfEveryFieldType)
{
    std::map<std::string, int> tried;
    for (const Case& c : kCases) {
        const SoType type = SoType::fromName(SbName(c.type));
        ASSERT_FALSE(type.isBad()) << c.type;
        const auto field = makeField(type);
        ASSERT_TRUE(field->set(c.set)) << c.type << ' ' << c.set;
        EXPECT_EQ(shownText(*field), c.shown) << c.type;
        EXPECT_EQ(isEditable(*field), c.editable) << c.type;
        EXPECT_EQ(MrbFieldPresentations::of(*field)->shown(*field).isImage,
                  std::string(c.type) == "SFImage");
        ++tried[c.type];
    }
    // A type of an optional module or a new one: what the toolkit writes.
    for (const SoType type : SoType::getAllDerivedFrom(SoField::getClassTypeId())) {
        if (!type.canCreateInstance() || tried.count(type.getName().getString()))
            continue;
        const auto field = makeField(type);
        SbString full;
        field->get(full);
        EXPECT_EQ(shownText(*field), full.getString()) << type.getName().getString();
    }
}

TEST_F(FieldPresentationTest, ShowsNodesByTheirTypes)
{
    m_probe->one.setValue(new SoCone);
    EXPECT_EQ(shownText(m_probe->one), "Cone");
    EXPECT_FALSE(isEditable(m_probe->one));

    m_probe->nodes.addNode(nullptr);
    for (int i = 0; i < 5; ++i)
        m_probe->nodes.addNode(i % 2 ? static_cast<SoNode*>(new SoCone) : new SoCube);
    EXPECT_EQ(shownText(m_probe->nodes), "Cube, Cone, Cube, Cone, Cube");
    m_probe->nodes.addNode(new SoCone);
    EXPECT_EQ(shownText(m_probe->nodes), "Cube, Cone, Cube, Cone, Cube...");
    EXPECT_FALSE(isEditable(m_probe->nodes));
    EXPECT_FALSE(isWatchable(m_probe->nodes));
    EXPECT_FALSE(isWatchable(m_probe->one));
    EXPECT_TRUE(isWatchable(m_probe->many));

    SoSFPath path;
    path.setValue(new SoPath(m_probe.get()));
    EXPECT_EQ(shownText(path), "Path { <Probe> [ ] }")
        << "whole graphs are nothing to read in a row";
}

TEST_F(FieldPresentationTest, LeavesBigArraysUnwritten)
{
    m_probe->array.setValue(SbVec3i32(16, 16, 16), SoSFArray::UNSIGNED_BYTE);
    EXPECT_EQ(shownText(m_probe->array).substr(0, 24), "UNSIGNED_BYTE 16 16 16 [");
    EXPECT_TRUE(isEditable(m_probe->array));
    m_probe->array.setValue(SbVec3i32(17, 241, 1), SoSFArray::UNSIGNED_BYTE);
    EXPECT_EQ(shownText(m_probe->array), "ARRAY TOO BIG");
    EXPECT_FALSE(isEditable(m_probe->array));
}

TEST_F(FieldPresentationTest, CopiesMoreThanItShows)
{
    m_probe->many.setValues({1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(clipboardText(m_probe->many), "[ 1, 2, 3, 4, 5, 6, 7, 8 ]");
    EXPECT_EQ(clipboardText(m_probe->vector), "1 2 3");
    EXPECT_TRUE(toolTip(m_probe->many, "1, 2").contains("8 values"));

    m_probe->many.setNum(MrbFieldPresentation::kMaxCopiedValues + 1);
    EXPECT_EQ(clipboardText(m_probe->many), "1, 2, 3, 4, 5, 6...");
    const unsigned char pixels[12] = {};
    m_probe->image.setValue(SbVec2i32(2, 2), 3, pixels);
    EXPECT_EQ(toolTip(m_probe->image, ""), "2 x 2 pixels, 3 components");
}

TEST_F(FieldPresentationTest, OrdersNumbersAsNumbers)
{
    const auto valueLess = [](const char* a, const char* b) {
        return MrbSortKey::ofText(a) < MrbSortKey::ofText(b);
    };
    EXPECT_TRUE(valueLess("9", "10"));
    EXPECT_FALSE(valueLess("10", "9"));
    EXPECT_TRUE(valueLess("-1e3", "2"));
    EXPECT_TRUE(valueLess("1 2 3", "1 10 0"));
    EXPECT_TRUE(valueLess("1 2", "1 2 0"));
    EXPECT_TRUE(valueLess("1000", "apple"));
    EXPECT_FALSE(valueLess("apple", "1000"));
    EXPECT_TRUE(valueLess("apple", "Banana"));
    EXPECT_FALSE(valueLess("apple", "apple"));
    EXPECT_FALSE(valueLess("5", "5"));
    EXPECT_FALSE(valueLess("", ""));
}

TEST_F(FieldPresentationTest, TakesTheNearestAndTheLastRegistered)
{
    struct Said final : MrbFieldPresentation {
        explicit Said(const char* text) : text(text) {}
        Shown shown(const SoField&) const override { return {text}; }
        QString text;
    };
    const auto before = shownText(m_probe->vector);
    {
        const MrbFieldPresentations::Registration all(SoSField::getClassTypeId(),
                                                      std::make_unique<Said>("any"));
        EXPECT_EQ(shownText(m_probe->vector), "any");
        const MrbFieldPresentations::Registration vectors(SoSFVec3f::getClassTypeId(),
                                                          std::make_unique<Said>("vector"));
        EXPECT_EQ(shownText(m_probe->vector), "vector");
        {
            const MrbFieldPresentations::Registration others(SoSFVec3f::getClassTypeId(),
                                                             std::make_unique<Said>("other"));
            EXPECT_EQ(shownText(m_probe->vector), "other");
        }
        EXPECT_EQ(shownText(m_probe->vector), "vector");
        EXPECT_EQ(shownText(m_probe->one), "") << "the toolkit's own is nearer";
    }
    EXPECT_EQ(shownText(m_probe->vector), before);
}
