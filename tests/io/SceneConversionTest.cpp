#include "IoSupport.h"
#include "Pictures.h"

#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/vrml/SoVRMLAppearance.h>
#include <kalmyr/vrml/SoVRMLFog.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLMaterial.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <algorithm>

namespace fs = std::filesystem;

namespace {

struct Measure {
    std::uint64_t lines, points;
    SbBox3f box;
};

Measure measure(SoNode* root)
{
    SoGetPrimitiveCountAction count;
    count.apply(root);
    SoGetBoundingBoxAction bounds{SbViewportRegion(100, 100)};
    bounds.apply(root);
    return {count.getLineCount(), count.getPointCount(), bounds.getBoundingBox()};
}

void expectSame(const Measure& a, const Measure& b)
{
    EXPECT_EQ(a.lines, b.lines);
    EXPECT_EQ(a.points, b.points);
    ASSERT_EQ(a.box.isEmpty(), b.box.isEmpty());
    if (a.box.isEmpty())
        return;
    const float tolerance = 0.01f * (a.box.getMax() - a.box.getMin()).length();
    EXPECT_LE((a.box.getMin() - b.box.getMin()).length(), tolerance);
    EXPECT_LE((a.box.getMax() - b.box.getMax()).length(), tolerance);
}

/// Cameras are taken out of the scene.
void expectSamePicture(SoNode* scene, const io::Picture& wanted, const SbBox3f& box)
{
    // Round bodies of the formats have meshes of different fineness.
    constexpr double kTolerance = 0.02;
    EXPECT_LE(io::draw(scene, box).differenceTo(wanted), kTolerance);
}

std::string write(SoNode* node, const char* header)
{
    SoOutput out;
    out.setHeaderString(header);
    out.setBuffer();
    SoWriteAction action(&out);
    action.apply(node);
    return std::string(out.getText());
}

/// A scene that finds other files where the corpus file does.
SoRef<SoNode> readBeside(const std::string& file, const std::string& text)
{
    SoInput in;
    in.setFolder(SbString(fs::path(file).parent_path().string()));
    in.setBuffer(text.data(), text.size());
    return SoRef<SoNode>(in.isFileVRML2() ? static_cast<SoNode*>(SoDB::readAllVRML(&in))
                                          : SoDB::readAll(&in));
}

SoRef<SoNode> toVrml2(SoNode* root)
{
    SoToVRML2Action convert;
    convert.reuseAppearanceNodes(true);
    convert.reuseGeometryNodes(true);
    convert.apply(root);
    return SoRef<SoNode>(static_cast<SoNode*>(convert.getVRML2SceneGraph()));
}

SoRef<SoNode> toVrml1(SoNode* root)
{
    SoToVRMLAction convert;
    convert.apply(root);
    return SoRef<SoNode>(convert.getVRMLSceneGraph());
}

template <class T>
T* find(SoNode* root)
{
    SoSearchAction search;
    search.setType(T::getClassTypeId());
    search.setSearchingAll(true);
    search.apply(root);
    return search.isFound() ? static_cast<T*>(search.getPath()->getTail()) : nullptr;
}

std::vector<std::string> corpus()
{
    std::vector<std::string> files;
    for (const auto& entry :
         fs::recursive_directory_iterator(fs::path(MIRABO_TEST_DATA_DIR) / "formats")) {
        const std::string name = entry.path().string();
        if (name.find("_bad_") == std::string::npos
            && (name.ends_with(".ky") || name.ends_with(".wrl")))
            files.push_back(name);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string nameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name = fs::path(info.param).parent_path().filename().string() + "_"
                       + fs::path(info.param).stem().string();
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

class Converted : public io::IoTest, public testing::WithParamInterface<std::string> {};
using ConvertTest = io::IoTest;

} // namespace

TEST_P(Converted, ShowsTheSameInEitherVersion)
{
    auto errors = support::expectErrors();
    errors.mayStayEmpty();
    SoInput in;
    ASSERT_TRUE(in.openFile(GetParam()));
    const SoRef<SoNode> root(SoDB::readAll(&in));
    ASSERT_TRUE(root);
    const Measure wanted = measure(root.get());
    const std::string second = write(toVrml2(root.get()).get(), "#VRML V2.0 utf8");
    const auto again = readBeside(GetParam(), second);
    ASSERT_TRUE(again) << second;
    expectSame(measure(again.get()), wanted);
    EXPECT_EQ(write(toVrml2(again.get()).get(), "#VRML V2.0 utf8"), second);
    const std::string first = write(toVrml1(root.get()).get(), "#VRML V1.0 ascii");
    const auto old = readBeside(GetParam(), first);
    ASSERT_TRUE(old) << first;
    expectSame(measure(old.get()), wanted);
    const SbBox3f box = io::boundsOf(root.get());
    // Neither format has styles of drawing, and the old one has no fog.
    if (box.isEmpty() || !io::canDraw() || find<SoDrawStyle>(root.get()))
        return;
    const io::Picture picture = io::draw(root.get(), box);
    expectSamePicture(again.get(), picture, box);
    if (!find<SoVRMLFog>(root.get()))
        expectSamePicture(old.get(), picture, box);
}

INSTANTIATE_TEST_SUITE_P(Corpus, Converted, testing::ValuesIn(corpus()), nameOf);

TEST_F(ConvertTest, TakesMaterialCameraAndSwitchAlong)
{
    const auto root = io::read(std::string(io::kAscii) + R"(
Separator {
  DEF Eye PerspectiveCamera { position 1 2 3 heightAngle 0.5 }
  Material { diffuseColor 1 0 0 transparency 0.25 }
  Separator { Translation { translation 5 0 0 } DEF Choice Switch { whichChild 1 Cube { } Sphere { } } }
  LightModel { model BASE_COLOR } Cone { }
})");
    ASSERT_TRUE(root);
    const auto vrml = toVrml2(root.get());
    EXPECT_EQ(find<SoVRMLViewpoint>(vrml.get())->position.getValue(), SbVec3f(1, 2, 3));
    EXPECT_EQ(find<SoVRMLSwitch>(vrml.get())->whichChoice.getValue(), 1);
    EXPECT_EQ(find<SoVRMLSwitch>(vrml.get())->getName(), "Choice");
    const auto* material = find<SoVRMLMaterial>(vrml.get());
    EXPECT_EQ(material->diffuseColor.getValue(), SbColor(1, 0, 0));
    EXPECT_EQ(material->transparency.getValue(), 0.25f);
    // And back: what only VRML97 has becomes what VRML 1.0 has.
    const auto old = toVrml1(vrml.get());
    EXPECT_EQ(find<SoSwitch>(old.get())->whichChild.getValue(), 1);
    expectSame(measure(old.get()), measure(root.get()));
}

TEST_F(ConvertTest, KeepsSharingWithinBounds)
{
    std::string text = "DEF S0 Separator { Cube { } }\n";
    for (int i = 1; i < 40; ++i)
        text += "DEF S" + std::to_string(i) + " Separator { USE S" + std::to_string(i - 1)
                + " USE S" + std::to_string(i - 1) + " }\n";
    const auto root =
        io::read(io::kAscii + ("Separator { " + text.substr(0, text.rfind("DEF")) + "}"));
    ASSERT_TRUE(root);
    EXPECT_LT(write(toVrml2(root.get()).get(), "#VRML V2.0 utf8").size(), 20000u);
    // Groups of VRML97 are handed out as they are.
    std::string groups = std::string(io::kVrml97) + "DEF G0 Group { }\n";
    for (int i = 1; i < 60; ++i)
        groups += "DEF G" + std::to_string(i) + " Group { children [ USE G" + std::to_string(i - 1)
                  + " USE G" + std::to_string(i - 1) + " ] }\n";
    const auto many = io::read(groups);
    ASSERT_TRUE(many);
    EXPECT_LT(write(toVrml2(many.get()).get(), "#VRML V2.0 utf8").size(), 20000u);
}
