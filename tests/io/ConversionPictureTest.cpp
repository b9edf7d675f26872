// What is converted must look as the original does.
#include "IoSupport.h"
#include "Pictures.h"

#include "support/ErrorGuard.h"

#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <algorithm>

namespace {

constexpr const char* kKalmyr = "#Kalmyr V1.0 ascii\n";
constexpr const char* kVrml1 = "#VRML V1.0 ascii\n";
constexpr const char* kVrml2 = "#VRML V2.0 utf8\n";

struct Example {
    const char* name;
    const char* header;
    const char* text;
};

std::ostream& operator<<(std::ostream& out, const Example& example)
{
    return out << example.name;
}

#define QUAD_POINTS "0 0 0, 2 0 0, 2 2 0, 0 2 0, 0 0 -2, 2 0 -2, 2 2 -2, 0 2 -2"
#define QUAD_FACES "0 1 2 3 -1 1 5 6 2 -1 3 2 6 7 -1"
// A bracket with two inner corners.
#define CONCAVE "0 0 0, 4 0 0, 4 1 0, 1 1 0, 1 3 0, 4 3 0, 4 4 0, 0 4 0"
#define CHECKER                                                                                    \
    "4 4 3 0xff0000 0x00ff00 0x0000ff 0xffff00 0x00ffff 0xff00ff 0xffffff 0x202020 "               \
    "0x800000 0x008000 0x000080 0x808000 0x008080 0x800080 0x808080 0xff8000"

const Example kExamples[] = {
    {"Bodies", kKalmyr,
     "Separator { Material { diffuseColor 1 0.5 0 specularColor 0.5 0.5 0.5 shininess 0.3 }"
     " Cube { width 1 height 2 depth 3 } Translation { translation 3 0 0 } Sphere { }"
     " Translation { translation 3 0 0 } Cone { } Translation { translation 3 0 0 }"
     " Cylinder { radius 0.5 height 3 } }"},
    {"BodiesWithPartsMissing", kKalmyr,
     "Separator { Cone { parts SIDES } Translation { translation 3 0 0 } Cylinder { parts (SIDES | "
     "BOTTOM) } Translation { translation 3 0 0 } Cylinder { parts TOP } }"},
    {"FaceSet", kKalmyr,
     "Separator { Coordinate3 { point [ " CONCAVE " ] } ShapeHints { faceType UNKNOWN_FACE_TYPE } "
     "Material { diffuseColor 0 1 0.5 } FaceSet { numVertices 8 } }"},
    {"FacesWithAColorEach", kKalmyr,
     "Separator { Coordinate3 { point [ " QUAD_POINTS " ] } Material { diffuseColor [ 1 0 0, 0 1 0,"
     " 0 0 1 ] } MaterialBinding { value PER_FACE } IndexedFaceSet { coordIndex [ " QUAD_FACES " ] "
     "} }"},
    {"CornersWithAColorEach", kKalmyr,
     "Separator { Coordinate3 { point [ " QUAD_POINTS " ] } Material { diffuseColor [ 1 0 0, 0 1 0,"
     " 0 0 1, 1 1 1 ] } MaterialBinding { value PER_VERTEX_INDEXED } IndexedFaceSet { coordIndex "
     "[ " QUAD_FACES " ] materialIndex [ 0 1 2 3 -1 1 1 2 2 -1 3 3 0 0 -1 ] } }"},
    {"SmoothAndCreased", kKalmyr,
     "Separator { Coordinate3 { point [ " QUAD_POINTS " ] } ShapeHints { vertexOrdering "
     "COUNTERCLOCKWISE creaseAngle 2 } IndexedFaceSet { coordIndex [ " QUAD_FACES
     " ] } Translation { translation 3 0 0 } ShapeHints { vertexOrdering COUNTERCLOCKWISE "
     "creaseAngle 0.1 } IndexedFaceSet { coordIndex [ " QUAD_FACES " ] } }"},
    {"NormalsOfItsOwn", kKalmyr,
     "Separator { Coordinate3 { point [ " QUAD_POINTS
     " ] } Normal { vector [ 0 0 1, 0.7 0.7 0, 0 1 "
     "0.4 ] } NormalBinding { value PER_FACE } IndexedFaceSet { coordIndex [ " QUAD_FACES " ] } }"},
    {"QuadMesh", kKalmyr,
     "Separator { Material { diffuseColor 1 1 0 } Coordinate3 { point [ 0 0 0, 1 0 0.5, 2 0 0, 0 1 "
     "0.5, 1 1 1, 2 1 0.5, 0 2 0, 1 2 0.5, 2 2 0 ] } QuadMesh { verticesPerColumn 3 verticesPerRow "
     "3 } }"},
    {"Strips", kKalmyr,
     "Separator { Coordinate3 { point [ 0 0 0, 0 1 0, 1 0 0, 1 1 0, 2 0 1, 2 1 1 ] } "
     "TriangleStripSet { numVertices 6 } Translation { translation 0 2 0 } "
     "IndexedTriangleStripSet { coordIndex [ 0 1 2 3 -1 2 3 4 5 ] } }"},
    {"SolidText", kKalmyr,
     "Separator { Rotation { rotation 0 1 0 0.7 } Font { size 2 } Material { diffuseColor [ 1 0.5 "
     "0, 0 1 1, 1 0 1 ] } MaterialBinding { value PER_PART } Text3 { string [ \"Ab\", \"&i\" ] "
     "depth 0.7 } }"},
    {"TrianglesAndQuads", kKalmyr,
     "Separator { Material { diffuseColor [ 1 1 0, 0 1 1 ] } MaterialBinding { value PER_FACE } "
     "Coordinate3 { point [ 0 0 0, 1 0 0.5, 0 1 0, 1 1 0, 0 1 0.4, 1 0 0.2, 2 0 1, 2 1 1 ] } "
     "TriangleSet { numTriangles 2 } Translation { translation 0 1.5 0 } QuadSet { numQuads 1 } "
     "Translation { translation 2.5 0 0 } IndexedQuadSet { coordIndex [ 0 1 3 2 1 6 7 3 ] } "
     "Translation { translation 0 -1.5 0 } IndexedTriangleSet { coordIndex [ 0 1 2 1 6 3 ] } }"},
    {"Nurbs", kKalmyr,
     "Separator { ShapeHints { vertexOrdering COUNTERCLOCKWISE } Coordinate4 { point [ -1 -1 0 1, "
     "0 "
     "-.7 .7 .7, 1 -1 0 1, -.7 0 .7 .7, 0 0 1 .5, .7 0 .7 .7, -1 1 0 1, 0 .7 .7 .7, 1 1 0 1 ] } "
     "ProfileCoordinate2 { point [ .1 .1, .9 .2, .5 .9 ] } LinearProfile { } NurbsSurface { "
     "numUControlPoints 3 numVControlPoints 3 uKnotVector [ 0, 0, 0, 1, 1, 1 ] vKnotVector [ 0, 0, "
     "0, 1, 1, 1 ] } LightModel { model BASE_COLOR } Translation { translation 2 0 0 } NurbsCurve "
     "{ "
     "numControlPoints 5 knotVector [ 0, 0, 0, 1, 2, 3, 3, 3 ] } }"},
    {"Lines", kKalmyr,
     "Separator { LightModel { model BASE_COLOR } Material { diffuseColor"
     " [ 1 1 0, 0 1 1 ] } MaterialBinding { value PER_FACE } Coordinate3 { point [ " QUAD_POINTS
     " ] } LineSet { numVertices [ 4, 4 ] } Translation { translation 3 0 0 } IndexedLineSet { "
     "coordIndex [ 0 1 2 3 0 -1 4 5 6 7 4 ] } }"},
    {"Points", kKalmyr,
     "Separator { LightModel { model BASE_COLOR } Material { diffuseColor"
     " 1 0 1 } Coordinate3 { point [ " QUAD_POINTS " ] } PointSet { } }"},
    {"IndexedPoints", kKalmyr,
     "Separator { LightModel { model BASE_COLOR } Material { diffuseColor [ 1 0 1, 0 1 1, 1 1 0, 1 "
     "1 1, 1 0 0, 0 1 0 ] "
     "} MaterialBinding { value PER_FACE } Coordinate3 { point [ " QUAD_POINTS
     " ] } IndexedPointSet { coordIndex [ 7, 0, 6, 1, 5, 2 ] } }"},
    {"VertexProperty", kKalmyr,
     "Separator { IndexedFaceSet { vertexProperty VertexProperty { vertex [ " QUAD_POINTS
     " ] orderedRGBA [ 0xff0000ff, 0x00ff00ff, 0x0000ffff ] materialBinding PER_FACE } coordIndex "
     "[ " QUAD_FACES " ] } }"},
    {"Textured", kKalmyr,
     "Separator { Material { diffuseColor 1 1 1 } Texture2 { image " CHECKER
     " } Cube { } Translation { translation 3 0 0 } Sphere "
     "{ } Translation { translation 3 0 0 } Cylinder { } Translation { translation 3 0 0 } Cone { "
     "} "
     "}"},
    {"TexturedWithCoordinates", kKalmyr,
     "Separator { Material { diffuseColor 1 1 1 } Texture2 { image " CHECKER
     " } Coordinate3 { point [ " QUAD_POINTS
     " ] } TextureCoordinate2 { point [ 0 0, 1 0, 1 1, 0 1 ] } Texture2Transform { scaleFactor 0.5 "
     "0.5 translation 0.25 0 rotation 0.3 } IndexedFaceSet { coordIndex [ " QUAD_FACES
     " ] textureCoordIndex [ 0 1 2 3 -1 0 1 2 3 -1 0 1 2 3 -1 ] } }"},
    {"TexturedWithoutCoordinates", kKalmyr,
     "Separator { Material { diffuseColor 1 1 1 } Texture2 { image " CHECKER
     " wrapS CLAMP } Coordinate3 { point [ " QUAD_POINTS
     " ] } IndexedFaceSet { coordIndex [ " QUAD_FACES " ] } }"},
    {"OldText", kVrml1,
     "Separator { FontStyle { size 4 } Material { diffuseColor 1 1 0 } AsciiText { string [ "
     "\"HIL\", \"TE\" ] justification CENTER } }"},
    {"NewLinesAndPoints", kVrml2,
     "Shape { geometry IndexedLineSet { coord DEF C Coordinate { point [ " QUAD_POINTS
     " ] } coordIndex [ 0 1 2 3 0 -1 4 5 6 7 4 ] color Color { color [ 1 0 0 0 1 0 ] } "
     "colorPerVertex FALSE } } Transform { translation 3 0 0 children Shape { appearance "
     "Appearance "
     "{ material Material { emissiveColor 1 1 0 } } geometry IndexedLineSet { coord USE C "
     "coordIndex"
     " [ 0 6 -1 1 7 ] } } } Shape { geometry PointSet { coord USE C color Color { color [ 1 1 1 1 "
     "1 "
     "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 ] } } }"},
    {"NewText", kVrml2,
     "Shape { appearance Appearance { material Material { diffuseColor 1 1 0 } } geometry Text { "
     "string [ \"HIL\" \"TE\" ] fontStyle FontStyle { size 4 justify \"MIDDLE\" } } }"},
    {"Transparent", kKalmyr,
     "Separator { Material { diffuseColor 1 0 0 } Cube { } Material { diffuseColor 0 0 1 "
     "transparency 0.5 } Translation { translation 0.5 0.5 1 } Sphere { } }"},
    {"Emissive", kKalmyr,
     "Separator { Material { diffuseColor 0 0 0 emissiveColor 0 1 0 } Cube { } Translation { "
     "translation 3 0 0 } LightModel { model BASE_COLOR } BaseColor { rgb 1 0 1 } Sphere { } }"},
    {"Transformations", kKalmyr,
     "Separator { Transform { translation 1 0 0 rotation 0 1 0 0.5 scaleFactor 1 2 1 "
     "scaleOrientation 0 0 1 0.4 center 0 1 0 } Cube { } Separator { Rotation { rotation 1 0 0 0.7 "
     "} Scale { scaleFactor 0.5 0.5 2 } Translation { translation 5 0 0 } Cube { } } "
     "TransformSeparator { Translation { translation 0 50 0 } } MatrixTransform { matrix 1 0 0 0 "
     "0.5"
     " 1 0 0 0 0 1 0 -3 0 0 1 } Cone { } }"},
    {"LightsShineOnWhatFollows", kKalmyr,
     "Separator { PointLight { location 0 0 3 color 1 0 0 } Separator { DirectionalLight { color 0 "
     "0 1 direction -1 0 0 } Cube { } } Translation { translation 3 0 0 } SpotLight { location 0 0 "
     "4 direction 0 0 -1 cutOffAngle 0.4 dropOffRate 0 color 0 1 0 } Cube { } Translation { "
     "translation 3 0 0 } Cone { } DirectionalLight { color 0 0 1 direction 0 -1 0 } Cube { } "
     "Translation { translation 3 0 0 } Cube { } }"},
    {"ChoicesAndDistances", kKalmyr,
     "Separator { Switch { whichChild 1 Cube { } Sphere { } } Translation { translation 3 0 0 } "
     "Switch { whichChild -1 Cube { } } Switch { whichChild -3 Cube { } Sphere { radius 1.3 } } "
     "Translation { translation 3 0 0 } LOD { range [ 1000 ] Cone { } Cube { } } }"},
    {"MaterialLeaksOutOfGroups", kKalmyr,
     "Separator { Group { Material { diffuseColor 1 0 0 } Translation { translation 2 0 0 } } Cube "
     "{ } Separator { Material { diffuseColor 0 1 0 } } Translation { translation 3 0 0 } Cube { } "
     "}"},
    {"SharedUnderDifferentMaterials", kKalmyr,
     "Separator { Material { diffuseColor 1 0 0 } DEF Body Separator { Cube { } } Translation { "
     "translation 3 0 0 } Material { diffuseColor 0 0 1 } USE Body }"},
    {"Kit", kKalmyr,
     "ShapeKit { appearance AppearanceKit { material Material { diffuseColor 0 1 1 } } transform "
     "Transform { rotation 0 0 1 0.6 } shape Cone { } }"},
    {"NewBodies", kVrml2,
     "Shape { appearance DEF A Appearance { material Material { diffuseColor 1 0.2 0.6 } } "
     "geometry "
     "Box { size 1 2 3 } } Transform { translation 3 0 0 children Shape { appearance USE A "
     "geometry "
     "Sphere { radius 1.2 } } } Transform { translation 6 0 0 children Shape { appearance USE A "
     "geometry Cone { bottom FALSE } } } Transform { translation 9 0 0 children Shape { appearance "
     "USE A geometry Cylinder { top FALSE side TRUE } } }"},
    {"NewFacesWithColors", kVrml2,
     "Shape { appearance Appearance { material Material { } } geometry IndexedFaceSet { coord DEF "
     "C "
     "Coordinate { point [ " QUAD_POINTS " ] } coordIndex [ " QUAD_FACES " ] color Color { color [ "
     "1 0 0 0 1 0 0 0 1 ] } colorPerVertex FALSE colorIndex [ 2 1 0 ] } } Transform { translation "
     "3 "
     "0 0 children Shape { appearance Appearance { material Material { } } geometry IndexedFaceSet "
     "{ solid FALSE coord USE C coordIndex [ " QUAD_FACES
     " ] color Color { color [ 1 0 0 0 1 0 0 0 "
     "1 1 1 0 1 0 1 0 1 1 1 1 1 0 0 0 ] } creaseAngle 0.5 } } }"},
    {"NewConcave", kVrml2,
     "Shape { appearance Appearance { material Material { diffuseColor 0 1 0 } } geometry "
     "IndexedFaceSet { coord Coordinate { point [ " CONCAVE " ] } coordIndex [ 0 1 2 3 4 5 6 7 ] "
     "convex FALSE solid FALSE } }"},
    {"NewTextured", kVrml2,
     "Shape { appearance Appearance { material Material { } texture PixelTexture { image " CHECKER
     " } textureTransform TextureTransform { scale 2 2 rotation 0.2 } } geometry Box { } } "
     "Transform { translation 3 0 0 children Shape { appearance Appearance { texture PixelTexture "
     "{ "
     "image " CHECKER
     " repeatS FALSE } } geometry IndexedFaceSet { coord Coordinate { point [ " QUAD_POINTS
     " ] } coordIndex [ " QUAD_FACES
     " ] texCoord TextureCoordinate { point [ 0 0 1 0 1 1 0 1 ] } texCoordIndex [ 0 1 2 3 -1 0 1 2 "
     "3 -1 0 1 2 3 ] } } }"},
    {"Grid", kVrml2,
     "Shape { appearance Appearance { material Material { diffuseColor 0.8 0.8 0 } } geometry "
     "ElevationGrid { xDimension 3 zDimension 3 height [ 0 1 0 1 2 1 0 1 0 ] creaseAngle 3 solid "
     "FALSE } }"},
    {"Extruded", kVrml2,
     "Shape { appearance Appearance { material Material { diffuseColor 0 0.6 1 } } geometry "
     "Extrusion { spine [ 0 0 0, 0 1 0, 1 2 0 ] scale [ 1 1, 0.5 0.5, 1 1 ] convex TRUE solid "
     "FALSE "
     "} }"},
    {"NewGroups", kVrml2,
     "Transform { translation 1 0 0 rotation 0 0 1 0.5 center 1 0 0 scale 1 2 1 children [ Switch "
     "{ "
     "whichChoice 1 choice [ Group { } Shape { appearance Appearance { material Material { "
     "diffuseColor 1 0 0 } } geometry Box { } } ] } LOD { range [ 1000 ] level [ Shape { "
     "appearance "
     "Appearance { material Material { diffuseColor 0 1 0 } } geometry Sphere { radius 1.3 } } "
     "Group"
     " { } ] } Anchor { children Transform { translation 3 0 0 children Shape { appearance "
     "Appearance { material Material { } } geometry Cone { } } } } Collision { children Transform "
     "{ "
     "translation -3 0 0 children Shape { appearance Appearance { material Material { } } geometry "
     "Cylinder { } } } } ] }"},
    {"NewLights", kVrml2,
     "Group { children [ PointLight { location 0 0 3 color 1 0 0 } Shape { appearance DEF A "
     "Appearance { material Material { } } geometry Box { } } ] } Transform { translation 3 0 0 "
     "children [ Shape { appearance USE A geometry Box { } } DirectionalLight { color 0 0 1 "
     "direction 0 -1 0 } ] } Transform { translation 1 0 0 rotation 0 0 1 1.57 children SpotLight "
     "{ "
     "location 0 0 5 color 0 1 0 } }"},
    {"Prototypes", kVrml2,
     "PROTO Ball [ field SFColor c 1 0 0 field SFVec3f at 0 0 0 ] { Transform { translation IS at "
     "children Shape { appearance Appearance { material Material { diffuseColor IS c } } geometry "
     "Sphere { } } } } Ball { } Ball { at 3 0 0 c 0 1 0 } PROTO Paint [ field SFColor c 1 1 0 ] { "
     "Material { diffuseColor IS c } } Transform { translation 6 0 0 children Shape { appearance "
     "Appearance { material Paint { } } geometry Box { } } }"},
};

class Conversion : public io::IoTest, public testing::WithParamInterface<Example> {
protected:
    static std::string write(SoNode* node, const char* header, bool binary = false)
    {
        SoOutput out;
        out.setBinary(binary);
        if (!binary)
            out.setHeaderString(
                std::string(header).substr(0, std::string(header).size() - 1).c_str());
        out.setBuffer();
        SoWriteAction action(&out);
        action.apply(node);
        out.closeFile();
        return std::string(out.getText());
    }

    static std::string toVrml1(SoNode* scene)
    {
        SoToVRMLAction convert;
        convert.apply(scene);
        return write(convert.getVRMLSceneGraph(), kVrml1);
    }

    static std::string toVrml2(SoNode* scene)
    {
        SoToVRML2Action convert;
        convert.reuseAppearanceNodes(true);
        convert.reuseGeometryNodes(true);
        convert.apply(scene);
        return write(convert.getVRML2SceneGraph(), kVrml2);
    }

    static void expectAlike(const std::string& text, const io::Picture& wanted, const SbBox3f& box)
    {
        // Edges of round bodies fall on other pixels.
        const double tolerance = std::min(0.02, wanted.coverage() / 4);
        const SoRef<SoNode> again = io::read(text);
        ASSERT_TRUE(again) << text;
        EXPECT_LE(io::draw(again.get(), box).differenceTo(wanted), tolerance) << text;
    }
};

} // namespace

TEST_P(Conversion, LooksLikeTheOriginal)
{
    if (!io::canDraw())
        GTEST_SKIP() << "no OpenGL";
    const SoRef<SoNode> scene = io::read(std::string(GetParam().header) + GetParam().text);
    ASSERT_TRUE(scene);
    const SbBox3f box = io::boundsOf(scene.get());
    const io::Picture wanted = io::draw(scene.get(), box);
    ASSERT_GT(wanted.coverage(), 0.0005) << "nothing to be seen";
    expectAlike(write(scene.get(), kKalmyr), wanted, box);
    expectAlike(write(scene.get(), kKalmyr, true), wanted, box);
    const std::string first = toVrml1(scene.get()), second = toVrml2(scene.get());
    expectAlike(first, wanted, box);
    expectAlike(second, wanted, box);
    expectAlike(toVrml2(io::read(first).get()), wanted, box);
    expectAlike(toVrml1(io::read(second).get()), wanted, box);
}

INSTANTIATE_TEST_SUITE_P(Scenes, Conversion, testing::ValuesIn(kExamples),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(Conversion, SeveralTexturesStayInVrml97)
{
    if (!io::canDraw())
        GTEST_SKIP() << "no OpenGL";
    const std::string square = "Coordinate3 { point [ 0 0 0, 4 0 0, 4 4 0, 0 4 0 ] } "
                               "TextureCoordinate2 { point [ 0 0, 1 0, 1 1, 0 1 ] } ";
    const std::string first = "Texture2 { model REPLACE image " CHECKER " } ";
    const std::string other = "Texture2 { image 2 1 3 0x4080c0 0xc08040 } ";
    const std::string scenes[] = {
        first + "TextureUnit { unit 1 mode ADD } " + other + "TextureUnit { } " + square,
        first + "TextureUnit { unit 1 } " + other
            + "Texture2Transform { scaleFactor 2 1 rotation .4 "
            + "translation .1 .2 } TextureCoordinate2 { point [ 0 0, 0 1, 1 1, 1 0 ] } "
              "TextureUnit { unit 2 mode BLENDFACTORALPHA factor 1 1 1 .4 } Texture2 { image 1 1 3 "
              "0xff0000 } TextureUnit { } "
            + square,
        "TextureUnit { unit 1 mode SUBTRACT alphaMode SELECTARG1 source FACTOR factor .3 .6 .1 1 } "
            + other + "TextureUnit { } Material { diffuseColor .3 .6 .1 } " + square};
    for (const std::string& scene : scenes) {
        for (const char* model : {"BASE_COLOR", "PHONG"}) {
            const SoRef<SoNode> root =
                io::read(std::string(kKalmyr) + "Separator { LightModel { model " + model + " } "
                         + scene + "FaceSet { numVertices 4 } }");
            ASSERT_TRUE(root);
            const SbBox3f box = io::boundsOf(root.get());
            const io::Picture wanted = io::draw(root.get(), box);
            ASSERT_GT(wanted.coverage(), 0.0005);
            expectAlike(toVrml2(root.get()), wanted, box);
        }
    }
}

TEST_F(Conversion, ComputedCoordinatesAndPalettesStay)
{
    if (!io::canDraw())
        GTEST_SKIP() << "no OpenGL";
    const char* const scenes[] = {
        "Texture2 { image " CHECKER
        " } TextureCoordinatePlane { directionS .3 .1 0 directionT 0 .2 "
        ".5 } Cube { } Translation { translation 3 0 0 } Sphere { }",
        "MaterialBinding { value PER_FACE } ColorIndex { index [ 3 5 1 ] } Coordinate3 { point "
        "[ " QUAD_POINTS " ] } IndexedFaceSet { coordIndex [ " QUAD_FACES " ] }"};
    for (const char* scene : scenes) {
        const SoRef<SoNode> root = io::read(std::string(kKalmyr) + "Separator { " + scene + " }");
        ASSERT_TRUE(root);
        const SbBox3f box = io::boundsOf(root.get());
        const io::Picture wanted = io::draw(root.get(), box);
        expectAlike(toVrml1(root.get()), wanted, box);
        expectAlike(toVrml2(root.get()), wanted, box);
    }
}

TEST_F(Conversion, OpacityOfEachCornerStaysInVrml97)
{
    const SoRef<SoNode> root = io::read(std::string(kKalmyr)
                                        + "Separator { MaterialBinding { value PER_VERTEX } "
                                          "Material { diffuseColor [ 1 0 0, 0 1 0, "
                                          "0 0 1 ] transparency [ 0, .4, 1 ] } Coordinate3 { point "
                                          "[ 0 0 0, 1 0 0, 1 1 0 ] } FaceSet "
                                          "{ numVertices 3 } }");
    const std::string text = toVrml2(root.get());
    EXPECT_NE(text.find("ColorRGBA"), std::string::npos) << text;
    EXPECT_NE(text.find("0 1 0 0.6"), std::string::npos) << text;
}

TEST_F(Conversion, WhatFormatsLackIsTold)
{
    const support::ErrorScope errors = support::expectErrors();
    const SoRef<SoNode> root = io::read(
        std::string(kKalmyr)
        + "Separator { AlphaTest { function LESS } PolygonOffset { } DepthBuffer { test FALSE } "
          "Texture3 { images VOLUME 1 1 2 1 0 1 } Cube { } }");
    EXPECT_EQ(toVrml2(root.get()).find("Texture"), std::string::npos);
    for (const char* type : {"AlphaTest", "PolygonOffset", "DepthBuffer", "Texture3"})
        EXPECT_TRUE(errors.contains(type)) << type;
}

TEST_F(Conversion, PicturesTellScenesApart)
{
    if (!io::canDraw())
        GTEST_SKIP() << "no OpenGL";
    const SbBox3f box(SbVec3f(-1, -1, -1), SbVec3f(1, 1, 1));
    const auto picture = [&](const char* text) {
        return io::draw(io::read(std::string(kKalmyr) + text).get(), box);
    };
    const io::Picture cube = picture("Separator { Material { diffuseColor 1 0 0 } Cube { } }");
    EXPECT_EQ(cube.differenceTo(cube), 0);
    EXPECT_GT(
        cube.differenceTo(picture("Separator { Material { diffuseColor 1 0 0 } Sphere { } }")),
        0.05);
    EXPECT_GT(
        cube.differenceTo(picture("Separator { Material { diffuseColor 1 0.5 0 } Cube { } }")),
        0.05);
}

TEST_F(Conversion, CamerasSeeTheSameAfterTheWayThere)
{
    if (!io::canDraw())
        GTEST_SKIP() << "no OpenGL";
    const SoRef<SoNode> scene = io::read(
        std::string(kKalmyr)
        + "Separator { PerspectiveCamera { position 3 2 6 orientation -0.3 1 0 0.45 "
          "nearDistance 0.1 farDistance 100 heightAngle 0.6 } DirectionalLight { direction "
          "-1 -1 -1 } Material { diffuseColor 1 0.7 0 } Cube { } }");
    ASSERT_TRUE(scene);
    const io::Picture wanted = io::drawAsSeen(scene.get());
    EXPECT_GT(wanted.coverage(), 0.05);
    const std::string first = toVrml1(scene.get());
    EXPECT_LE(io::drawAsSeen(io::read(first).get()).differenceTo(wanted), 0.01) << first;
    const std::string back = toVrml1(io::read(toVrml2(scene.get())).get());
    EXPECT_LE(io::drawAsSeen(io::read(back).get()).differenceTo(wanted), 0.01) << back;
}
