#include "KeepingAction.h"
#include "Picture.h"
#include "Scenes.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/plotrel/SoToPDFAction.h>
#include <kalmyr/plotrel/SoVectorizePSAction.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include "support/ErrorGuard.h"
#include "support/Program.h"

#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

using kalmyr::detail::VectorPrimitive;

namespace {

Picture render(SoNode* root)
{
    Picture picture;
    SoOffscreenRenderer renderer(SbViewportRegion(kWidth, kHeight));
    renderer.setBackgroundColor(kBackground);
    renderer.setDefaultCamera(true);
    // As sharp as the painter's: a pixel has the colour of its middle.
    renderer.getGLRenderAction()->setTransparencyType(SoGLRenderAction::SORTED_TRIANGLES_BLEND);
    if (!renderer.render(root))
        return picture;
    picture.width = kWidth;
    picture.height = kHeight;
    for (int y = kHeight - 1; y >= 0; --y) {
        const unsigned char* row = renderer.getBuffer() + 3 * static_cast<std::size_t>(y) * kWidth;
        picture.bytes.insert(picture.bytes.end(), row, row + 3 * kWidth);
    }
    return picture;
}

/// Pictures for people to look at, in the folder that the environment names.
void keep(const std::string& name, const Picture& picture)
{
    if (const char* folder = std::getenv("KALMYR_VIEW_PICTURES"))
        writePpm(std::string(folder) + "/" + name + ".ppm", picture);
}

std::set<std::vector<int>> colorsOf(const Picture& picture)
{
    std::set<std::vector<int>> colors;
    for (std::size_t i = 0; i + 2 < picture.bytes.size(); i += 3)
        colors.insert({picture.bytes[i], picture.bytes[i + 1], picture.bytes[i + 2]});
    return colors;
}

bool hasProgram(const std::string& name)
{
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

class VectorizedView : public ::testing::TestWithParam<ViewedScene> {
protected:
    void SetUp() override
    {
        SoDB::init();
        SoPlotrel::init();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        m_scene = readScene(GetParam().text);
        ASSERT_TRUE(m_scene);
        m_expected = render(m_scene.get());
        keep(std::string(GetParam().name) + "_expected", m_expected);
        const std::set<std::vector<int>> colors = colorsOf(m_expected);
        ASSERT_GT(colors.size(), 1u) << "the scene shows nothing";
    }
    void TearDown() override { SoPlotrel::finish(); }

    void expectLike(const Picture& found, const char* kind, double mean, double offShare)
    {
        keep(std::string(GetParam().name) + "_" + kind, found);
        const Likeness likeness = compare(m_expected, found);
        EXPECT_LE(likeness.mean, mean) << kind;
        EXPECT_LE(likeness.offShare, offShare) << kind;
        EXPECT_GT(likeness.compared, 0.3) << kind;
    }

    /// Writes the scene into a file of the given action's format; empty when that failed.
    template <class Action>
    std::string writeFile(Action& action, SoVectorOutput& output, const std::string& name)
    {
        // 96 pixels an inch, and no margin: a pixel of the page is one of the picture.
        constexpr float kPixel = 25.4f / 96;
        output.setPageSize(SbVec2f(kWidth * kPixel, kHeight * kPixel));
        output.setMargin(0);
        output.setMinLineWidth(0);
        action.setViewportRegion(SbViewportRegion(kWidth, kHeight));
        action.setBackgroundColor(kBackground);
        const std::string path = m_folder.path(name);
        if (!output.openFile(path.c_str()))
            return {};
        action.apply(m_scene.get());
        return output.closeFile() ? path : std::string();
    }

    SoRef<SoNode> m_scene;
    Picture m_expected;
    support::TempFolder m_folder;
};

TEST_P(VectorizedView, IsWhatTheRendererShows)
{
    KeepingAction action;
    action.apply(m_scene.get());
    ASSERT_TRUE(action.hasDrawn());
    expectLike(action.paint(), "painted", 2, 0.005);
}

TEST_P(VectorizedView, IsTheSameWithoutHiddenParts)
{
    KeepingAction action;
    action.setCuttingHiddenParts(true);
    action.apply(m_scene.get());
    ASSERT_TRUE(action.hasDrawn());
    expectLike(action.paint(), "cut", 2, 0.005);
}

TEST_P(VectorizedView, IsMuchTheSameInFlatColors)
{
    if (std::string(GetParam().name).starts_with("Texture"))
        GTEST_SKIP() << "a texture becomes its average color";
    KeepingAction action({false, false, false, true});
    action.apply(m_scene.get());
    ASSERT_TRUE(action.hasDrawn());
    for (const VectorPrimitive& one : action.getDrawing().primitives)
        ASSERT_TRUE(!one.shaded && one.opacity == 1 && one.image < 0);
    expectLike(action.paint(), "flat", 6, 0.02);
}

TEST_P(VectorizedView, OpensAsPdf)
{
    if (!hasProgram("pdftoppm"))
        GTEST_SKIP() << "pdftoppm is not installed";
    SoToPDFAction action;
    const std::string path = writeFile(action, *action.getVectorOutput(), "view.pdf");
    ASSERT_FALSE(path.empty());
    const std::string picture = m_folder.path("view");
    const std::string size = std::to_string(kWidth) + " -H " + std::to_string(kHeight);
    ASSERT_EQ(
        std::system(("pdftoppm -r 96 -x 0 -y 0 -W " + size + " -singlefile " + path + " " + picture)
                        .c_str()),
        0);
    expectLike(readPpm(picture + ".ppm"), "pdf", 2, 0.005);
}

TEST_P(VectorizedView, OpensAsPostScript)
{
    if (!hasProgram("gs"))
        GTEST_SKIP() << "ghostscript is not installed";
    if (std::string(GetParam().name).starts_with("Transparent"))
        GTEST_SKIP() << "PostScript has no transparency";
    SoVectorizePSAction action;
    const std::string path = writeFile(action, *action.getVectorOutput(), "view.ps");
    ASSERT_FALSE(path.empty());
    const std::string picture = m_folder.path("view.ppm");
    const std::string size = std::to_string(kWidth) + "x" + std::to_string(kHeight);
    ASSERT_EQ(std::system(("gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=ppmraw -r96 -g" + size
                           + " -sOutputFile=" + picture + " " + path)
                              .c_str()),
              0);
    expectLike(readPpm(picture), "ps", 2, 0.005);
}

std::string nameOf(const ::testing::TestParamInfo<ViewedScene>& info)
{
    return info.param.name;
}
INSTANTIATE_TEST_SUITE_P(Scenes, VectorizedView, ::testing::ValuesIn(viewedScenes()), nameOf);

} // namespace
