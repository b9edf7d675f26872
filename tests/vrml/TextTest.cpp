#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <gtest/gtest.h>

#include <string>

namespace {

class TextTest : public testing::Test {
protected:
    TextTest() { SoDB::init(); }
};

SoRef<SoSeparator> scene(const std::string& text)
{
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return SoRef<SoSeparator>(SoDB::readAll(&in));
}

SbBox3f boxOf(SoNode* node)
{
    SoGetBoundingBoxAction bounds{SbViewportRegion(100, 100)};
    bounds.apply(node);
    return bounds.getBoundingBox();
}

SbBox3f vrml97(const std::string& body)
{
    return boxOf(scene("#VRML V2.0 utf8\nShape { geometry Text { " + body + " } }").get());
}

SbBox3f vrml1(const std::string& body)
{
    return boxOf(scene("#VRML V1.0 ascii\n" + body).get());
}

std::string written(SoNode* node, const char* header)
{
    SoOutput out;
    out.setHeaderString(header);
    out.setBuffer();
    SoWriteAction(&out).apply(node);
    return std::string(out.getText());
}

} // namespace

TEST_F(TextTest, StandsWhereItsFontStyleSays)
{
    const SbBox3f plain = vrml97("string [ \"HI\" ]");
    ASSERT_FALSE(plain.isEmpty());
    EXPECT_NEAR(plain.getMin()[0], 0, 0.15f);
    EXPECT_NEAR(plain.getMin()[1], 0, 0.05f);
    EXPECT_NEAR(plain.getMax()[1], 0.7f, 0.15f);
    EXPECT_EQ(plain.getMin()[2], plain.getMax()[2]);

    const SbBox3f large = vrml97("string \"HI\" fontStyle FontStyle { size 3 justify \"END\" }");
    EXPECT_NEAR(large.getMax()[1], plain.getMax()[1] * 3, 0.01f);
    EXPECT_NEAR(large.getMax()[0], 0, 0.45f);
    EXPECT_LT(large.getMin()[0], -2);

    const SbBox3f lines = vrml97("string [ \"H\" \"H\" \"H\" ] fontStyle FontStyle { spacing 2 "
                                 "justify [ \"MIDDLE\" \"FIRST\" ] }");
    EXPECT_NEAR(lines.getMin()[1], -4, 0.05f);
    EXPECT_NEAR(lines.getMin()[0], -lines.getMax()[0], 0.1f);

    const SbBox3f column = vrml97("string \"HHHH\" fontStyle FontStyle { horizontal FALSE }");
    EXPECT_GT(column.getMax()[1] - column.getMin()[1], 3);
    EXPECT_LT(column.getMax()[0] - column.getMin()[0], 1.1f);
    EXPECT_LE(column.getMax()[1], 0.01f);
}

TEST_F(TextTest, FitsLengthsAndExtent)
{
    const SbBox3f fitted = vrml97("string [ \"HHHHH\" \"HH\" ] length [ 10 2 ]");
    EXPECT_NEAR(fitted.getMax()[0], 10, 0.4f);
    const SbBox3f shrunk = vrml97("string [ \"HHHHHHHHHH\" ] maxExtent 2");
    EXPECT_NEAR(shrunk.getMax()[0], 2, 0.1f);
    EXPECT_NEAR(shrunk.getMax()[1], 0.7f, 0.15f);
    const SbBox3f old = vrml1("FontStyle { size 4 } AsciiText { string [ \"HH\", \"HH\" ] "
                              "width [ 20, 0 ] justification CENTER }");
    EXPECT_NEAR(old.getMax()[0], 10, 0.8f); // the sides of the letters
    EXPECT_NEAR(old.getMin()[1], -4, 0.1f);
}

TEST_F(TextTest, DrawsLatinLettersAndHoles)
{
    const auto triangles = [](const char* string) {
        SoGetPrimitiveCountAction count;
        count.apply(
            scene(std::string("#VRML V1.0 ascii\nAsciiText { string \"") + string + "\" }").get());
        return count.getTriangleCount();
    };
    EXPECT_EQ(triangles(""), 0u);
    EXPECT_EQ(triangles("  "), 0u);
    EXPECT_GT(triangles("\xc3\xa9"), triangles("e"));    // UTF-8: e with an accent
    EXPECT_EQ(triangles("\xe9"), triangles("\xc3\xa9")); // Latin-1
    EXPECT_GT(triangles("B"), triangles("I"));           // two holes
}

TEST_F(TextTest, StaysTextInOtherFormats)
{
    const auto old = scene("#VRML V1.0 ascii\nFontStyle { family SANS style BOLD size 2 }\n"
                           "AsciiText { string [ \"a\", \"b\" ] spacing 1.5 justification RIGHT }");
    SoToVRML2Action toNew;
    toNew.apply(old.get());
    const std::string text = written(toNew.getVRML2SceneGraph(), "#VRML V2.0 utf8");
    for (const char* part : {"Text {", "family \"SANS\"", "style \"BOLD\"", "size 2", "spacing 1.5",
                             "justify \"END\""})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    const auto back = scene(text);
    SoToVRMLAction toOld;
    toOld.apply(back.get());
    const std::string again = written(toOld.getVRMLSceneGraph(), "#VRML V1.0 ascii");
    for (const char* part : {"AsciiText {", "family SANS", "style BOLD", "size 2", "spacing 1.5",
                             "justification RIGHT"})
        EXPECT_NE(again.find(part), std::string::npos) << part << "\n" << again;
    const SbBox3f a = boxOf(old.get()), b = boxOf(scene(again).get());
    EXPECT_LT((a.getMin() - b.getMin()).length() + (a.getMax() - b.getMax()).length(), 1e-4f);
}
