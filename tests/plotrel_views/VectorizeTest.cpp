#include "KeepingAction.h"
#include "Scenes.h"

#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/plotrel/SoToPDFAction.h>
#include <kalmyr/plotrel/SoVectorizeHPGLAction.h>

#include "support/Clock.h"
#include "support/ErrorGuard.h"
#include "support/Program.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include <gtest/gtest.h>

using kalmyr::detail::VectorDrawing;
using kalmyr::detail::VectorPrimitive;
using scenes::at;
using scenes::colored;
using scenes::seen;
using scenes::seenFlat;

namespace {

class Vectorize : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        SoPlotrel::init();
    }
    void TearDown() override { SoPlotrel::finish(); }

    static std::size_t count(const VectorDrawing& drawing, VectorPrimitive::Kind kind)
    {
        return static_cast<std::size_t>(
            std::count_if(drawing.primitives.begin(), drawing.primitives.end(),
                          [kind](const VectorPrimitive& one) { return one.kind == kind; }));
    }
    /// The sum of the areas of all polygons, in square millimetres.
    static double areaOf(const VectorDrawing& drawing)
    {
        double sum = 0;
        for (const VectorPrimitive& one : drawing.primitives) {
            const auto* v = &drawing.vertices[one.first];
            for (std::uint32_t i = 2; one.kind == VectorPrimitive::POLYGON && i < one.count; ++i)
                sum += std::abs((v[i - 1].x - v[0].x) * (v[i].y - v[0].y)
                                - (v[i].x - v[0].x) * (v[i - 1].y - v[0].y))
                       / 2;
        }
        return sum;
    }
    /// Draws a scene that cannot be drawn; the error must have `part`, and no file may remain.
    void expectRefused(const std::string& text, const std::string& part)
    {
        const std::string path = m_folder.write("old.pdf", "old");
        SoToPDFAction action;
        support::ErrorScope errors;
        ASSERT_TRUE(action.openFile(path.c_str()));
        action.apply(readScene(text).get());
        EXPECT_FALSE(action.hasDrawn());
        EXPECT_FALSE(action.closeFile());
        EXPECT_TRUE(errors.contains(part)) << (errors.count() ? errors.texts()[0] : "no error");
        EXPECT_EQ(m_folder.read("old.pdf"), "old");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.folder()), {}), 1);
    }

    support::TempFolder m_folder;
};

TEST_F(Vectorize, LeavesOutWhatIsWhollyHidden)
{
    const std::string wall = colored("1 0 0") + "Cube { width 3 height 3 depth .1 } ";
    const std::string behind = colored("0 1 0") + at("0 0 -2", "Sphere { radius 1 }");
    KeepingAction alone, both;
    alone.apply(readScene(seenFlat(wall)).get());
    both.apply(readScene(seenFlat(behind + wall)).get());
    EXPECT_EQ(both.getDrawing().primitives.size(), alone.getDrawing().primitives.size());
}

TEST_F(Vectorize, WritesNoPlaceTwiceWhenHiddenPartsAreCut)
{
    for (const std::string& scene : {seenFlat(scenes::ring()), seenFlat(scenes::soup(80, 1, 5))}) {
        KeepingAction painted, cut;
        cut.setCuttingHiddenParts(true);
        painted.apply(readScene(scene).get());
        cut.apply(readScene(scene).get());
        // The cut pieces cover exactly the pixels that the picture shows.
        const Picture picture = cut.paint();
        const VectorDrawing& drawing = cut.getDrawing();
        VectorDrawing bare = drawing;
        bare.primitives.clear();
        const Picture empty = Painter(bare, kWidth, kHeight).paint();
        std::size_t covered = 0;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                covered += picture.difference(empty, x, y) > 0 ? 1 : 0;
        const double pixel = drawing.width * drawing.height / (kWidth * kHeight);
        EXPECT_NEAR(areaOf(drawing) / (static_cast<double>(covered) * pixel), 1, 0.02);
        EXPECT_GT(areaOf(painted.getDrawing()), 1.1 * areaOf(drawing));
    }
}

TEST_F(Vectorize, CutsWherePensDoNotCover)
{
    SoVectorizeHPGLAction pens;
    KeepingAction action({false, false, false, false});
    action.apply(readScene(seenFlat(scenes::ring())).get());
    KeepingAction cut;
    cut.setCuttingHiddenParts(true);
    cut.apply(readScene(seenFlat(scenes::ring())).get());
    EXPECT_NEAR(areaOf(action.getDrawing()), areaOf(cut.getDrawing()), 1);
}

TEST_F(Vectorize, DrawsTheEdgesThatAreNotHidden)
{
    KeepingAction action;
    action.setStyle(SoVectorizeAction::HIDDEN_LINES);
    action.setNoBackground();
    action.apply(
        readScene(seen(colored("1 0 0") + "Rotation { rotation 1 1 0 .8 } Cube { }")).get());
    const VectorDrawing& drawing = action.getDrawing();
    EXPECT_EQ(count(drawing, VectorPrimitive::POLYGON), 0u);
    // Of the twelve edges of a cube nine are seen, however they are joined.
    std::size_t segments = 0;
    for (const VectorPrimitive& one : drawing.primitives) {
        segments += one.count - 1;
        EXPECT_EQ(drawing.vertices[one.first].red, 0);
    }
    EXPECT_EQ(segments, 9u);

    KeepingAction round;
    round.setStyle(SoVectorizeAction::HIDDEN_LINES);
    round.apply(readScene(seenFlat("Sphere { }")).get());
    for (const auto& vertex : round.getDrawing().vertices) {
        const VectorDrawing& page = round.getDrawing();
        const double radius = page.height / 4; // the view is four units high
        EXPECT_NEAR(
            std::hypot(vertex.x - page.x - page.width / 2, vertex.y - page.y - page.height / 2),
            radius, 0.02 * radius)
            << "only the outline of a sphere is drawn";
    }
}

TEST_F(Vectorize, CutsLinesBehindFacesAndKeepsThoseOnThem)
{
    const std::string lines =
        "LightModel { model BASE_COLOR } " + colored("1 1 0")
        + "Coordinate3 { point [ -2 0 -1, 2 0 -1, -1 .5 .5, 1 .5 .5 ] } LineSet { numVertices [ 2, "
          "2 ] } ";
    KeepingAction action;
    action.apply(
        readScene(seenFlat(lines + colored("0 0 1") + "Cube { width 2 height 2 depth 1 }")).get());
    const VectorDrawing& drawing = action.getDrawing();
    const double unit = drawing.height / 4;
    double behind = 0, on = 0;
    for (const VectorPrimitive& one : drawing.primitives) {
        const auto* v = &drawing.vertices[one.first];
        for (std::uint32_t i = 1; one.kind == VectorPrimitive::LINE && i < one.count; ++i)
            (std::abs(v[i].y - drawing.y - drawing.height / 2) < 1 ? behind : on) +=
                std::abs(v[i].x - v[i - 1].x) / unit;
    }
    EXPECT_NEAR(behind, 2, 0.01); // of four units two are behind the cube
    EXPECT_NEAR(on, 2, 0.01);     // on its face
}

TEST_F(Vectorize, PutsTheDrawingOnThePage)
{
    const SoRef<SoNode> scene = readScene(seenFlat(
        "DrawStyle { lineWidth 5 } LightModel { model BASE_COLOR } Coordinate3 { point [ -1 0 0, 1 "
        "0 0 ] } LineSet { }"));
    KeepingAction action;
    SoVectorOutput& output = *action.getVectorOutput();
    action.apply(scene.get());
    EXPECT_FLOAT_EQ(action.getDrawing().pageWidth, 297);
    // 480 by 384 pixels in 277 by 190 mm.
    EXPECT_NEAR(action.getDrawing().height, 190, 0.01);
    EXPECT_NEAR(action.getDrawing().width, 237.5, 0.01);
    EXPECT_NEAR(action.getDrawing().x, (297 - 237.5) / 2, 0.01);
    EXPECT_NEAR(action.getDrawing().primitives[0].width, 5 * 237.5 / 480, 0.01);

    output.setOrientation(SoVectorOutput::PORTRAIT);
    output.setPageSize(SbVec2f(100, 200));
    output.setMargin(5);
    output.setPixelSize(0.5f);
    action.apply(scene.get());
    EXPECT_FLOAT_EQ(action.getDrawing().pageHeight, 200);
    EXPECT_NEAR(action.getDrawing().width, 90, 0.01);
    EXPECT_NEAR(action.getDrawing().primitives[0].width, 2.5, 0.001);

    // A size of its own: the view takes its proportions, and nothing is distorted.
    output.setDrawingSize(SbVec2f(80, 160));
    action.apply(scene.get());
    EXPECT_FLOAT_EQ(action.getDrawing().height, 160);
    const auto* v = action.getDrawing().vertices.data();
    EXPECT_NEAR(std::abs(v[1].x - v[0].x), 160 / 4 * 2, 0.1);
}

TEST_F(Vectorize, KnowsTheTextInView)
{
    KeepingAction action;
    action.apply(
        readScene(
            seenFlat("Font { size .5 } AsciiText { string [ \"Hello\", \"World\" ] } "
                     + at("40 0 0", "AsciiText { string \"far away\" }")
                     + at("-1 -1 0", "Font { size 12 } Text2 { string [ \"to\", \"screen\" ] }")
                     + at("40 0 0", "Text2 { string \"far away\" }")
                     + at("0 -1 0", "Text3 { string \"Solid\" depth .2 parts ALL }")))
            .get());
    const VectorDrawing& drawing = action.getDrawing();
    ASSERT_EQ(drawing.texts.size(), 5u);
    EXPECT_EQ(drawing.texts[1].text, "World");
    EXPECT_EQ(drawing.texts[4].text, "Solid");
    EXPECT_EQ(count(drawing, VectorPrimitive::TEXT), 5u);
    const auto &first = drawing.texts[2], &second = drawing.texts[3];
    EXPECT_EQ(second.text, "screen");
    EXPECT_NEAR(first.x, drawing.x + drawing.width / 2 - drawing.height / 4, 1);
    EXPECT_NEAR(first.x, second.x, 1);
    EXPECT_LT(second.y, first.y);
    EXPECT_GT(second.length, 2 * first.length);
    // The text lies over its letters.
    const auto& text = drawing.texts[0];
    EXPECT_NEAR(text.x, drawing.x + drawing.width / 2, drawing.height / 40);
    EXPECT_GT(text.length, drawing.height / 8);
}

TEST_F(Vectorize, ConvertsColors)
{
    const SoRef<SoNode> scene =
        readScene(seenFlat("LightModel { model BASE_COLOR } " + colored("1 0 0") + "Cube { } "
                           + colored("1 1 .8") + at("1.5 0 0", "Cube { width 1 }")));
    KeepingAction action;
    action.getVectorOutput()->setColorMode(SoVectorOutput::GREY);
    action.apply(scene.get());
    for (const auto& vertex : action.getDrawing().vertices)
        EXPECT_EQ(vertex.red, vertex.blue);
    action.getVectorOutput()->setColorMode(SoVectorOutput::BLACK_AND_WHITE);
    action.apply(scene.get());
    std::map<float, int> values;
    for (const auto& vertex : action.getDrawing().vertices)
        ++values[vertex.green];
    EXPECT_EQ(values.size(), 2u);
    EXPECT_TRUE(values.count(0) && values.count(1));
}

TEST_F(Vectorize, RefusesWhatShowsNothing)
{
    const char* kNothing = "nothing of the scene is in view";
    expectRefused("#Kalmyr V1.0 ascii\nSeparator { }", kNothing);
    expectRefused(seen(at("0 0 20", "Cube { }")), kNothing); // behind the camera
    std::string points, indices;
    for (int i = 0; i < 1000; ++i) {
        points += "1 " + std::to_string(i) + " 0, ";
        indices += std::to_string(i) + ", " + std::to_string(i) + ", "
                   + std::to_string((i + 1) % 1000) + ", -1, ";
    }
    expectRefused(seen("Coordinate3 { point [ " + points + " ] } IndexedFaceSet { coordIndex [ "
                       + indices + " ] }"),
                  kNothing);
}

TEST_F(Vectorize, LeavesOutBrokenCoordinatesAndTellsOnce)
{
    const std::string broken =
        "Coordinate3 { point [ -1 -1 0, 1 -1 0, 0 1 0, nan 0 0, inf 1 0, 0 2 0 ] } "
        "IndexedFaceSet { coordIndex [ 0, 1, 2, -1, 3, 1, 2, -1, 4, 1, 5, -1 ] } IndexedLineSet { "
        "coordIndex [ 0, 3, -1 ] }";
    support::ErrorScope errors;
    errors.mayStayEmpty();
    const SoRef<SoNode> scene = readScene(seenFlat(broken));
    if (!scene)
        GTEST_SKIP() << "the reader refuses such numbers";
    errors.clear();
    KeepingAction action;
    action.apply(scene.get());
    EXPECT_TRUE(action.hasDrawn());
    for (const auto& vertex : action.getDrawing().vertices)
        EXPECT_TRUE(std::isfinite(vertex.x) && std::isfinite(vertex.y));
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(Vectorize, TellsOfFilesThatCannotBeWritten)
{
    const SoRef<SoNode> scene = readScene(seenFlat("Cube { }"));
    SoToPDFAction action;
    {
        support::ErrorScope errors;
        EXPECT_FALSE(action.openFile(m_folder.path("no/such/folder.pdf").c_str()));
        EXPECT_TRUE(errors.contains("Can not open file "));
    }
    {
        support::ErrorScope errors;
        action.apply(scene.get());
        EXPECT_TRUE(errors.contains("no file is open"));
        EXPECT_FALSE(action.hasDrawn());
    }
    {
        support::ErrorScope errors;
        ASSERT_TRUE(action.openFile("/dev/full"));
        action.apply(scene.get());
        EXPECT_FALSE(action.closeFile());
        EXPECT_TRUE(errors.contains("cannot be written"));
    }
}

TEST_F(Vectorize, StopsWhenTold)
{
    const SoRef<SoNode> scene = readScene(seen(scenes::soup(300, 1, 1)));
    std::vector<float> shares;
    SoToPDFAction action;
    action.setProgressCallback([&](float share) {
        shares.push_back(share);
        return true;
    });
    const std::string path = m_folder.path("out.pdf");
    ASSERT_TRUE(action.openFile(path.c_str()));
    action.apply(scene.get());
    ASSERT_TRUE(action.closeFile());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_GE(shares.front(), 0);
    EXPECT_LE(shares.back(), 1);
    // Stopped at each of the calls: nothing is written, and the old file stays.
    const std::string whole = support::readFile(path);
    for (std::size_t stop = 0; stop < shares.size(); ++stop) {
        std::size_t calls = 0;
        action.setProgressCallback([&](float) { return calls++ < stop; });
        ASSERT_TRUE(action.openFile(path.c_str()));
        action.apply(scene.get());
        EXPECT_TRUE(action.wasStopped());
        EXPECT_FALSE(action.hasDrawn());
        EXPECT_FALSE(action.closeFile());
        EXPECT_EQ(support::readFile(path), whole);
    }
}

TEST_F(Vectorize, DrawsTheSceneThatItWasAppliedTo)
{
    const support::Clock clock; // the file tells when it was made
    std::string files[2];
    for (const bool isChanged : {false, true}) {
        const SoRef<SoNode> scene = readScene(
            seen("AsciiText { string \"words\" } Texture2 { image 1 1 3 0xff0000 } Cone { }"));
        auto* root = static_cast<SoGroup*>(scene.get());
        SoToPDFAction action;
        action.setProgressCallback([&](float) {
            if (isChanged)
                root->removeAllChildren();
            return true;
        });
        const std::string path = m_folder.path("out.pdf");
        ASSERT_TRUE(action.openFile(path.c_str()));
        action.apply(root);
        ASSERT_TRUE(action.closeFile());
        EXPECT_EQ(root->getNumChildren() == 0, isChanged);
        files[isChanged] = support::readFile(path);
    }
    EXPECT_EQ(files[0], files[1]);
}

TEST_F(Vectorize, PutsTheModelIntoThePdf)
{
    SoToPDFAction action;
    action.setModelEmbedded(true);
    const std::string path = m_folder.path("model.pdf");
    ASSERT_TRUE(action.openFile(path.c_str()));
    action.apply(readScene(seen("Cone { }")).get());
    ASSERT_TRUE(action.closeFile());
    const std::string file = support::readFile(path);
    EXPECT_NE(file.find("/Subtype /3D"), std::string::npos);
    EXPECT_NE(file.find("/Subtype /U3D"), std::string::npos);
    // The camera stands 6 before the origin, and sees 45 degrees.
    EXPECT_NE(file.find("/FOV 45 "), std::string::npos);
    EXPECT_NE(file.find(" 0 0 6 ]"), std::string::npos);
}

TEST_F(Vectorize, DrawsAPath)
{
    const SoRef<SoNode> scene = readScene(
        seenFlat(colored("1 0 0") + "Separator { Cube { } } " + at("1.5 0 0", "Sphere { }")));
    const SoRef<SoPath> path(new SoPath(scene.get()));
    path->append(3); // the cube's group
    KeepingAction whole, part;
    whole.apply(scene.get());
    part.apply(path.get());
    EXPECT_TRUE(part.hasDrawn());
    EXPECT_LT(part.getDrawing().primitives.size(), whole.getDrawing().primitives.size());
}

} // namespace
