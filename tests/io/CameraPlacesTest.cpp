// Cameras and viewpoints in odd places: viewers, pictures and what files are converted to show the
// same as the scene said plainly, one camera in front of everything.
#include "IoSupport.h"
#include "Pictures.h"

#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoSceneCamera.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/vrml/SoVRMLBindable.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <cstring>
#include <sstream>
#include <string>

namespace {

constexpr const char* kVrml1 = "#VRML V1.0 ascii\n";

/// What moves the camera in a template, whose `$T` is written for a scene of size 1.
enum Moved { STAYS, SHIFTED, TURNED, TWICE_AS_LARGE };

struct Place {
    const char* text; ///< $A: the camera that counts; $B, $C: others; $S, $U: shapes
    Moved moved = STAYS;
};

constexpr Place kOldPlaces[] = {
    {"$A $S $U"},
    {"$A $B $S $U"},
    {"$A $C $B $S $U"},
    {"DEF Cameras Switch { whichChild 0 $A $B } $S $U"},
    {"Switch { whichChild 1 $B $A } $S $U"},
    {"Switch { whichChild -3 $A $C } $S $U"},
    {"Switch { $A $B } $S $U"},
    {"Switch { $C } $A $S $U"},
    {"Separator { $A } $S $U"},
    {"Separator { Separator { $A } } Separator { $S } $U"},
    {"$S $U $A"},
    {"$S $A $U"},
    {"$S Separator { $A $U }"},
    {"Separator { $A $S } $U"},
    {"Separator { $A $S } Separator { $B $U }"},
    {"$A $S $C $U"},
    {"$A $S Separator { $C $U }"},
    {"Group { $A } $C $S $U"},
    {"Group { Group { $S $A } $C } $U"},
    {"Switch { whichChild 0 Separator { $A } } $S $U"},
    {"Separator { Switch { whichChild 1 Group { $B } Group { $A } } $S } $U"},
    {"LOD { range [ 5 ] Separator { $A } Separator { $B } } $S $U"},
    {"WWWAnchor { $A $S } $U"},
    {"Separator { $T $A } $S $U", SHIFTED},
    {"TransformSeparator { $T $A } $S $U", TURNED},
    {"Separator { $T $A } $S Separator { $B $U }", TURNED},
    {"Separator { $T $A } $S $U", TWICE_AS_LARGE},
};

constexpr Place kNewPlaces[] = {
    {"$A $S $U"},
    {"$A $B $S $U"},
    {"$S $U $A"},
    {"$S $A $C $U"},
    {"Group { children [ Group { children $A } $S ] } $U"},
    {"Switch { whichChoice 1 choice [ $B $A ] } $S $U"},
    {"Switch { choice [ $A $B ] } $S $U"},
    {"Switch { choice [ $B ] } $A $S $U"},
    {"LOD { range [ 5 ] level [ $A $B ] } $S $U"},
    {"Collision { children [ $A $S ] } Anchor { children [ $B $U ] }"},
    {"PROTO Eye [ ] { $A } $S $U Eye { } $B"},
    {"PROTO World [ exposedField MFNode inside [ ] ] { Group { children IS inside } } World { "
     "inside [ $S $A ] } $U"},
    {"Transform { $T children [ $A $B ] } $S $U", SHIFTED},
    {"Transform { $T children $A } $S $U", TURNED},
    {"Transform { $T children Group { children [ $A ] } } $S $U", TWICE_AS_LARGE},
};

struct Example {
    const char* text;
    Moved moved;
    bool isNew;      ///< VRML97
    bool isParallel; ///< the camera that counts
    float size;      ///< of the world
};

std::vector<Example> makeExamples()
{
    constexpr float kSizes[] = {1, 2000, 0.001f};
    std::vector<Example> examples;
    for (const Place& place : kOldPlaces)
        for (const bool isParallel : {false, true})
            examples.push_back(
                {place.text, place.moved, false, isParallel, kSizes[examples.size() % 3]});
    for (const Place& place : kNewPlaces)
        for (const float size : {2000.0f, 0.001f})
            examples.push_back({place.text, place.moved, true, false, size});
    return examples;
}

std::ostream& operator<<(std::ostream& out, const Example& example)
{
    return out << (example.isParallel ? "parallel, size " : "size ") << example.size << ": "
               << example.text;
}

std::string words(const SbVec3f& v)
{
    std::ostringstream out;
    out << v[0] << ' ' << v[1] << ' ' << v[2];
    return out.str();
}

std::string boxText(const Example& example, bool isNew, const char* color, const SbVec3f& place)
{
    const std::string at = words(place * example.size);
    const float side = 2 * example.size;
    if (isNew)
        return "Transform { translation " + at
               + " children Shape { appearance Appearance { material Material { diffuseColor 0 0 0 "
                 "ambientIntensity 0 emissiveColor "
               + color + " } } geometry Box { size " + words({side, side, side}) + " } } } ";
    std::ostringstream text;
    text << "Separator { Material { ambientColor 0 0 0 diffuseColor 0 0 0 emissiveColor " << color
         << " } Translation { translation " << at << " } Cube { width " << side << " height "
         << side << " depth " << side << " } } ";
    return text.str();
}

/// `extra`: further fields, of formats that have them.
std::string cameraText(const Example& example, SbVec3f position, float angle, bool isNew,
                       bool isParallel, float scale = 1, const std::string& extra = {})
{
    std::ostringstream text;
    text << (isNew        ? "Viewpoint"
             : isParallel ? "OrthographicCamera"
                          : "PerspectiveCamera")
         << " { position " << words(position * example.size) << " orientation 0 1 0 " << angle;
    if (isParallel)
        text << " height " << 9 * example.size * scale;
    else
        text << (isNew ? " fieldOfView 0.7" : " heightAngle 0.7");
    if (!isNew)
        text << " focalDistance " << 14 * example.size * scale;
    text << extra << " } ";
    return text.str();
}

const SbVec3f kPosition(4, 1, 14);
constexpr float kAngle = 0.25f;

std::string fill(const Example& example)
{
    std::string moves;
    if (example.moved == SHIFTED)
        moves = "translation " + words(SbVec3f(0, 2, 3) * example.size);
    else if (example.moved == TURNED)
        moves = "rotation 0 1 0 0.5";
    else if (example.moved == TWICE_AS_LARGE)
        moves = example.isNew ? "scale 2 2 2" : "scaleFactor 2 2 2";
    const bool isNew = example.isNew;
    const std::pair<const char*, std::string> parts[] = {
        {"$T", isNew ? moves : "Transform { " + moves + " }"},
        {"$A", cameraText(example, kPosition, kAngle, isNew, example.isParallel)},
        {"$B", cameraText(example, {-15, 0, 0}, -1.57f, isNew, !isNew && !example.isParallel)},
        {"$C", cameraText(example, {0, 0, 60}, 3.14f, isNew, example.isParallel)},
        {"$S", boxText(example, isNew, "1 0.2 0", {-2, 0, 0})
                   + boxText(example, isNew, "0 1 0", {0.5f, 1, -6})},
        {"$U", boxText(example, isNew, "0.2 0.4 1", {2, -1, 1})}};
    std::string text = example.text;
    for (const auto& [name, value] : parts)
        for (auto at = text.find(name); at != text.npos; at = text.find(name, at + value.size()))
            text.replace(at, std::strlen(name), value);
    return isNew ? io::kVrml97 + text : kVrml1 + std::string("Separator { ") + text + " }";
}

/// The same scene in so many words.
std::string plainly(const Example& example)
{
    SbVec3f position = kPosition;
    float angle = kAngle, scale = 1;
    if (example.moved == SHIFTED) {
        position += SbVec3f(0, 2, 3);
    } else if (example.moved == TURNED) {
        position = SbRotation(SbVec3f(0, 1, 0), 0.5f).rotated(position);
        angle += 0.5f;
    } else if (example.moved == TWICE_AS_LARGE) {
        position *= 2;
        scale = 2;
    }
    std::ostringstream planes;
    planes << " nearDistance " << example.size << " farDistance " << 60 * example.size;
    return std::string(io::kAscii) + "Separator { "
           + cameraText(example, position, angle, false, example.isParallel, scale, planes.str())
           + boxText(example, false, "1 0.2 0", {-2, 0, 0})
           + boxText(example, false, "0 1 0", {0.5f, 1, -6})
           + boxText(example, false, "0.2 0.4 1", {2, -1, 1}) + "}";
}

std::string written(SoNode* node, const char* header)
{
    SoOutput out;
    out.setHeaderString(SbString(std::string(header, std::string(header).size() - 1)));
    out.setBuffer();
    SoWriteAction(&out).apply(node);
    return std::string(out.getText());
}

std::string asVrml1(SoNode* scene)
{
    SoToVRMLAction convert;
    convert.apply(scene);
    return written(convert.getVRMLSceneGraph(), kVrml1);
}

std::string asVrml97(SoNode* scene)
{
    SoToVRML2Action convert;
    convert.apply(scene);
    return written(convert.getVRML2SceneGraph(), io::kVrml97);
}

io::Picture inViewer(SoNode* scene)
{
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSize(SbVec2i32(io::Picture::kSize, io::Picture::kSize));
    viewer->setSceneGraph(scene);
    viewer->prepareFrame();
    return io::drawAsSeen(viewer->getSceneManager()->getSceneGraph());
}

class CameraPlaces : public io::IoTest, public testing::WithParamInterface<Example> {
protected:
    static void SetUpTestSuite() { kalmyr::initGui(); }
};

} // namespace

TEST_P(CameraPlaces, AllShowWhatIsMeant)
{
    if (!io::canDraw())
        GTEST_SKIP() << "no OpenGL";
    const io::Picture wanted = io::drawAsSeen(io::read(plainly(GetParam())).get());
    ASSERT_GT(wanted.coverage(), 0.03);
    const std::string text = fill(GetParam());
    const auto expectShown = [&](const std::string& file, const char* what) {
        const SoRef<SoNode> scene = io::read(file);
        ASSERT_TRUE(scene) << what << file;
        EXPECT_LE(io::drawAsShown(scene.get()).differenceTo(wanted), 0.01) << what << file;
    };
    expectShown(text, "as it is: ");
    const SoRef<SoNode> scene = io::read(text);
    const std::string old = asVrml1(scene.get()), recent = asVrml97(scene.get());
    expectShown(io::write(scene.get()), "Kalmyr: ");
    expectShown(old, "VRML 1.0: ");
    expectShown(recent, "VRML97: ");
    expectShown(asVrml97(io::read(old).get()), "VRML97 by VRML 1.0: ");
    expectShown(asVrml1(io::read(recent).get()), "VRML 1.0 by VRML97: ");
    EXPECT_LE(inViewer(scene.get()).differenceTo(wanted), 0.01) << "in a viewer";
}

INSTANTIATE_TEST_SUITE_P(Scenes, CameraPlaces, testing::ValuesIn(makeExamples()));

TEST_F(CameraPlaces, ViewpointsOnTheEarthCountAsOthers)
{
    const SoRef<SoNode> scene = io::read(
        std::string(io::kVrml97)
        + "GeoViewpoint { geoOrigin DEF O GeoOrigin { geoCoords \"20 30 0\" rotateYUp TRUE } "
          "position \"20 30 100\" fieldOfView 0.5 } DEF Near Viewpoint { } DEF Far GeoViewpoint { "
          "geoOrigin USE O position \"20 30 500\" } Shape { geometry Box { } }");
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSceneGraph(scene.get());
    const auto height = [&] { return viewer->getCamera()->position.getValue()[1]; };
    EXPECT_NEAR(height(), 100, 0.1f);
    static_cast<SoVRMLBindable*>(SoNode::getByName(SbName("Near")))->set_bind = true;
    EXPECT_NEAR(height(), 0, 0.1f);
    static_cast<SoVRMLBindable*>(SoNode::getByName(SbName("Far")))->set_bind = true;
    EXPECT_NEAR(height(), 500, 0.1f);
    const SoRef<SoNode> old = io::read(asVrml1(scene.get()));
    const SoRef<SoCamera> camera = SoSceneCamera::find(old.get()).makeCamera(1);
    ASSERT_TRUE(camera);
    EXPECT_NEAR(camera->position.getValue()[1], 100, 0.1f);
}

TEST_F(CameraPlaces, OverlaysOfKalmyrScenesKeepTheirCameras)
{
    if (!io::canDraw())
        GTEST_SKIP() << "no OpenGL";
    const std::string scene =
        std::string(io::kAscii)
        + "Separator { LightModel { model BASE_COLOR } PerspectiveCamera { position 0 0 20 "
          "nearDistance 1 farDistance 40 } BaseColor { rgb 1 0 0 } Cube { } Separator { "
          "OrthographicCamera { position 7 0 5 height 4 } BaseColor { rgb 0 1 0 } Translation { "
          "translation 6 0 0 } Cube { } } }";
    const SoRef<SoNode> root = io::read(scene);
    const io::Picture wanted = io::drawAsSeen(root.get());
    ASSERT_GT(wanted.coverage(), 0.2);
    EXPECT_LE(io::drawAsShown(root.get()).differenceTo(wanted), 0.02);
    EXPECT_LE(inViewer(root.get()).differenceTo(wanted), 0.02);
}
