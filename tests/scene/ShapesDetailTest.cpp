// Details of picks against what the test itself knows of faces, lines and points and of their
// indices.
#include "NodesSupport.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/details/SoLineDetail.h>
#include <kalmyr/io/SoInput.h>
#include <support/ErrorGuard.h>

#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Ints = std::vector<int>;

struct Corner {
    int slot;  ///< place in the coordinate indices, ends of faces counted
    int count; ///< without them
    int coord;
};

struct Primitive {
    std::vector<Corner> corners;
    int face = 0;    ///< what PER_FACE counts
    int part = 0;    ///< what PER_PART counts
    int segment = 0; ///< within its line
};

enum Kind { FACES, LINES, POINTS };

/// A flat shape at z = 0.
struct Model {
    Kind kind = FACES;
    std::vector<SbVec3f> positions;
    Ints coordIndex;
    std::vector<Primitive> primitives;
    std::string counts; ///< the field of a shape without indices
};

/// How an attribute is bound, and what indices it has.
struct Binding {
    std::string name;
    Ints indices;

    int valueOf(const Primitive& p, const Corner& c, bool indexedShape) const
    {
        const bool indexed = indexedShape && !indices.empty() && name.ends_with("_INDEXED");
        int at = 0;
        if (name.starts_with("PER_PART"))
            at = p.part;
        else if (name.starts_with("PER_FACE"))
            at = p.face;
        else if (name == "PER_VERTEX" || (name == "PER_VERTEX_INDEXED" && !indexedShape))
            at = c.count;
        else if (name == "PER_VERTEX_INDEXED")
            return indexed ? indices[static_cast<std::size_t>(c.slot)] : c.coord;
        return indexed ? indices[static_cast<std::size_t>(at)] : at;
    }
};

constexpr int kValues = 600; ///< of each attribute: enough for every way of counting

class Maker {
public:
    Maker(const std::string& type, unsigned seed) : m_type(type), m_random(seed)
    {
        model.kind = type.find("Line") != std::string::npos    ? LINES
                     : type.find("Point") != std::string::npos ? POINTS
                                                               : FACES;
        m_indexed = type.find("Indexed") != std::string::npos;
        m_isVrml = type.starts_with("VRML");
    }

    std::string makeScene();
    const Binding& colors() const { return m_colors; }
    const Binding& normals() const { return m_normals; }
    const Binding& texCoords() const { return m_texCoords; }
    bool isIndexed() const { return m_indexed; }
    bool isVrml() const { return m_isVrml; }
    int integer(int low, int high) { return std::uniform_int_distribution(low, high)(m_random); }
    float real(float low, float high)
    {
        return std::uniform_real_distribution(low, high)(m_random);
    }

    Model model;

private:
    void beginRun() { m_runFirst = model.coordIndex.size(); }
    void addCorner(float x, float y);
    void endRun();
    void makeRuns();
    void makeGrid();
    void shufflePositions();
    Binding chooseBinding(bool always);
    std::string listOf(const Ints& values) const;
    std::string kalmyrScene();
    std::string vrmlScene();

    std::string m_type;
    std::mt19937 m_random;
    bool m_indexed = false, m_isVrml = false;
    Binding m_colors, m_normals, m_texCoords;
    std::size_t m_runFirst = 0;
    int m_run = 0, m_corners = 0, m_start = 0;
};

std::string Maker::listOf(const Ints& values) const
{
    std::string text = "[ ";
    for (const int value : values)
        text += std::to_string(value) + ", ";
    return text + "]";
}

void Maker::addCorner(float x, float y)
{
    model.coordIndex.push_back(static_cast<int>(model.positions.size()));
    model.positions.emplace_back(x, y, 0.0f);
}

/// Cuts the run that was added into primitives.
void Maker::endRun()
{
    const int first = static_cast<int>(m_runFirst);
    const int n = static_cast<int>(model.coordIndex.size()) - first;
    const auto add = [&](std::initializer_list<int> corners, bool byRun, int segment = 0) {
        Primitive p;
        for (const int k : corners) {
            const auto slot = static_cast<std::size_t>(first + k);
            p.corners.push_back({first + k, m_corners + k, model.coordIndex[slot]});
        }
        p.part = byRun ? m_run : static_cast<int>(model.primitives.size());
        p.face = model.kind == LINES ? m_run : static_cast<int>(model.primitives.size());
        p.segment = segment;
        model.primitives.push_back(p);
    };
    if (model.kind == POINTS) {
        for (int k = 0; k < n; ++k)
            add({k}, false);
    } else if (model.kind == LINES) {
        for (int k = 0; k + 1 < n; ++k)
            add({k, k + 1}, false, k);
    } else if (m_type.ends_with("StripSet")) {
        for (int k = 0; k + 2 < n; ++k)
            add({k, k + 1, k + 2}, true);
    } else {
        add({}, true);
        for (int k = 0; k < n; ++k) {
            const auto slot = static_cast<std::size_t>(first + k);
            model.primitives.back().corners.push_back(
                {first + k, m_corners + k, model.coordIndex[slot]});
        }
    }
    model.counts += std::to_string(n) + ", ";
    m_corners += n;
    ++m_run;
    // Sets of points and fixed faces go on without an end.
    if (model.kind != POINTS && m_type.find("TriangleSet") == std::string::npos
        && m_type.find("QuadSet") == std::string::npos)
        model.coordIndex.push_back(-1);
}

void Maker::makeRuns()
{
    const bool fixed = m_type.find("TriangleSet") != std::string::npos
                       || m_type.find("QuadSet") != std::string::npos;
    for (int run = 0; run < 45; ++run) {
        const float x = 3 * static_cast<float>(run % 7), y = 3 * static_cast<float>(run / 7);
        beginRun();
        const int n = fixed ? (m_type.find("Tri") != std::string::npos ? 3 : 4) : integer(3, 9);
        for (int k = 0; k < n; ++k) {
            if (model.kind != FACES || m_type.ends_with("StripSet")) {
                // A zigzag.
                addCorner(x + 0.25f * static_cast<float>(k),
                          y + (k % 2 ? 1.0f : 0.0f) + real(-0.2f, 0.2f));
                continue;
            }
            // A star around the middle, convex or not.
            const float angle = 6.2831853f * static_cast<float>(k) / static_cast<float>(n);
            const float radius = fixed ? 1.2f : real(0.4f, 1.3f);
            addCorner(x + radius * std::cos(angle), y + radius * std::sin(angle));
        }
        endRun();
    }
}

/// Quadrilaterals over positions row by row.
void Maker::makeGrid()
{
    const int columns = 8, rows = 6;
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c)
            model.positions.emplace_back(static_cast<float>(c) + real(-0.3f, 0.3f),
                                         static_cast<float>(r), 0.0f);
    }
    for (int r = 0; r + 1 < rows; ++r) {
        for (int c = 0; c + 1 < columns; ++c) {
            Primitive p;
            const int a = r * columns + c;
            for (const int vertex : {a, a + columns, a + columns + 1, a + 1})
                p.corners.push_back({vertex, vertex, vertex + m_start});
            p.part = r;
            p.face = static_cast<int>(model.primitives.size());
            model.primitives.push_back(p);
        }
    }
}

void Maker::shufflePositions()
{
    std::vector<int> order(model.positions.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<int>(i);
    std::shuffle(order.begin(), order.end(), m_random);
    std::vector<SbVec3f> moved(order.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        moved[static_cast<std::size_t>(order[i])] = model.positions[i];
    model.positions = moved;
    for (int& i : model.coordIndex)
        i = i < 0 ? i : order[static_cast<std::size_t>(i)];
    for (Primitive& p : model.primitives)
        for (Corner& c : p.corners)
            c.coord = order[static_cast<std::size_t>(c.coord)];
}

Binding Maker::chooseBinding(bool always)
{
    static const char* const kNames[] = {
        "OVERALL",          "PER_PART",   "PER_PART_INDEXED",  "PER_FACE",
        "PER_FACE_INDEXED", "PER_VERTEX", "PER_VERTEX_INDEXED"};
    Binding binding{kNames[integer(0, 6)], {}};
    if (m_indexed && (always || integer(0, 3) > 0)) {
        for (std::size_t i = 0; i < 2 * model.coordIndex.size() + 10; ++i)
            binding.indices.push_back(integer(0, kValues - 1));
    }
    return binding;
}

std::string Maker::kalmyrScene()
{
    const auto repeat = [](const std::string& value) {
        std::string text = "[ ";
        for (int i = 0; i < kValues; ++i)
            text += value + ", ";
        return text + "]";
    };
    std::ostringstream text;
    text << "#Kalmyr V1.0 ascii\nSeparator {\nShapeHints { faceType UNKNOWN_FACE_TYPE }\n"
         << "Material { diffuseColor " << repeat("1 0 0") << " }\nMaterialBinding { value "
         << m_colors.name << " }\nNormal { vector " << repeat("0 0 1")
         << " }\nNormalBinding { value " << m_normals.name << " }\nTextureCoordinate2 { point "
         << repeat("0 0") << " }\nTextureCoordinateBinding { value " << m_texCoords.name
         << " }\nCoordinate3 { point [ ";
    for (int i = 0; i < m_start; ++i)
        text << "-9 -9 0, ";
    for (const SbVec3f& p : model.positions)
        text << p[0] << ' ' << p[1] << " 0, ";
    text << "] }\n" << m_type << " {\n";
    if (m_indexed) {
        text << "coordIndex " << listOf(model.coordIndex) << "\nmaterialIndex "
             << listOf(m_colors.indices) << "\nnormalIndex " << listOf(m_normals.indices)
             << "\ntextureCoordIndex " << listOf(m_texCoords.indices);
    } else {
        text << "startIndex " << m_start << '\n';
        if (m_type == "QuadMesh")
            text << "verticesPerColumn 6 verticesPerRow 8";
        else if (m_type.ends_with("StripSet") || m_type == "FaceSet" || m_type == "LineSet")
            text << "numVertices [ " << model.counts << " ]";
    }
    text << "\n} }\n";
    return text.str();
}

std::string Maker::vrmlScene()
{
    std::ostringstream text;
    text << "#Kalmyr V1.0 ascii\nSeparator {\n" << m_type << " {\ncoord VRMLCoordinate { point [ ";
    for (const SbVec3f& p : model.positions)
        text << p[0] << ' ' << p[1] << " 0, ";
    text << "] }\ncolor VRMLColor { color [ ";
    for (int i = 0; i < kValues; ++i)
        text << "1 0 0, ";
    text << "] }\n";
    if (m_indexed) {
        text << "coordIndex " << listOf(model.coordIndex) << "\ncolorIndex "
             << listOf(m_colors.indices) << "\ncolorPerVertex "
             << (m_colors.name == "PER_VERTEX_INDEXED" ? "TRUE" : "FALSE") << '\n';
    } else if (m_type == "VRMLLineSet") {
        text << "vertexCount [ " << model.counts << " ]\n";
    }
    if (model.kind == FACES) {
        text << "solid FALSE convex FALSE\nnormal VRMLNormal { vector [ ";
        for (int i = 0; i < kValues; ++i)
            text << "0 0 1, ";
        text << "] }\nnormalIndex " << listOf(m_normals.indices) << "\nnormalPerVertex "
             << (m_normals.name == "PER_VERTEX_INDEXED" ? "TRUE" : "FALSE")
             << "\ntexCoord VRMLTextureCoordinate { point [ ";
        for (int i = 0; i < kValues; ++i)
            text << "0 0, ";
        text << "] }\ntexCoordIndex " << listOf(m_texCoords.indices) << '\n';
    }
    text << "} }\n";
    return text.str();
}

std::string Maker::makeScene()
{
    m_start = m_indexed || m_isVrml ? 0 : integer(0, 3);
    if (m_type == "QuadMesh")
        makeGrid();
    else
        makeRuns();
    if (m_indexed)
        shufflePositions();
    else if (m_type != "QuadMesh")
        for (Primitive& p : model.primitives)
            for (Corner& c : p.corners)
                c.coord += m_start;
    for (Binding* binding : {&m_colors, &m_normals, &m_texCoords})
        *binding = chooseBinding(false);
    m_texCoords.name = integer(0, 1) ? "PER_VERTEX" : "PER_VERTEX_INDEXED";
    if (!m_isVrml)
        return kalmyrScene();
    for (Binding* binding : {&m_colors, &m_normals})
        binding->name = integer(0, 1) ? "PER_VERTEX_INDEXED" : "PER_FACE_INDEXED";
    m_texCoords.name = "PER_VERTEX_INDEXED";
    if (!m_indexed) // colours follow the points
        m_colors.name = model.kind == POINTS ? "PER_VERTEX" : "PER_VERTEX_INDEXED";
    return vrmlScene();
}

bool contains(const Model& model, const Primitive& p, int start, float x, float y)
{
    bool inside = false;
    for (std::size_t i = 0; i < p.corners.size(); ++i) {
        const auto at = [&](const Corner& c) {
            return model.positions[static_cast<std::size_t>(c.coord - start)];
        };
        const SbVec3f a = at(p.corners[i]), b = at(p.corners[(i + 1) % p.corners.size()]);
        if ((a[1] > y) != (b[1] > y) && x < a[0] + (b[0] - a[0]) * (y - a[1]) / (b[1] - a[1]))
            inside = !inside;
    }
    return inside;
}

float distance(const Model& model, const Primitive& p, int start, float x, float y)
{
    const SbVec3f q(x, y, 0);
    const SbVec3f& a = model.positions[static_cast<std::size_t>(p.corners[0].coord - start)];
    const SbVec3f& b = model.positions[static_cast<std::size_t>(p.corners.back().coord - start)];
    const float length2 = (b - a).dot(b - a);
    const float u = length2 > 0 ? std::clamp((q - a).dot(b - a) / length2, 0.0f, 1.0f) : 0.0f;
    return (a + (b - a) * u - q).length();
}

class DetailTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { SoDB::init(); }
};

struct Expected {
    const Maker& maker;
    const Primitive& primitive;

    void check(const SoPointDetail& point, std::size_t i) const
    {
        const Corner& corner = primitive.corners[i];
        const bool indexed = maker.isIndexed();
        EXPECT_EQ(point.getCoordinateIndex(), corner.coord);
        EXPECT_EQ(point.getMaterialIndex(), maker.colors().valueOf(primitive, corner, indexed))
            << maker.colors().name;
        const bool given = !maker.isVrml() || maker.model.kind == FACES;
        EXPECT_EQ(point.getNormalIndex(),
                  given ? maker.normals().valueOf(primitive, corner, indexed) : -1)
            << maker.normals().name;
        EXPECT_EQ(point.getTextureCoordIndex(),
                  given ? maker.texCoords().valueOf(primitive, corner, indexed) : -1)
            << maker.texCoords().name;
    }
};

void expectDetail(const SoDetail* detail, const Expected& expected)
{
    const Primitive& p = expected.primitive;
    ASSERT_TRUE(detail);
    if (detail->isOfType(SoFaceDetail::getClassTypeId())) {
        const auto* face = static_cast<const SoFaceDetail*>(detail);
        EXPECT_EQ(face->getFaceIndex(), p.face);
        EXPECT_EQ(face->getPartIndex(), p.part);
        ASSERT_EQ(face->getPoints().size(), p.corners.size());
        // Every second triangle of a strip is listed the other way round.
        const auto at = [&](const Corner& c) {
            for (const SoPointDetail& point : face->getPoints())
                if (point.getCoordinateIndex() == c.coord)
                    return &point;
            return static_cast<const SoPointDetail*>(nullptr);
        };
        for (std::size_t i = 0; i < p.corners.size(); ++i) {
            const SoPointDetail* point = at(p.corners[i]);
            ASSERT_TRUE(point) << p.corners[i].coord;
            expected.check(*point, i);
        }
    } else if (detail->isOfType(SoLineDetail::getClassTypeId())) {
        const auto* line = static_cast<const SoLineDetail*>(detail);
        EXPECT_EQ(line->getLineIndex(), p.face);
        EXPECT_EQ(line->getPartIndex(), p.segment);
        expected.check(line->getPoint0(), 0);
        expected.check(line->getPoint1(), 1);
    } else {
        ASSERT_TRUE(detail->isOfType(SoPointDetail::getClassTypeId()));
        expected.check(*static_cast<const SoPointDetail*>(detail), 0);
    }
}

TEST_P(DetailTest, AgreesWithTheIndicesOfTheFile)
{
    constexpr float kRadius = 0.06f;
    int hits = 0;
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Maker maker(GetParam(), seed);
        const std::string text = maker.makeScene();
        SoInput in;
        in.setBuffer(text.data(), text.size());
        const SoRef<SoSeparator> root(SoDB::readAll(&in));
        ASSERT_TRUE(root);
        const Model& model = maker.model;
        const int start = model.primitives[0].corners[0].coord >= 0 && !maker.isIndexed()
                              ? model.primitives[0].corners[0].coord
                              : 0;
        for (int shot = 0; shot < 150; ++shot) {
            float x = maker.real(-1, 20), y = maker.real(-1, 20);
            if (model.kind != FACES) { // near one of them
                const auto& p = model.primitives[static_cast<std::size_t>(
                    maker.integer(0, static_cast<int>(model.primitives.size()) - 1))];
                const float u = maker.real(0, 1);
                const auto at = [&](std::size_t i) {
                    return model.positions[static_cast<std::size_t>(p.corners[i].coord - start)];
                };
                const SbVec3f q = at(0) * u + at(p.corners.size() - 1) * (1 - u);
                x = q[0] + maker.real(-0.05f, 0.05f);
                y = q[1] + maker.real(-0.05f, 0.05f);
            }
            std::vector<const Primitive*> met;
            bool close = false; // too close to an edge to tell
            for (const Primitive& p : model.primitives) {
                if (model.kind == FACES ? contains(model, p, start, x, y)
                                        : distance(model, p, start, x, y) < kRadius)
                    met.push_back(&p);
                if (model.kind != FACES)
                    close = close || std::abs(distance(model, p, start, x, y) - kRadius) < 1e-3f;
            }
            if (close)
                continue;
            SoRayPickAction pick{SbViewportRegion()};
            pick.setRay({x, y, 5}, {0, 0, -1}, -1, -1, model.kind == FACES ? 0 : kRadius);
            pick.setPickAll(true);
            pick.apply(root.get());
            ASSERT_EQ(pick.getPickedPoints().size(), met.size()) << x << ' ' << y;
            for (std::size_t i = 0; i < met.size() && model.kind != FACES; ++i)
                expectDetail(pick.getPickedPoint(static_cast<int>(i))->getDetail(),
                             {maker, *met[i]});
            if (model.kind == FACES && met.size() == 1)
                expectDetail(pick.getPickedPoint(0)->getDetail(), {maker, *met[0]});
            hits += met.empty() ? 0 : 1;
            if (HasFailure())
                FAIL() << "seed " << seed << '\n' << text.substr(text.rfind(GetParam()), 600);
        }
    }
    EXPECT_GT(hits, 100);
}

class OtherDetailTest : public nodetest::NodesTest {
protected:
    const SoDetail* pick(const std::string& body, const SbVec3f& from, const SbVec3f& direction)
    {
        const std::string text = "#Kalmyr V1.0 ascii\nSeparator { " + body + " }";
        SoInput in;
        in.setBuffer(text.data(), text.size());
        m_root.reset(SoDB::readAll(&in));
        m_pick.setRay(from, direction, -1, -1, 0.1f);
        m_pick.apply(m_root.get());
        const SoPickedPoint* point = m_pick.getPickedPoint();
        return point ? point->getDetail() : nullptr;
    }
    static Ints coordsOf(const SoDetail* detail)
    {
        Ints coords;
        for (const SoPointDetail& point : static_cast<const SoFaceDetail*>(detail)->getPoints())
            coords.push_back(point.getCoordinateIndex());
        return coords;
    }

    SoRef<SoSeparator> m_root;
    SoRayPickAction m_pick{SbViewportRegion()};
};

TEST_F(OtherDetailTest, GeneratedGridsNumberTheirPoints)
{
    const std::string grid = "VRMLElevationGrid { xDimension 4 zDimension 3 solid FALSE "
                             "height [ 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 ] colorPerVertex FALSE "
                             "color VRMLColor { color [ 1 0 0, 1 0 0, 1 0 0, 1 0 0, 1 0 0, 1 0 0 ] "
                             "} }";
    for (int twice = 0; twice < 2; ++twice) {
        const auto* face =
            static_cast<const SoFaceDetail*>(pick(grid, {1.4f, 5, 1.6f}, {0, -1, 0}));
        ASSERT_TRUE(face);
        EXPECT_EQ(face->getFaceIndex(), 4);
        EXPECT_EQ(coordsOf(face), (Ints{5, 9, 10, 6}));
        EXPECT_EQ(face->getPoint(0).getMaterialIndex(), 4);
        EXPECT_EQ(face->getPoint(0).getTextureCoordIndex(), -1); // generated
        m_pick.apply(m_root.get());
        EXPECT_EQ(coordsOf(m_pick.getPickedPoint()->getDetail()), (Ints{5, 9, 10, 6}));
        EXPECT_EQ(static_cast<const SoFaceDetail*>(m_pick.getPickedPoint()->getDetail())
                      ->getPoint(0)
                      .getTextureCoordIndex(),
                  -1);
    }
    const auto* side =
        pick("VRMLExtrusion { spine [ 0 0 0, 0 1 0, 0 2 0 ] }", {5, 1.5f, 0.2f}, {-1, 0, 0});
    ASSERT_TRUE(side);
    // Between the rings 1 and 2, and the corners (1, 1) and (1, -1) of the section.
    EXPECT_EQ(coordsOf(side), (Ints{5, 6, 11, 10}));
}

TEST_F(OtherDetailTest, BodiesTellTheirParts)
{
    const std::string parts = "Material { diffuseColor [ 1 0 0, 0 1 0, 0 0 1 ] } "
                              "MaterialBinding { value PER_PART } ";
    const auto partOf = [&](const std::string& body, const SbVec3f& from, int material) {
        const auto* face = static_cast<const SoFaceDetail*>(pick(body, from, -from));
        if (!face || face->getNumPoints() != 3)
            return -1;
        EXPECT_EQ(face->getPoint(2).getMaterialIndex(), material);
        EXPECT_EQ(face->getPoint(2).getCoordinateIndex(), -1);
        EXPECT_EQ(face->getFaceIndex(), face->getPartIndex());
        return face->getPartIndex();
    };
    EXPECT_EQ(partOf(parts + "Cylinder { }", {0.1f, 5, 0.1f}, 1), 1);
    EXPECT_EQ(partOf(parts + "Cylinder { }", {0.1f, -5, 0.1f}, 2), 2);
    EXPECT_EQ(partOf(parts + "Cylinder { }", {5, 0.1f, 0.1f}, 0), 0);
    EXPECT_EQ(partOf("Cylinder { }", {0.1f, 5, 0.1f}, 0), 1);
    EXPECT_EQ(partOf("Cube { }", {0.1f, 5, 0.1f}, 0), 4);
}

TEST_F(OtherDetailTest, WhatIsLeftOutKeepsItsNumber)
{
    const auto errors = support::expectErrors();
    const std::string positions = "Coordinate3 { point [ 0 0 0, 1 0 0, 2 0 0, 3 0 0, 4 0 0 ] } ";
    const auto* line = static_cast<const SoLineDetail*>(
        pick(positions + "IndexedLineSet { coordIndex [ 0, 1, -1, 1, 9, -1, 2, 3, 4 ] }",
             {3.5f, 0, 5}, {0, 0, -1}));
    ASSERT_TRUE(line);
    EXPECT_EQ(line->getLineIndex(), 2);
    EXPECT_EQ(line->getPartIndex(), 1);
    EXPECT_EQ(line->getPoint1().getCoordinateIndex(), 4);
    const auto* point = static_cast<const SoPointDetail*>(
        pick(positions
                 + "MaterialBinding { value PER_VERTEX } IndexedPointSet { coordIndex [ 0, "
                   "9, 3, 1 ] }",
             {3, 0, 5}, {0, 0, -1}));
    ASSERT_TRUE(point);
    EXPECT_EQ(point->getCoordinateIndex(), 3);
    const auto* face = static_cast<const SoFaceDetail*>(
        pick("Coordinate3 { point [ 0 0 0, 1 0 0, 1 1 0, 0 1 0 ] } IndexedFaceSet { coordIndex "
             "[ 0, 1, -1, 0, 1, 7, -1, 3, 0, 1, 2 ] }",
             {0.9f, 0.8f, 5}, {0, 0, -1}));
    ASSERT_TRUE(face);
    EXPECT_EQ(face->getFaceIndex(), 2);
    EXPECT_EQ(coordsOf(face), (Ints{3, 0, 1, 2}));
}

INSTANTIATE_TEST_SUITE_P(Shapes, DetailTest,
                         testing::Values("IndexedFaceSet", "IndexedTriangleSet", "IndexedQuadSet",
                                         "IndexedTriangleStripSet", "FaceSet", "TriangleSet",
                                         "QuadSet", "TriangleStripSet", "QuadMesh",
                                         "IndexedLineSet", "LineSet", "IndexedPointSet", "PointSet",
                                         "VRMLIndexedFaceSet", "VRMLIndexedLineSet", "VRMLLineSet",
                                         "VRMLPointSet"),
                         [](const auto& info) { return std::string(info.param); });

} // namespace
