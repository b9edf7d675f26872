#pragma once

#include <cmath>
#include <random>
#include <string>
#include <vector>

/// A scene that is drawn by the renderer and as vectors.
struct ViewedScene {
    const char* name;
    std::string text;
};

namespace scenes {

inline std::string seen(const std::string& content,
                        const std::string& camera = "PerspectiveCamera { position 0 0 6 "
                                                    "nearDistance 1 farDistance 30 }",
                        const std::string& lights = "DirectionalLight { direction -.4 -.6 -1 }")
{
    return "#Kalmyr V1.0 ascii\nSeparator { " + camera + " " + lights + " " + content + " }";
}

inline std::string seenFlat(const std::string& content, float height = 4)
{
    return seen(content,
                "OrthographicCamera { position 0 0 10 nearDistance 1 farDistance 20 height "
                    + std::to_string(height) + " }");
}

inline std::string at(const std::string& place, const std::string& content)
{
    return "Separator { Translation { translation " + place + " } " + content + " }";
}

inline std::string colored(const std::string& color, const std::string& more = "")
{
    return "Material { diffuseColor " + color + " " + more + " } ";
}

/// Triangles of random places and colours that intersect and overlap each other in rings.
inline std::string soup(int count, float size, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> place(-2, 2), offset(-size, size), color(0, 1);
    const auto number = [](float v) { return std::to_string(v) + " "; };
    std::string points, colors, faces;
    for (int i = 0; i < count; ++i) {
        const float x = place(random), y = place(random), z = place(random);
        for (int k = 0; k < 3; ++k)
            points += number(x + offset(random)) + number(y + offset(random))
                      + number(z + offset(random)) + ", ";
        colors += number(color(random)) + number(color(random)) + number(color(random)) + ", ";
        faces += std::to_string(3 * i) + ", " + std::to_string(3 * i + 1) + ", "
                 + std::to_string(3 * i + 2) + ", -1, ";
    }
    return "LightModel { model BASE_COLOR } Material { diffuseColor [ " + colors
           + " ] } MaterialBinding { value PER_FACE } Coordinate3 { point [ " + points
           + " ] } IndexedFaceSet { coordIndex [ " + faces + " ] }";
}

/// A wavy sheet of 2 * side * side triangles with smooth normals.
inline std::string sheet(int side)
{
    std::string points;
    for (int j = 0; j <= side; ++j)
        for (int i = 0; i <= side; ++i) {
            const float x = 4.0f * static_cast<float>(i) / static_cast<float>(side) - 2;
            const float y = 4.0f * static_cast<float>(j) / static_cast<float>(side) - 2;
            points += std::to_string(x) + " " + std::to_string(y) + " "
                      + std::to_string(0.4f * std::sin(3 * x) * std::cos(4 * y)) + ", ";
        }
    const std::string row = std::to_string(side + 1);
    return "ShapeHints { creaseAngle 3 vertexOrdering COUNTERCLOCKWISE } Coordinate3 { point [ "
           + points + " ] } QuadMesh { verticesPerRow " + row + " verticesPerColumn " + row + " }";
}

constexpr const char* kChecker =
    "Texture2 { image 4 4 3 0xff0000 0x00ff00 0x0000ff 0xffff00 0x00ffff 0xff00ff 0xffffff "
    "0x808080 0x204060 0x604020 0x206040 0x402060 0xff8000 0x80ff00 0x0080ff 0x8000ff } ";

constexpr const char* kSquare = "Coordinate3 { point [ -1 -1 0, 1 -1 0, 1 1 0, -1 1 0 ] } "
                                "TextureCoordinate2 { point [ 0 0, 2 0, 2 2, 0 2 ] } "
                                "FaceSet { numVertices 4 } ";

/// Bars of which each lies over the next: nothing can be drawn first.
inline std::string ring()
{
    std::string bars = "LightModel { model BASE_COLOR } ";
    const char* colors[] = {"1 0 0", "0 .7 0", "0 0 1", ".8 .6 0"};
    for (int i = 0; i < 4; ++i)
        bars += "Separator { " + colored(colors[i]) + "Rotation { rotation 0 0 1 "
                + std::to_string(1.5707963f * static_cast<float>(i))
                + " } Translation { translation 0 -.8 0 } Rotation { rotation 0 1 0 .5 } "
                  "Cube { width 3 height .4 depth .02 } } ";
    return bars;
}

/// A spiral of short segments that comes from behind the eye and leaves the view at the sides, and
/// the border of a round face.
inline std::string dashedCurves()
{
    std::string points, corners;
    for (int i = 0; i < 400; ++i) {
        const double angle = 0.06 * i, radius = 0.4 + 0.006 * i;
        points += std::to_string(radius * std::cos(angle)) + " "
                  + std::to_string(radius * std::sin(angle)) + " " + std::to_string(8 - 0.025 * i)
                  + ", ";
    }
    for (int i = 0; i < 60; ++i)
        corners += std::to_string(std::cos(i * 0.10471976)) + " "
                   + std::to_string(std::sin(i * 0.10471976)) + " 0, ";
    return "LightModel { model BASE_COLOR } DrawStyle { lineWidth 4 linePattern 0x00ff style LINES "
           "} "
           + colored("1 1 0")
           + "Separator { ClipPlane { plane 0 1 0 -1.2 } Coordinate3 { point "
             "[ "
           + points + " ] } LineSet { numVertices 400 } } " + colored("0 1 1")
           + "Coordinate3 { point [ " + corners + " ] } FaceSet { numVertices 60 }";
}

} // namespace scenes

inline std::vector<ViewedScene> viewedScenes()
{
    using namespace scenes;
    const std::string shiny = colored(".8 .5 .2", "specularColor .6 .6 .6 shininess .4");
    return {
        {"RoundShapes", seen(shiny + at("-1.2 0 0", "Sphere { }") + at("1 .8 0", "Cone { }")
                             + colored(".2 .5 .9") + at("1.4 -1.2 -.5", "Cylinder { }"))},
        {"Cubes", seen(colored(".7 .2 .2")
                       + "Rotation { rotation 1 1 0 .8 } Cube { } Translation { translation 1.2 .6 "
                         ".4 } "
                       + colored(".2 .7 .3") + "Cube { }")},
        {"IntersectingFaces",
         seenFlat("LightModel { model BASE_COLOR } Separator { " + colored("1 0 0")
                  + "Rotation { rotation 0 1 0 .6 } Cube { width 3 height 2 depth .01 } } "
                  + colored("0 0 1")
                  + "Rotation { rotation 1 0 0 .7 } Cube { width 2 height 3 depth .01 }")},
        {"RingOfBars", seenFlat(ring())},
        {"RandomTriangles", seen(soup(60, 1.5f, 1))},
        {"ManySmallTriangles", seenFlat(soup(1500, 0.4f, 2))},
        {"LongSplinters", seen(soup(40, 4, 3))},
        {"TextAndLines",
         seen(colored("1 .9 .6")
              + "Separator { Font { size .8 } AsciiText { string [ \"Hidden\", \"lines\" ] "
                "justification CENTER } } DrawStyle { lineWidth 3 } LightModel { model BASE_COLOR "
                "} "
              + colored("0 1 1")
              + "Coordinate3 { point [ -2 -1 -1, 2 1.4 1, -2 1.4 -.5, 2 -1.2 .5 ] } LineSet { "
                "numVertices [ 2, 2 ] } "
              + colored(".3 .3 .8") + at("0 -.9 0", "Sphere { radius .7 }"))},
        {"DashesAndPoints",
         seenFlat("LightModel { model BASE_COLOR } DrawStyle { lineWidth 4 linePattern 0x0ff0 "
                  "pointSize 12 } "
                  + colored("1 1 0")
                  + "Coordinate3 { point [ -2 -1 0, 2 -1 0, 2 1 0, -2 1 0, 0 0 1, .6 .2 -1 ] } "
                    "IndexedLineSet { coordIndex [ 0, 1, 2, 3, 0, -1 ] } "
                  + colored(".9 .4 .9") + "PointSet { } " + colored(".2 .4 .2")
                  + "Cube { width 1.6 height 1 depth .5 }")},
        {"DashesAlongCurves", seenFlat(dashedCurves())},
        {"CutByNearPlane", seen(colored(".4 .7 .9")
                                    + "Rotation { rotation 0 1 0 .4 } Cube { width 2 height 1.4 "
                                      "depth 14 }",
                                "PerspectiveCamera { position .3 1.5 6 nearDistance 2 farDistance "
                                "11 }")},
        {"CutByPlanes", seen("ClipPlane { plane 1 1 0 -.3 } ClipPlane { plane 0 0 -1 -1.3 } "
                             + shiny + "Sphere { radius 1.8 }")},
        {"Textures", seen(std::string(kChecker) + "Rotation { rotation 1 .3 0 1 } "
                          + colored("1 1 1") + "Scale { scaleFactor 1.8 1.8 1 } " + kSquare)},
        {"TexturedSphere", seen(std::string(kChecker) + colored("1 1 1") + "Sphere { radius 1.7 } "
                                + colored(".5 .5 .5") + at("1 0 1.2", "Cube { width .8 }"))},
        {"Transparent",
         seenFlat(colored(".9 .9 .2") + at("0 0 -1", "Cube { width 3 height 1 depth .5 }")
                  + colored("1 0 0", "transparency .5")
                  + at("-.5 .3 0", "Cube { width 2 height 2 depth .1 }")
                  + colored("0 0 1", "transparency .3")
                  + at(".6 -.3 1", "Cube { width 2 height 2 depth .1 }"))},
        {"TransparentSphere",
         seen(colored(".3 .9 .4") + at("0 0 -2", "Cube { }") + colored(".4 .5 1", "transparency .6")
              + "ShapeHints { vertexOrdering COUNTERCLOCKWISE shapeType SOLID "
                "} Sphere { radius 1.5 }")},
        {"TransparentLayersOfOneShape",
         seenFlat("LightModel { model BASE_COLOR } " + colored("1 .2 .2", "transparency .5")
                  + "Coordinate3 { point [ -1.5 -1 0, .5 -1 0, .5 1 0, -1.5 1 0, -.5 -1.4 1, 1.5 "
                    "-1.4 1, 1.5 .6 1, -.5 .6 1 ] } IndexedFaceSet { coordIndex [ 0, 1, 2, 3, -1, "
                    "4, 5, 6, 7, -1 ] }")},
        {"SeveralLights",
         seen(colored(".8 .8 .8") + "Sphere { radius 1.2 } "
                  + at("0 -1.4 0", "Cube { width 6 height .2 depth 5 }"),
              "PerspectiveCamera { position 0 0 6 nearDistance 1 farDistance 30 }",
              "PointLight { location 2 2 2 color 1 .6 .4 } SpotLight { location -2 3 2 direction "
              "2 -3 -2 cutOffAngle .5 dropOffRate .2 color .4 .6 1 }")},
        {"Fog", seen("Environment { fogType HAZE fogColor .7 .7 .8 fogVisibility 14 } "
                     + colored(".8 .2 .2") + at("-1 0 0", "Sphere { }") + at("1 0 -4", "Sphere { }")
                     + at("3 1 -8", "Sphere { }"))},
        {"FacesOfManyColors",
         seen("Rotation { rotation 1 1 0 .7 } Material { diffuseColor [ 1 0 0, 0 1 0, 0 0 1, 1 1 0 "
              "] } MaterialBinding { value PER_VERTEX } Coordinate3 { point [ -1 -1 0, 1.5 -1 0, 1 "
              "1.4 0, -1.4 1 .5 ] } IndexedFaceSet { coordIndex [ 0, 1, 2, 3, -1 ] materialIndex [ "
              "0, 1, 2, 3, -1 ] }")},
        {"GradientAndAnnotation", seen("GradientBackground { color0 .2 .3 .6 color1 .9 .8 .6 } "
                                       + colored(".7 .3 .3") + "Sphere { radius 1.4 } Annotation { "
                                       + colored(".2 .9 .2") + at(".6 0 -3", "Cube { }") + " }")},
        {"Strips",
         seen("ShapeHints { vertexOrdering COUNTERCLOCKWISE } Rotation { rotation 0 1 0 .4 } "
              "Coordinate3 { point [ -2 -1 0, -2 1 0, -1 -1 .5, -1 1 .5, 0 -1 0, 0 1 0, .5 -1 0, "
              ".5 1 0, 1.2 -1 .6, 1.4 1 .6, 2 -1 0, 2 .4 0 ] } "
              + colored(".9 .5 .3") + "TriangleStripSet { numVertices [ 6 ] } "
              + colored(".3 .6 .9")
              + "IndexedTriangleStripSet { coordIndex [ 6, 7, 8, 9, 10, 11, -1 ] }")},
        {"SolidText", seen("Rotation { rotation 0 1 0 .6 } Font { size 1.6 } " + colored(".8 .5 .2")
                           + "Text3 { string \"Ag8\" depth .5 justification CENTER }")},
        {"Nurbs",
         seen("ShapeHints { vertexOrdering COUNTERCLOCKWISE } " + colored(".8 .5 .2")
              + "Coordinate4 { point [ -1 -1 0 1, 0 -.7 .7 .7, 1 -1 0 1, -.7 0 .7 .7, 0 0 1 .5, .7 "
                "0 "
                ".7 .7, -1 1 0 1, 0 .7 .7 .7, 1 1 0 1 ] } Complexity { value .2 } "
                "ProfileCoordinate2 { point [ .1 .1, .9 .2, .5 .9 ] } LinearProfile { } "
                "NurbsSurface "
                "{ numUControlPoints 3 numVControlPoints 3 uKnotVector [ 0, 0, 0, 1, 1, 1 ] "
                "vKnotVector [ 0, 0, 0, 1, 1, 1 ] } DrawStyle { lineWidth 3 } IndexedNurbsCurve { "
                "numControlPoints 5 coordIndex [ 0, 1, 2, 8, 6 ] knotVector [ 0, 0, 0, 1, 2, 3, 3, "
                "3 "
                "] }")},
        {"SizedInPixels",
         seen(colored(".2 .4 .9") + at("0 0 -3", "Cube { width 3 }") + colored(".9 .9 .2")
              + "Coordinate3 { point [ -1.5 1 0, 0 1.2 .5, 1.6 .8 0, 0 0 0 ] } MarkerSet { "
                "markerIndex [ 3, 11, 47, 7 ] } Translation { translation -1 -1 0 } Image { width "
                "40 height 20 image 2 1 3 0xff0000 0x00ff00 }")},
        {"TrianglesAndQuads",
         seen("Rotation { rotation 0 1 0 .4 } Material { diffuseColor [ .9 .5 .3, .3 .6 .9 ] } "
              "MaterialBinding { value PER_FACE } Coordinate3 { point [ -2 -1 0, -1 -1 .5, -1.5 1 "
              "0, 0 -1 .4, 1 -1 0, 1 1 0, 0 1 .6, 2 .8 .5 ] } TriangleSet { numTriangles 1 } "
              "QuadSet { startIndex 3 numQuads 1 } Translation { translation 0 0 -1 } "
              "IndexedTriangleSet { coordIndex [ 1, 3, 2, 4, 7, 5 ] } "
              "IndexedQuadSet { coordIndex [ 0, 1, 3, 2 ] }")},
        {"Vrml97Shapes",
         "#VRML V2.0 utf8\nBackground { skyColor [ .2 .3 .6, .6 .7 .9 ] skyAngle 1.57 groundColor "
         "[ "
         ".2 .2 .1, .4 .4 .3 ] groundAngle 1.57 }\n"
         "DirectionalLight { direction -.4 -.6 -1 }\n"
         "Transform { translation 0 -1.5 -3 children Shape { appearance Appearance { material "
         "Material { diffuseColor .3 .7 .3 } } geometry ElevationGrid { xDimension 4 zDimension 3 "
         "xSpacing 1 zSpacing 1 creaseAngle 1 height [ 0 .4 .1 .3, .5 .9 .2 .1, 0 .3 .5 .2 ] } } "
         "}\n"
         "Transform { translation -1.6 .6 -4 children Shape { appearance Appearance { material "
         "Material { diffuseColor .8 .4 .2 } } geometry Extrusion { crossSection [ .4 0, 0 .4, -.4 "
         "0, 0 -.4, .4 0 ] spine [ 0 -.6 0, 0 0 .2, .3 .6 0 ] } } }\n"
         "Transform { translation .2 .8 -4 children Shape { appearance Appearance { material "
         "Material { diffuseColor .9 .9 .2 } } geometry Text { string \"VRML\" fontStyle FontStyle "
         "{ size .6 } } } }\n"
         "Transform { translation 1.6 -.2 -4 children [ Shape { appearance Appearance { material "
         "Material { diffuseColor .7 .2 .7 transparency .4 } } geometry Sphere { radius .5 } } "
         "Shape "
         "{ appearance Appearance { material Material { emissiveColor 1 1 1 } } geometry "
         "IndexedLineSet { coord Coordinate { point [ -1 -.6 .6, 1 -.6 .6, 1 .8 -.6 ] } coordIndex "
         "[ "
         "0 1 2 -1 ] } } ] }\n"},
        {"TexturesOfVrml97",
         "#VRML V2.0 utf8\nNavigationInfo { headlight FALSE } DirectionalLight { direction -.4 -.5 "
         "-1 intensity .8 }\nFog { color .7 .8 .9 visibilityRange 30 }\n"
         "Transform { rotation 1 1 0 .6 children Shape { appearance Appearance { material Material "
         "{ diffuseColor 1 0 0 specularColor .5 .5 .3 emissiveColor .1 0 .1 shininess .05 } "
         "texture "
         "PixelTexture { image 2 2 3 0xff8000 0x0080ff 0x80ff00 0xf0f0f0 } } geometry Box { } } }\n"
         "Transform { translation 2.4 0 0 rotation 1 1 0 .6 children Shape { appearance Appearance "
         "{ material Material { diffuseColor .2 .9 .6 specularColor .4 .2 .2 } texture "
         "PixelTexture "
         "{ image 2 2 1 0xff 0x80 0x60 0xc0 } } geometry Box { size 1.5 1.5 1.5 } } }\n"},
        {"TextureUnits",
         seen(std::string(kChecker)
              + "TextureUnit { unit 1 mode ADDSIGNED } Texture2 { image 2 1 3 0x404060 0xc0a080 } "
                "Texture2Transform { rotation .5 scaleFactor .7 .7 } TextureUnit { unit 2 mode "
                "BLENDFACTORALPHA factor 1 1 1 .3 } Texture2 { image 1 2 4 0xff0000ff 0x0000ffff } "
                "TextureUnit { } Rotation { rotation 1 .3 0 .6 } "
              + colored("1 1 1") + at("-1.2 0 0", kSquare) + at("1.2 0 0", "Sphere { }"))},
        {"TextureCoordinatesComputed",
         seen(std::string(kChecker)
              + "TextureCoordinatePlane { directionS .4 .2 0 directionT 0 .3 .4 } "
              + colored("1 1 1") + at("-1.2 0 0", "Sphere { }")
              + at("1.2 .2 0", "Rotation { rotation 1 1 0 .7 } Cube { }"))},
        {"TextureMirror",
         seen("Texture2 { image 4 4 3 0x203040 0x304050 0x405060 0x506070 0x806040 "
              "0x907050 0xa08060 0xb09070 0x40a0c0 0x50a0c0 0x60b0d0 0x70c0e0 0xd0e0f0 "
              "0xe0e8f0 0xf0f0f8 0xffffff } TextureCoordinateEnvironment { } "
              + colored("1 1 1") + "Complexity { value .9 } Sphere { radius 1.5 }")},
        {"Vrml97LightAndFog",
         "#VRML V2.0 utf8\nNavigationInfo { headlight FALSE }\n"
         "SpotLight { location 0 0 4 direction 0 0 -1 beamWidth .2 cutOffAngle .5 ambientIntensity "
         ".3 intensity .9 }\n"
         "Shape { appearance Appearance { material Material { diffuseColor .9 .6 .3 } } geometry "
         "Box { size 5 4 .2 } }\n"
         "Transform { translation .6 .4 .6 children Shape { appearance Appearance { material "
         "Material { diffuseColor .2 .4 .8 specularColor .3 .2 .1 shininess 0 } } geometry Sphere "
         "{ "
         "radius .6 } } }\n"
         "Transform { scale 2 2 2 children Fog { color .5 .7 .6 fogType \"EXPONENTIAL\" "
         "visibilityRange 12 } }\n"},
        {"HundredThousandTriangles", seen("Rotation { rotation 1 0 0 -.6 } " + shiny + sheet(224))},
        {"WavySheet", seen("Rotation { rotation 1 0 0 -.9 } " + shiny + sheet(60))},
    };
}
