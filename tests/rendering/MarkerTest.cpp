#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/details/SoPointDetail.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoPixelScale.h>
#include <kalmyr/nodes/SoScale.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoImage.h>
#include <kalmyr/shapes/SoIndexedMarkerSet.h>
#include <kalmyr/shapes/SoMarkerSet.h>
#include <kalmyr/shapes/SoMarkerTable.h>

#include "support/ErrorGuard.h"

#include <limits>
#include <map>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr int kSize = 40;

/// Pixels of the screen with their colours, without black ones.
using Pixels = std::map<std::pair<int, int>, std::string>;

class ScreenShapes : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        // The pixel at column x and row y covers x to x + 1 and y to y + 1.
        m_root = new SoSeparator;
        auto* camera = new SoOrthographicCamera;
        camera->position = SbVec3f(kSize / 2, kSize / 2, 10);
        camera->nearDistance = 1;
        camera->farDistance = 20;
        camera->height = kSize;
        m_root->addChild(camera);
    }

    template <class Node>
    Node* add()
    {
        auto* node = new Node;
        m_root->addChild(node);
        return node;
    }

    Pixels draw()
    {
        Pixels pixels;
        EXPECT_TRUE(m_renderer.render(m_root.get()));
        for (int i = 0; i < kSize * kSize; ++i) {
            const unsigned char* p = m_renderer.getBuffer() + 3 * i;
            char text[8];
            std::snprintf(text, sizeof text, "%02x%02x%02x", p[0], p[1], p[2]);
            if (std::string(text) != "000000")
                pixels[{i % kSize, i / kSize}] = text;
        }
        return pixels;
    }

    const SoPickedPoint* pick(int x, int y)
    {
        m_pick.setPoint(SbVec2s(static_cast<short>(x), static_cast<short>(y)));
        m_pick.apply(m_root.get());
        return m_pick.getPickedPoint();
    }

    SbBox3f measure()
    {
        SoGetBoundingBoxAction measuring(m_region);
        measuring.apply(m_root.get());
        return measuring.getBoundingBox();
    }

    SoRef<SoSeparator> m_root;
    SbViewportRegion m_region{kSize, kSize};
    SoOffscreenRenderer m_renderer{m_region};
    SoRayPickAction m_pick{m_region};
};

std::string colorOf(const SbColor& c)
{
    char text[8];
    std::snprintf(text, sizeof text, "%02x%02x%02x", int(c[0] * 255 + 0.5f), int(c[1] * 255 + 0.5f),
                  int(c[2] * 255 + 0.5f));
    return text;
}

TEST_F(ScreenShapes, MarkersCoverTheirPixelsInTheColorsOfTheirPoints)
{
    SoMarker flag; // without any symmetry, and with a hole
    flag.size = SbVec2s(4, 3);
    flag.center = SbVec2s(1, 0);
    flag.pixels = {0, 1, 0, 0, /**/ 1, 1, 0, 1, /**/ 1, 1, 1, 1};
    const int flagNumber = SoMarkerTable::add(flag);
    ASSERT_GE(flagNumber, int(SoMarkerTable::kNumBuiltIn));
    const int diamond = SoMarkerTable::find(SoMarkerTable::DIAMOND_LINE, SoMarkerTable::SMALL);

    const SbVec3f places[] = {{5.9f, 8.1f, 0}, {20.4f, 30.6f, 1}, {30, 10, -2}, {12, 12, 0}};
    const SbColor colors[] = {SbColor(1, 0, 0), SbColor(0, 1, 0), SbColor(0, 0, 1)};
    auto* material = add<SoMaterial>();
    material->diffuseColor.setValues(0, 3, colors);
    add<SoMaterialBinding>()->value = SoMaterialBinding::PER_VERTEX;
    auto* coordinates = add<SoCoordinate3>();
    coordinates->point.setValues(0, 4, places);
    auto* markers = add<SoMarkerSet>();
    const int numbers[] = {flagNumber, SoMarkerTable::kNone, diamond};
    markers->markerIndex.setValues(0, 3, numbers);
    markers->numPoints = 3;

    Pixels expected;
    for (const auto& [x, y] :
         {std::pair{5, 8}, {4, 9}, {5, 9}, {7, 9}, {4, 10}, {5, 10}, {6, 10}, {7, 10}})
        expected[{x, y}] = colorOf(colors[0]);
    for (int y = -3; y <= 3; ++y) {
        const int x = 3 - std::abs(y);
        expected[{30 - x, 10 + y}] = expected[{30 + x, 10 + y}] = colorOf(colors[2]);
    }
    const Pixels drawn = draw();
    EXPECT_EQ(drawn, expected);

    // The same by indices; picked just there.
    auto* indexed = new SoIndexedMarkerSet;
    const int coordIndex[] = {0, -1, 1, 2};
    const int materialIndex[] = {0, -1, 1, 2};
    indexed->coordIndex.setValues(0, 4, coordIndex);
    indexed->materialIndex.setValues(0, 4, materialIndex);
    indexed->markerIndex.setValues(0, 3, numbers);
    for (const bool isIndexed : {false, true}) {
        if (isIndexed)
            m_root->replaceChild(markers, indexed);
        EXPECT_EQ(draw(), expected) << isIndexed;
        for (int i = 0; i < kSize * kSize; ++i) {
            const std::pair place{i % kSize, i / kSize};
            const SoPickedPoint* picked = pick(place.first, place.second);
            ASSERT_EQ(picked != nullptr, expected.count(place) > 0) << i;
            if (!picked)
                continue;
            ASSERT_TRUE(picked->getDetail()->isOfType(SoPointDetail::getClassTypeId()));
            const auto* detail = static_cast<const SoPointDetail*>(picked->getDetail());
            const int point = expected[place] == colorOf(colors[0]) ? 0 : 2;
            EXPECT_EQ(detail->getCoordinateIndex(), point);
            EXPECT_EQ(detail->getMaterialIndex(), point);
        }
        const SbBox3f box = measure();
        EXPECT_NEAR((box.getMin() - SbVec3f(4, 7, -2)).length(), 0, 1e-3f);
        EXPECT_NEAR((box.getMax() - SbVec3f(34, 14, 0)).length(), 0, 1e-3f);
        SoGetPrimitiveCountAction count;
        count.apply(m_root.get());
        EXPECT_EQ(count.getPointCount(), 2);
        EXPECT_EQ(count.getTriangleCount(), 0);
    }
    std::vector<SbVec3f> given;
    SoCallbackAction callback;
    callback.addPointCallback(SoIndexedMarkerSet::getClassTypeId(),
                              [&given](SoCallbackAction*, const SoNode*,
                                       const SoPrimitiveVertex& v) { given.push_back(v.point); });
    callback.apply(m_root.get());
    EXPECT_EQ(given, (std::vector<SbVec3f>{places[0], places[2]}));
}

TEST_F(ScreenShapes, PicturesKeepTheirPixelsInAnyAlignment)
{
    unsigned char bytes[3 * 2 * 4];
    for (int i = 0; i < 6; ++i) {
        bytes[4 * i] = static_cast<unsigned char>(40 * (i + 1));
        bytes[4 * i + 1] = static_cast<unsigned char>(255 - 30 * i);
        bytes[4 * i + 2] = static_cast<unsigned char>(i % 2 ? 200 : 10);
        bytes[4 * i + 3] = i == 4 ? 0 : 255;
    }
    add<SoMaterial>()->diffuseColor = SbColor(1, 0, 0); // paints nothing
    add<SoTranslation>()->translation = SbVec3f(17.3f, 21.8f, 0);
    auto* picture = add<SoImage>();
    picture->image.setValue(SbImage(SbVec2i32(3, 2), 4, bytes));
    for (int h = 0; h < 3; ++h) {
        for (int v = 0; v < 3; ++v) {
            picture->horAlignment = h;
            picture->vertAlignment = v;
            const int left = 17 - (h == 0 ? 0 : h == 1 ? 1 : 3);
            const int bottom = 21 - v;
            Pixels expected;
            for (int i = 0; i < 6; ++i) {
                char text[8];
                std::snprintf(text, sizeof text, "%02x%02x%02x", bytes[4 * i], bytes[4 * i + 1],
                              bytes[4 * i + 2]);
                if (i != 4)
                    expected[{left + i % 3, bottom + i / 3}] = text;
            }
            EXPECT_EQ(draw(), expected) << h << ' ' << v;
        }
    }
    picture->width = 6;
    picture->height = 10;
    picture->horAlignment = SoImage::LEFT;
    picture->vertAlignment = SoImage::BOTTOM;
    const SbBox3f box = measure();
    EXPECT_NEAR((box.getSize() - SbVec3f(6, 10, 0)).length(), 0, 1e-3f);
    EXPECT_TRUE(pick(22, 30));
    EXPECT_FALSE(pick(23, 30));
}

TEST_F(ScreenShapes, RefuseWhatCannotBeDrawn)
{
    auto errors = support::expectErrors();
    SoMarker bad;
    EXPECT_EQ(SoMarkerTable::add(bad), SoMarkerTable::kNone);
    bad.size = SbVec2s(3, 3);
    bad.pixels.resize(8);
    EXPECT_EQ(SoMarkerTable::add(bad), SoMarkerTable::kNone);
    EXPECT_FALSE(SoMarkerTable::replace(1'000'000, bad));
    EXPECT_EQ(errors.count(), 3u);
    errors.clear();

    auto* coordinates = add<SoCoordinate3>();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const SbVec3f places[] = {{nan, 5, 0}, {20, 20, 0}, {8, 8, 0}};
    coordinates->point.setValues(0, 3, places);
    auto* markers = add<SoMarkerSet>();
    const int numbers[] = {0, 0, 1'000'000};
    markers->markerIndex.setValues(0, 3, numbers);
    EXPECT_EQ(draw().size(), 21u); // a disc of 5 pixels without its corners
    EXPECT_EQ(errors.count(), 1u);
    errors.clear();
    draw();
    EXPECT_EQ(errors.count(), 0u);
    markers->numPoints = 2'000'000'000;
    draw();
    EXPECT_EQ(errors.count(), 1u);
    errors.clear();

    m_root->removeChild(markers);
    auto* picture = add<SoImage>();
    picture->image.setValue(SbImage(SbVec2i32(2, 2), 1));
    for (const int size : {-2, SoImage::kMaxSize + 1}) {
        picture->width = size;
        EXPECT_TRUE(draw().empty());
        EXPECT_EQ(errors.count(), 1u);
        errors.clear();
    }
    errors.mayStayEmpty();
}

TEST_F(ScreenShapes, ANurbsSphereLooksLikeASphere)
{
    const std::string text = "#Kalmyr V1.0 ascii\nSeparator { Complexity { value 1 } "
                             "DirectionalLight { direction -.3 -.5 "
                             "-1 } Translation { translation 20 20 0 } Rotation { rotation 1 2 3 "
                             ".8 } Scale { scaleFactor "
                             "15 15 7 } ";
    const float h = std::sqrt(0.5f);
    const SbVec3f round[] = {{1, 0, 1},   {1, 1, h},  {0, 1, 1},  {-1, 1, h}, {-1, 0, 1},
                             {-1, -1, h}, {0, -1, 1}, {1, -1, h}, {1, 0, 1}};
    std::string points;
    for (int j = 0; j < 5; ++j) {
        for (const SbVec3f& r : round) {
            const float w = r[2] * round[j][2];
            for (const float c :
                 {round[j][1] * r[0] * w, -round[j][0] * w, -round[j][1] * r[1] * w})
                points += std::to_string(c) + " ";
            points += std::to_string(w) + ", ";
        }
    }
    const std::string nurbs =
        "Coordinate4 { point [ " + points
        + " ] } ShapeHints { vertexOrdering COUNTERCLOCKWISE shapeType SOLID } NurbsSurface { "
          "numUControlPoints 9 numVControlPoints 5 uKnotVector [ 0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, "
          "4 "
          "] vKnotVector [ 0, 0, 0, 1, 1, 2, 2, 2 ] } }";
    std::vector<unsigned char> pictures[2];
    for (int i = 0; i < 2; ++i) {
        const std::string whole = text + (i ? nurbs : std::string("Sphere { } }"));
        SoInput in;
        in.setBuffer(whole.data(), whole.size());
        SoNode* scene = SoDB::readAll(&in);
        ASSERT_TRUE(scene);
        m_root->addChild(scene);
        ASSERT_GT(draw().size(), 600u);
        pictures[i].assign(m_renderer.getBuffer(), m_renderer.getBuffer() + 3 * kSize * kSize);
        m_root->removeChild(scene);
    }
    int uncovered = 0, unlike = 0;
    for (std::size_t i = 0; i < pictures[0].size(); i += 3) {
        const bool seen[] = {pictures[0][i] > 0, pictures[1][i] > 0};
        uncovered += seen[0] != seen[1];
        unlike += seen[0] && seen[1] && std::abs(pictures[0][i] - pictures[1][i]) > 5;
    }
    EXPECT_LE(uncovered, 3); // SoSphere is of flat triangles
    EXPECT_LE(unlike, 12);   // their normals bend at the silhouette
}

TEST_F(ScreenShapes, KeepTheirSizeUnderAPixelScale)
{
    add<SoLightModel>()->model = SoLightModel::BASE_COLOR;
    auto* eye = new SoPerspectiveCamera;
    eye->position = SbVec3f(0, 0, 0);
    eye->nearDistance = 1;
    eye->farDistance = 1000;
    m_root->replaceChild(0, eye);
    auto* place = add<SoTranslation>();
    add<SoScale>()->scaleFactor = SbVec3f(3, 3, 3);
    auto* scale = add<SoPixelScale>();
    auto* cube = add<SoCube>();
    cube->depth = 0;
    for (const float z : {-5.0f, -80.0f, -700.0f}) {
        place->translation = SbVec3f(0, 0, z);
        for (const float pixels : {4.0f, 9.0f}) {
            scale->pixels = pixels;
            EXPECT_NEAR(static_cast<float>(draw().size()), 4 * pixels * pixels, 1) << z;
            EXPECT_NEAR(measure().getSize()[0] / -z * kSize / (2 * std::tan(0.785398f / 2)),
                        2 * pixels, 0.01f);
        }
    }
}

} // namespace
