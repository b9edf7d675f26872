#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLCoordinate.h>
#include <kalmyr/vrml/SoVRMLCoordinateDeformer.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLNurbs.h>
#include <kalmyr/vrml/SoVRMLNurbsPositionInterpolator.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLTrimmedSurface.h>

#include "support/ErrorGuard.h"

#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

class Amendment : public ::testing::Test {
protected:
    void SetUp() override { SoDB::init(); }

    void read(const std::string& text)
    {
        const std::string whole = "#VRML V2.0 utf8\n" + text;
        SoInput in;
        in.setBuffer(whole.data(), whole.size());
        m_root = static_cast<SoNode*>(SoDB::readAllVRML(&in));
        ASSERT_TRUE(m_root);
    }

    template <class Node>
    Node* find()
    {
        SoSearchAction search;
        search.setType(Node::getClassTypeId());
        search.setInterest(SoSearchAction::FIRST);
        search.setSearchingAll(true);
        search.apply(m_root.get());
        return search.getPath() ? static_cast<Node*>(search.getPath()->getTail()) : nullptr;
    }

    /// Corners of triangles, or ends of lines, in the world.
    std::vector<SbVec3f> corners(bool lines = false)
    {
        std::vector<SbVec3f> all;
        SoCallbackAction action;
        if (lines)
            action.addLineCallback(SoShape::getClassTypeId(),
                                   [&all](SoCallbackAction* a, const SoNode*,
                                          const SoPrimitiveVertex& p, const SoPrimitiveVertex& q) {
                                       all.push_back(a->getModelMatrix().point(p.point));
                                       all.push_back(a->getModelMatrix().point(q.point));
                                   });
        else
            action.addTriangleCallback(
                SoShape::getClassTypeId(),
                [&all](SoCallbackAction* a, const SoNode*, const SoPrimitiveVertex& p,
                       const SoPrimitiveVertex& q, const SoPrimitiveVertex& r) {
                    for (const SoPrimitiveVertex* v : {&p, &q, &r})
                        all.push_back(a->getModelMatrix().point(v->point));
                });
        action.apply(m_root.get());
        return all;
    }

    double area()
    {
        const std::vector<SbVec3f> all = corners();
        double sum = 0;
        for (std::size_t i = 0; i + 2 < all.size(); i += 3)
            sum += (all[i + 1] - all[i]).cross(all[i + 2] - all[i]).length() / 2;
        return sum;
    }

    SoRef<SoNode> m_root;
};

const std::string kArc = "controlPoint [ 1 0 0, 1 1 0, 0 1 0 ] weight [ 1 0.70710678 1 ] order 3 ";

TEST_F(Amendment, CurvesAreWeighedAndDividedAsAsked)
{
    read("Shape { geometry NurbsCurve { " + kArc + " knot [ 0 0 0 1 1 1 ] } }");
    for (const SbVec3f& p : corners(true))
        EXPECT_NEAR(p.length(), 1, 1e-6);
    const std::size_t fine = corners(true).size();
    auto* curve = find<SoVRMLNurbsCurve>();
    ASSERT_TRUE(curve);
    curve->tessellation = 7;
    EXPECT_EQ(corners(true).size(), 14u);
    curve->tessellation = -2;
    EXPECT_EQ(corners(true).size(), 12u);
    curve->tessellation = 0;
    curve->knot.deleteValues(0); // even ones, which are the same
    EXPECT_EQ(corners(true).size(), fine);
    // A scale of the group counts for those that choose by themselves.
    read("NurbsGroup { tessellationScale 3 children Shape { geometry NurbsCurve { " + kArc
         + " } } }");
    EXPECT_GE(corners(true).size(), 2 * fine);
    auto errors = support::expectErrors();
    find<SoVRMLNurbsCurve>()->order = 7;
    EXPECT_TRUE(corners(true).empty());
    EXPECT_EQ(errors.count(), 1u);
}

const std::string kSquare = "NurbsSurface { controlPoint [ 0 0 0, 2 0 0, 0 2 0, 2 2 0 ] uDimension "
                            "2 vDimension 2 uOrder 2 vOrder 2 uKnot [ 0 0 2 2 ] vKnot [ 0 0 2 2 ] "
                            "solid FALSE } ";

TEST_F(Amendment, NothingIsSaidOfWhatHasNoPoints)
{
    read("Group { children [ Shape { geometry NurbsCurve { order 4 knot [ 0 0 1 1 ] } } Shape { "
         "geometry DEF Empty NurbsSurface { uDimension 4 vDimension 4 uKnot [ 0 0 0 1 1 1 1 ] } } "
         "Shape { geometry TrimmedSurface { surface USE Empty } } CoordinateDeformer { uDimension "
         "2 vDimension 2 wDimension 2 inputCoord Coordinate { point 0 0 0 } outputCoord Coordinate "
         "{ } } ] }");
    EXPECT_TRUE(corners().empty());
    EXPECT_TRUE(corners(true).empty());
    // Without texture coordinates of its own a surface has the parameters.
    for (const char* coords : {"TextureCoordinate { }", "NurbsTextureSurface { uDimension 2 }"}) {
        read("Shape { appearance Appearance { texture PixelTexture { image 1 1 1 0 } } geometry "
             "NurbsSurface { controlPoint [ 0 0 0, 2 0 0, 0 2 0, 2 2 0 ] uDimension 2 vDimension 2 "
             "uOrder 2 vOrder 2 texCoord "
             + std::string(coords) + " } }");
        EXPECT_NEAR(area(), 4, 1e-5) << coords;
    }
}

TEST_F(Amendment, ContoursTrimAndComeAndGo)
{
    read(
        "Shape { geometry TrimmedSurface { surface " + kSquare
        + " trimmingContour [ Contour2D { children Polyline2D { point [ 0 0, 2 0, 2 2, 0 2, 0 0 ] "
          "} } DEF Hole Contour2D { children [ NurbsCurve2D { controlPoint [ 1.5 1, 1.5 0.5, 1 "
          "0.5 ] weight [ 1 0.70710678 1 ] } Polyline2D { point [ 1 0.5, 0.5 0.5, 0.5 1.5, 1.5 1.5 "
          "] } ] } ] } }");
    // Three quarters of a square of 1 and a quarter of a circle.
    EXPECT_NEAR(area(), 4 - (0.75 + std::acos(-1.0) / 16), 2e-3);
    auto* surface = find<SoVRMLTrimmedSurface>();
    ASSERT_TRUE(surface);
    SoNode* hole = surface->trimmingContour[1];
    const SoRef<SoNode> held(hole);
    surface->removeTrimmingContour.set1Value(0, hole);
    EXPECT_EQ(surface->trimmingContour.getNum(), 1);
    EXPECT_NEAR(area(), 4, 1e-5);
    surface->addTrimmingContour.set1Value(0, hole);
    surface->addTrimmingContour.set1Value(0, hole); // there already
    EXPECT_EQ(surface->trimmingContour.getNum(), 2);
    EXPECT_LT(area(), 3.1);
}

TEST_F(Amendment, TextureCoordinatesComeFromParametersOrASurface)
{
    const std::string before = "Shape { appearance Appearance { texture PixelTexture { image 1 1 1 "
                               "0xff } } geometry ";
    const auto texCoords = [this] {
        std::vector<SbVec2f> all;
        SoCallbackAction action;
        action.addTriangleCallback(SoShape::getClassTypeId(),
                                   [&all](SoCallbackAction*, const SoNode*,
                                          const SoPrimitiveVertex& p, const SoPrimitiveVertex& q,
                                          const SoPrimitiveVertex& r) {
                                       for (const SoPrimitiveVertex* v : {&p, &q, &r}) {
                                           all.push_back(v->texCoord);
                                           EXPECT_NEAR(v->texCoord[0] / 3, v->point[0] / 2, 1e-6);
                                       }
                                   });
        action.apply(m_root.get());
        return all.size();
    };
    std::string square = kSquare;
    square.insert(square.rfind('}'),
                  "texCoord TextureCoordinate { point [ 0 0, 3 0, 0 1, 3 1 ] } ");
    read(before + square + "}");
    EXPECT_EQ(texCoords(), 6u);
    square = kSquare;
    square.insert(square.rfind('}'),
                  "texCoord NurbsTextureSurface { controlPoint [ 0 0, 3 0, 0 1, 3 1 ] uDimension 2 "
                  "vDimension 2 uOrder 2 vOrder 2 uKnot [ 0 0 2 2 ] vKnot [ 0 0 2 2 ] } ");
    read(before + square + "}");
    EXPECT_EQ(texCoords(), 6u);
}

TEST_F(Amendment, PositionsFollowCurvesAndLatticesBendCoordinates)
{
    read("NurbsPositionInterpolator { order 3 keyValue [ 1 0 0, 1 1 0, 0 1 0 ] keyWeight [ 1 "
         "0.70710678 1 ] knot [ 0 0 0 1 1 1 ] }");
    auto* mover = find<SoVRMLNurbsPositionInterpolator>();
    ASSERT_TRUE(mover);
    mover->set_fraction = 0.5f;
    EXPECT_NEAR((mover->value_changed.getValue() - SbVec3f(0.70710678f, 0.70710678f, 0)).length(),
                0, 1e-6);
    mover->set_fraction = 7;
    EXPECT_EQ(mover->value_changed.getValue(), SbVec3f(0, 1, 0));

    // A lattice of 2 by 2 by 2 that doubles x and leans z.
    read("CoordinateDeformer { uDimension 2 vDimension 2 wDimension 2 controlPoint [ 0 0 0, 2 0 0, "
         "0 1 0, 2 1 0, 0 0 1, 2 0 1, 0 1 3, 2 1 3 ] inputCoord Coordinate { point [ 0.5 0 0, 1 1 "
         "1, 0 0.5 1 ] } inputTransform Transform { } outputCoord DEF Out Coordinate { } children "
         "Shape { geometry PointSet { coord USE Out } } }");
    auto* deformer = find<SoVRMLCoordinateDeformer>();
    ASSERT_TRUE(deformer);
    auto* out = static_cast<SoVRMLCoordinate*>(deformer->outputCoord[0]);
    const auto expectPoints = [out](const std::vector<SbVec3f>& points) {
        ASSERT_EQ(out->point.getNum(), static_cast<int>(points.size()));
        for (int i = 0; i < out->point.getNum(); ++i)
            EXPECT_NEAR((out->point[i] - points[static_cast<std::size_t>(i)]).length(), 0, 1e-6);
    };
    expectPoints({{1, 0, 0}, {2, 1, 3}, {0, 0.5f, 2}});
    deformer->controlPoint.set1Value(7, SbVec3f(5, 1, 3)); // inside this call
    expectPoints({{1, 0, 0}, {5, 1, 3}, {0, 0.5f, 2}});
}

TEST_F(Amendment, PlacesLieWhereTheEarthHasThem)
{
    // Equator and pole of WGS 84, a height, an island of another ellipsoid, by all three frames.
    const auto pointsOf = [this](const std::string& system, const std::string& points) {
        read("Shape { geometry PointSet { coord GeoCoordinate { " + system + " point [ " + points
             + " ] } } }");
        const auto values = find<SoVRMLGeoCoordinate>()->getPoints();
        return std::vector<SbVec3f>(values.begin(), values.end());
    };
    const auto expectNear = [](const SbVec3f& a, const SbVec3f& b, float metres) {
        EXPECT_NEAR((a - b).length(), 0, metres)
            << a[0] << ' ' << a[1] << ' ' << a[2] << ", not " << b[0] << ' ' << b[1] << ' ' << b[2];
    };
    auto places = pointsOf("", "\"0 0 0\", \"90 0 0\", \"0 90 1000\", \"0,-90,0\"");
    ASSERT_EQ(places.size(), 4u);
    expectNear(places[0], {6378137, 0, 0}, 1);
    expectNear(places[1], {0, 0, 6356752.3f}, 1);
    expectNear(places[2], {0, 6379137, 0}, 1);
    expectNear(places[3], {0, -6378137, 0}, 1);
    places = pointsOf("geoSystem [ \"GD\" \"CC\" \"longitude_first\" ]", "\"90 0 0\"");
    expectNear(places[0], {0, 6378206.4f, 0}, 1);
    places = pointsOf("geoSystem \"GC\"", "\"1 2 3\"");
    EXPECT_EQ(places[0], SbVec3f(1, 2, 3));

    // A known point of UTM: 40.5 N 73.5 W on Clarke 1866 is 4,484,124.4 north and 627,106.5 east in
    // zone 18 (Snyder, appendix A).
    const auto inDegrees =
        pointsOf("geoOrigin GeoOrigin { geoSystem [ \"GD\" \"CC\" ] geoCoords \"40.5 -73.5 0\" } "
                 "geoSystem [ \"UTM\" \"Z18\" \"CC\" ]",
                 "\"4484124.4 627106.5 0\", \"4484124.4 627206.5 50\"");
    ASSERT_EQ(inDegrees.size(), 2u);
    EXPECT_LT(inDegrees[0].length(), 0.2f); // the book's numbers have one decimal
    EXPECT_NEAR((inDegrees[1] - inDegrees[0]).length(), std::hypot(100 / 0.9998, 50), 0.05);

    // With the origin turned up x is east and y up.
    const auto up = pointsOf("geoOrigin GeoOrigin { geoCoords \"30 50 0\" rotateYUp TRUE }",
                             "\"30 50 25\", \"30.0001 50 0\", \"30 50.0001 0\"");
    expectNear(up[0], {0, 25, 0}, 1e-3f);
    EXPECT_LT(up[1][2], -11);
    EXPECT_GT(up[2][0], 9.6f);
    EXPECT_NEAR(up[2][1], 0, 0.01f);
}

TEST_F(Amendment, BodiesStandOnTheEarthAndGridsFaceUp)
{
    const std::string origin = "geoOrigin GeoOrigin { geoCoords \"45 10 0\" rotateYUp TRUE } ";
    read("GeoLocation { " + origin
         + "geoCoords \"45.001 10 5\" children Shape { geometry Box { size 2 4 6 } } }");
    SoGetBoundingBoxAction box(SbViewportRegion(10, 10));
    box.apply(m_root.get());
    const SbVec3f center = box.getBoundingBox().getCenter();
    EXPECT_NEAR(center[0], 0, 0.01f);
    EXPECT_NEAR(center[1], 5, 0.01f);
    EXPECT_NEAR(center[2], -111.13f, 0.05f); // a thousandth of a degree there
    EXPECT_NEAR(box.getBoundingBox().getSize()[1], 4, 0.01f);

    read("Shape { geometry GeoElevationGrid { " + origin
         + "geoGridOrigin \"45 10 100\" xDimension 3 zDimension 2 xSpacing \"0.001\" zSpacing "
           "\"0.002\" yScale 2 height [ 0 1 0 5 0 0 ] } }");
    const std::vector<SbVec3f> all = corners();
    ASSERT_EQ(all.size(), 12u);
    float highest = 0;
    for (std::size_t i = 0; i < all.size(); i += 3)
        EXPECT_GT((all[i + 1] - all[i]).cross(all[i + 2] - all[i])[1], 0);
    for (const SbVec3f& p : all)
        highest = std::max(highest, p[1]);
    EXPECT_NEAR(highest, 110, 0.1f);
    auto* grid = find<SoVRMLGeoElevationGrid>();
    grid->set_yScale = 0;
    EXPECT_EQ(grid->yScale.getValue(), 0);
    auto errors = support::expectErrors();
    grid->xSpacing = "wide";
    EXPECT_TRUE(corners().empty());
    corners();
    EXPECT_EQ(errors.count(), 1u);
    errors.clear();
    read("Shape { geometry IndexedLineSet { coordIndex [ 0 1 ] coord GeoCoordinate { geoSystem "
         "\"UTM\" point [ \"0 0 0\", \"1 1 1\" ] } } }");
    EXPECT_TRUE(corners(true).empty());
    EXPECT_GE(errors.count(), 1u);
    errors.clear();
    read("GeoPositionInterpolator { key [ 0 1 ] keyValue [ \"0 0 0\", \"0 90 1000\" ] }");
    auto* mover = find<SoVRMLGeoPositionInterpolator>();
    mover->set_fraction = 0.5f;
    EXPECT_STREQ(mover->geovalue_changed.getValue().getString(), "0 45 500");
    EXPECT_NEAR(mover->value_changed.getValue().length(), 6378637, 1);
    mover->set_fraction = 9;
    EXPECT_STREQ(mover->geovalue_changed.getValue().getString(), "0 90 1000");
    errors.mayStayEmpty();
}

TEST_F(Amendment, PrototypesNamedByAUrnAreTheNodes)
{
    read("EXTERNPROTO NurbsCurve [ field MFFloat knot field SFInt32 order exposedField MFVec3f "
         "controlPoint exposedField MFFloat weight ] [ \"urn:web3d:vrml97:node:NurbsCurve\" "
         "\"no_such_file.wrl\" ]\n"
         "EXTERNPROTO GeoMetadata [ exposedField MFString summary ] "
         "\"urn:web3d:geovrml:1.0/protos:node:GeoMetadata\"\n"
         "Shape { geometry NurbsCurve { "
         + kArc + " } } GeoMetadata { summary [ \"title\" \"a place\" ] }");
    EXPECT_TRUE(find<SoVRMLNurbsCurve>());
    EXPECT_FALSE(corners(true).empty());
    ASSERT_TRUE(find<SoVRMLGeoMetadata>());
    EXPECT_EQ(find<SoVRMLGeoMetadata>()->summary.getNum(), 2);
}

TEST_F(Amendment, LevelsOfDetailOfTheEarthShowTheirFilesByDistance)
{
    const std::string folder = ::testing::TempDir();
    const auto box = [](int size) {
        return "#VRML V2.0 utf8\nShape { geometry Box { size " + std::to_string(size) + " 1 1 } }";
    };
    for (const int size : {1, 2, 3})
        std::ofstream(folder + "geo_" + std::to_string(size) + ".wrl") << box(size);
    SoInput::addDirectoryFirst(folder.c_str());
    const std::string lod = "GeoLOD { geoOrigin GeoOrigin { geoCoords \"20 30 0\" rotateYUp TRUE } "
                            "center \"20 30 0\" range 50 child1Url \"geo_2.wrl\" child4Url "
                            "\"geo_3.wrl\" ";
    for (const char* root :
         {"rootUrl \"geo_1.wrl\" }", "rootNode Shape { geometry Box { size 1 1 1 } } }"}) {
        read(lod + root);
        ASSERT_TRUE(find<SoVRMLGeoLOD>());
        const SoRef<SoNode> original(m_root), copy(m_root->copy());
        for (const SoRef<SoNode>& world : {original, copy}) {
            for (const float distance : {40.0f, 60.0f}) {
                const SoRef<SoSeparator> seen(new SoSeparator);
                auto* camera = new SoPerspectiveCamera;
                camera->position = SbVec3f(0, 0, distance);
                seen->addChild(camera);
                seen->addChild(world.get());
                m_root = seen;
                float widest = 0;
                for (const SbVec3f& corner : corners())
                    widest = std::max(widest, corner[0]);
                EXPECT_EQ(widest, distance < 50 ? 1.5f : 0.5f) << root << distance;
                seen->removeAllChildren();
            }
        }
    }
    SoInput::clearDirectories();
}

TEST_F(Amendment, ViewpointsKnowTheirPlaceAndContentIsReadWhenAsked)
{
    read(
        "GeoViewpoint { geoOrigin GeoOrigin { geoCoords \"20 30 0\" rotateYUp TRUE } position \"20 "
        "30 100\" description \"above\" } InlineLoadControl { load FALSE url \"amendment_box.wrl\" "
        "}");
    SbVec3f place;
    SbRotation turn;
    ASSERT_TRUE(find<SoVRMLGeoViewpoint>()->getView(place, turn));
    EXPECT_NEAR((place - SbVec3f(0, 100, 0)).length(), 0, 0.01f);
    EXPECT_NEAR((turn.rotated(SbVec3f(0, 0, -1)) - SbVec3f(0, 0, -1)).length(), 0, 1e-5f);

    const std::string folder = ::testing::TempDir();
    std::ofstream(folder + "amendment_box.wrl")
        << "#VRML V2.0 utf8\nShape { geometry Box { size 1 1 1 } }";
    auto* control = find<SoVRMLInlineLoadControl>();
    ASSERT_TRUE(control);
    control->setDirectory(SbString(folder));
    EXPECT_FALSE(find<SoVRMLBox>());
    control->load = true;
    EXPECT_TRUE(find<SoVRMLBox>());
    EXPECT_EQ(control->children.getNum(), 1);
    control->load = false;
    EXPECT_FALSE(find<SoVRMLBox>());
    EXPECT_EQ(control->children.getNum(), 0);
}

} // namespace
