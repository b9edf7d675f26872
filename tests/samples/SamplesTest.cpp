#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/tilevex/TvSymTool.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include "support/ErrorGuard.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

fs::path scenesDir()
{
    return fs::path(MIRABO_SOURCE_DIR) / "examples" / "scenes";
}

std::vector<std::string> scenesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string kind = entry.path().extension().string();
        if (kind == ".ky" || kind == ".wrl" || kind == ".gz")
            names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string nameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

SoRef<SoNode> readAll(SoInput& in)
{
    if (in.isFileVRML2())
        return SoRef<SoNode>(SoDB::readAllVRML(&in));
    return SoRef<SoNode>(SoDB::readAll(&in));
}

SoRef<SoNode> readScene(const fs::path& file, SbString* header = nullptr)
{
    SoDB::init();
    // As the inspector does; they stay started.
    [[maybe_unused]] static const bool hasManips = TvSymTool::initModule("Manips");
    SoInput in;
    if (!in.openFile(SbString(file.string())))
        return {};
    if (header)
        *header = in.getHeader();
    return readAll(in);
}

std::string written(SoNode* scene, const SbString& header, bool isBinary)
{
    SoOutput out;
    out.setBuffer();
    out.setHeaderString(header);
    out.setBinary(isBinary);
    SoWriteAction(&out).apply(scene);
    return std::string(out.getText());
}

std::string pictureOf(SoNode* scene)
{
    SoOffscreenRenderer renderer(SbViewportRegion(96, 64));
    renderer.setDefaultCamera(true);
    if (!renderer.render(scene))
        return {};
    return std::string(reinterpret_cast<const char*>(renderer.getBuffer()), 3 * 96 * 64);
}

/// What a walk through all children finds.
struct Census {
    std::set<const SoNode*> nodes;
    int occurrences = 0;
    int depth = 0;
    int widest = 0;

    void visit(const SoNode* node, int level)
    {
        ++occurrences;
        depth = std::max(depth, level);
        nodes.insert(node);
        const SoChildList* children = node->getChildren();
        if (!children)
            return;
        widest = std::max(widest, children->getLength());
        for (int i = 0; i < children->getLength(); ++i)
            visit((*children)[i], level + 1);
    }
};

Census countScene(const char* name)
{
    const SoRef<SoNode> scene = readScene(scenesDir() / name);
    Census census;
    if (scene)
        census.visit(scene.get(), 1);
    return census;
}

class Sample : public testing::TestWithParam<std::string> {};
class BrokenSample : public testing::TestWithParam<std::string> {};

} // namespace

// The guard of the test program fails it when reading or drawing posts an error or a warning.
TEST_P(Sample, IsReadAndDrawn)
{
    const SoRef<SoNode> scene = readScene(scenesDir() / GetParam());
    ASSERT_TRUE(scene);
    const SbViewportRegion region(96, 64);
    SoGetBoundingBoxAction bounds(region);
    bounds.apply(scene.get());
    const SbVec3f size = bounds.getBoundingBox().getSize();
    EXPECT_GT(size.length(), 1);
    EXPECT_LT(size.length(), 5000) << "the viewer would see nothing of it";
    if (!SoOffscreenContext::shared().isValid())
        GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
    SoOffscreenRenderer renderer(region);
    renderer.setDefaultCamera(true);
    ASSERT_TRUE(renderer.render(scene.get()));
    std::set<std::string> colors;
    for (int i = 0; i < 96 * 64; ++i)
        colors.insert(std::string(reinterpret_cast<const char*>(renderer.getBuffer()) + 3 * i, 3));
    EXPECT_GT(colors.size(), 60u);
}

// In its own format, and in the two that every scene can be saved in.
TEST_P(Sample, IsItselfAgainWhenItWasSaved)
{
    SbString header;
    const SoRef<SoNode> scene = readScene(scenesDir() / GetParam(), &header);
    ASSERT_TRUE(scene);
    const SbString text = SoOutput::getDefaultASCIIHeader();
    const std::string expected = written(scene.get(), text, false);
    const bool canDraw = SoOffscreenContext::shared().isValid();
    const std::string picture = canDraw ? pictureOf(scene.get()) : std::string();
    const struct {
        SbString header;
        bool isBinary;
    } forms[] = {{header, false}, {text, false}, {SoOutput::getDefaultBinaryHeader(), true}};
    for (const auto& form : forms) {
        SCOPED_TRACE(form.header.getString());
        const std::string bytes = written(scene.get(), form.header, form.isBinary);
        SoInput in;
        ASSERT_TRUE(in.setBuffer(bytes.data(), bytes.size()));
        in.setFolder(SbString(scenesDir().string())); // of the textures
        SoRef<SoNode> again = readAll(in);
        ASSERT_TRUE(again);
        // Whatever is no separator is read into one.
        if (again->getTypeId() != scene->getTypeId())
            again = SoRef<SoNode>(static_cast<SoGroup*>(again.get())->getChild(0));
        EXPECT_TRUE(written(again.get(), form.header, form.isBinary) == bytes) << "saved once more";
        EXPECT_TRUE(written(again.get(), text, false) == expected);
        EXPECT_TRUE(!canDraw || pictureOf(again.get()) == picture);
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, Sample, testing::ValuesIn(scenesIn(scenesDir())), nameOf);

TEST(Samples, ShowWhatTheyAreFor)
{
    ASSERT_GE(scenesIn(scenesDir()).size(), 6u);
    EXPECT_LE(countScene("hello.ky").nodes.size(), 16u);

    const Census shared = countScene("shared.ky");
    EXPECT_GT(shared.occurrences, 3 * static_cast<int>(shared.nodes.size()));

    const Census deep = countScene("deep.ky");
    EXPECT_GT(deep.depth, 150);
    EXPECT_GE(deep.widest, 2000);

    EXPECT_GE(countScene("city.ky.gz").nodes.size(), 100000u);

    const SoRef<SoNode> lights = readScene(scenesDir() / "lights.ky");
    for (const char* type : {"SpotLight", "PointLight", "DirectionalLight", "Switch", "Texture2"}) {
        SoSearchAction search;
        search.setType(SoType::fromName(SbName(type)));
        search.apply(lights.get());
        EXPECT_TRUE(search.isFound()) << type;
    }
}

/// Either refused or read with a warning; in both cases the message says where.
TEST_P(BrokenSample, IsReportedWithItsPlace)
{
    auto errors = support::expectErrors();
    const fs::path file = scenesDir() / "broken" / GetParam();
    {
        const SoRef<SoNode> scene = readScene(file);
        if (scene) {
            SoGetBoundingBoxAction bounds(SbViewportRegion(96, 64));
            bounds.apply(scene.get()); // builds the geometry, which may find faults of its own
        }
    }
    const std::vector<std::string> texts = errors.texts();
    EXPECT_LE(texts.size(), 3u);
    // With the line, but for an archive, whose text ends nowhere.
    const bool isText = GetParam().find(".gz") == std::string::npos;
    const auto saysWhere = [&](const std::string& text) {
        const auto at = text.find(GetParam() + ':');
        return at != std::string::npos
               && (!isText || std::isdigit(text[at + GetParam().size() + 1]));
    };
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), saysWhere));
}

INSTANTIATE_TEST_SUITE_P(Scenes, BrokenSample, testing::ValuesIn(scenesIn(scenesDir() / "broken")),
                         nameOf);
