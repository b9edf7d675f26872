#include "TextExtruder.h"

#include "Glyphs.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace kalmyr::detail {

namespace {

/// Curves are smooth and corners sharp, with the steps that glyphs cut their curves into (radians).
constexpr float kCreaseAngle = 0.6f;

struct Edge {
    std::uint32_t from, to;
    bool isFirst; ///< of a closed line
};

/// The border of a glyph as closed lines with the letter on their left.
struct Border {
    std::vector<Edge> edges;
    std::vector<std::uint32_t> same; ///< the first point at the place of each; edges join these
};

/// Finds the border by the triangles: the contours of fonts may overlap.
Border borderOf(const Glyph& glyph)
{
    Border border;
    std::vector<std::uint32_t>& same = border.same;
    std::map<std::pair<float, float>, std::uint32_t> places;
    same.resize(glyph.points.size());
    for (std::uint32_t i = 0; i < same.size(); ++i)
        same[i] = places.try_emplace({glyph.points[i][0], glyph.points[i][1]}, i).first->second;
    std::set<std::pair<std::uint32_t, std::uint32_t>> open;
    for (std::size_t i = 0; i < glyph.triangles.size(); ++i) {
        const std::size_t next = i % 3 == 2 ? i - 2 : i + 1;
        const std::uint32_t from = same[glyph.triangles[i]], to = same[glyph.triangles[next]];
        if (from != to && open.erase({to, from}) == 0)
            open.insert({from, to});
    }
    while (!open.empty()) {
        auto at = open.begin();
        for (bool isFirst = true; at != open.end(); isFirst = false) {
            const auto [from, to] = *at;
            border.edges.push_back({from, to, isFirst});
            open.erase(at);
            at = open.lower_bound({to, 0});
            if (at != open.end() && at->first != to)
                break;
        }
    }
    return border;
}

/// How far points on corners go outwards at most when the sides beside them go by 1.
constexpr float kMaxMiter = 3;

/// Returns the offset of each point of a placed glyph when its sides move outwards by 1.
std::vector<SbVec2f> outwardOf(const Border& border, const std::vector<SbVec2f>& points)
{
    const std::vector<Edge>& edges = border.edges;
    const auto outside = [&](const Edge& edge) {
        const SbVec2f along = points[edge.to] - points[edge.from];
        return SbVec2f(along[1], -along[0]).normalized();
    };
    std::vector<SbVec2f> outward(points.size());
    std::vector<float> met(points.size());
    std::size_t first = 0;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (edges[i].isFirst)
            first = i;
        const bool isLast = i + 1 == edges.size() || edges[i + 1].isFirst;
        const SbVec2f a = outside(edges[i]), b = outside(edges[isLast ? first : i + 1]);
        const SbVec2f sum = a + b;
        // The sum divided by 1 + a.b keeps both sides at the distance; spikes are cut.
        const float grown =
            std::min(1 / std::max(1 + a.dot(b), 1e-6f), kMaxMiter / std::max(sum.length(), 1e-6f));
        outward[edges[i].to] += sum * grown;
        met[edges[i].to] += 1;
    }
    for (std::size_t i = 0; i < points.size(); ++i) {
        const std::uint32_t like = border.same[i]; // not behind i
        if (like != i)
            outward[i] = outward[like];
        else if (met[i] > 1)
            outward[i] /= met[i];
    }
    return outward;
}

/// Collects the faces of all letters for the face builder.
class Letters {
public:
    Letters(const TextExtruder& extruder, float size)
        : m_extruder(extruder), m_size(size), m_rings(extruder.profile)
    {
        // Without sides only the ends of the profile count.
        if (!has(TextExtruder::SIDES))
            m_rings = {m_rings.front(), m_rings.back()};
    }

    void add(const PlacedGlyph& placed);
    void write(SoGeometry& geometry) const;
    bool isCut() const { return m_isCut; }

private:
    struct Corner {
        std::uint32_t index;
        SbVec2f texCoord;
    };
    void addRings(const PlacedGlyph& placed, const Border& border);
    void addFace(std::initializer_list<Corner> corners, TextExtruder::Part part);
    void addLids(const Glyph& glyph);
    void addSides(const Border& border);
    /// Corner of the front or back; the texture of the back is as seen from behind.
    Corner corner(std::uint32_t point, bool back) const;
    bool has(TextExtruder::Part part) const { return m_extruder.shown[part]; }
    std::size_t numSteps() const { return has(TextExtruder::SIDES) ? m_rings.size() - 1 : 0; }

    const TextExtruder& m_extruder; // Not owned.
    float m_size;
    std::vector<SbVec2f> m_rings; ///< the profile, as far as it is needed
    std::unordered_map<const Glyph*, Border> m_borders;
    std::vector<SbVec3f> m_positions;
    std::vector<std::int32_t> m_faces;
    std::vector<SbVec2f> m_texCoords;
    std::vector<std::uint32_t> m_colors;
    std::vector<std::int32_t> m_lines; ///< of each face
    // Of the present letter.
    std::uint32_t m_first = 0;     ///< point of its front
    std::uint32_t m_numPoints = 0; ///< of each ring
    int m_line = 0;
    bool m_isCut = false;
};

Letters::Corner Letters::corner(std::uint32_t point, bool back) const
{
    const auto last = static_cast<std::uint32_t>(m_rings.size() - 1);
    const std::uint32_t index = m_first + (back ? last * m_numPoints : 0) + point;
    const SbVec3f& p = m_positions[index];
    return {index, SbVec2f(back ? -p[0] : p[0], p[1]) / m_size};
}

void Letters::addFace(std::initializer_list<Corner> corners, TextExtruder::Part part)
{
    for (const Corner& c : corners) {
        m_faces.push_back(static_cast<std::int32_t>(c.index));
        m_texCoords.push_back(c.texCoord);
    }
    m_faces.push_back(-1);
    m_colors.push_back(m_extruder.colors[part]);
    m_lines.push_back(m_line);
}

void Letters::addLids(const Glyph& glyph)
{
    for (std::size_t i = 0; i + 2 < glyph.triangles.size(); i += 3) {
        const std::uint32_t* t = &glyph.triangles[i];
        if (has(TextExtruder::FRONT))
            addFace({corner(t[0], false), corner(t[1], false), corner(t[2], false)},
                    TextExtruder::FRONT);
        if (has(TextExtruder::BACK))
            addFace({corner(t[0], true), corner(t[2], true), corner(t[1], true)},
                    TextExtruder::BACK);
    }
}

void Letters::addSides(const Border& border)
{
    float high = 0; // along the profile from the front
    for (std::size_t step = 0; step < numSteps(); ++step) {
        const auto front = m_first + static_cast<std::uint32_t>(step) * m_numPoints;
        const std::uint32_t back = front + m_numPoints;
        const float low = high - (m_rings[step + 1] - m_rings[step]).length() / m_size;
        float passed = 0;
        for (const Edge& edge : border.edges) {
            if (edge.isFirst)
                passed = 0;
            const SbVec3f along = m_positions[m_first + edge.to] - m_positions[m_first + edge.from];
            const float next = passed + along.length() / m_size;
            addFace({{back + edge.from, {passed, low}},
                     {back + edge.to, {next, low}},
                     {front + edge.to, {next, high}},
                     {front + edge.from, {passed, high}}},
                    TextExtruder::SIDES);
            passed = next;
        }
        high = low;
    }
}

void Letters::addRings(const PlacedGlyph& placed, const Border& border)
{
    std::vector<SbVec2f> points;
    for (const SbVec2f& p : placed.glyph.points)
        points.push_back(placed.at(p));
    const std::vector<SbVec2f> outward = outwardOf(border, points);
    m_first = static_cast<std::uint32_t>(m_positions.size());
    m_numPoints = static_cast<std::uint32_t>(points.size());
    for (const SbVec2f& ring : m_rings) {
        for (std::size_t i = 0; i < points.size(); ++i) {
            const SbVec2f at = points[i] + outward[i] * ring[1];
            m_positions.emplace_back(at[0], at[1], -ring[0]);
        }
    }
}

void Letters::add(const PlacedGlyph& placed)
{
    if (placed.glyph.triangles.empty())
        return;
    const auto [at, isNew] = m_borders.try_emplace(&placed.glyph);
    if (isNew)
        at->second = borderOf(placed.glyph);
    const Border& border = at->second;
    const std::size_t more =
        placed.glyph.triangles.size() / 3 * 2 + border.edges.size() * numSteps();
    if (m_lines.size() + more > TextExtruder::kMaxFaces) {
        m_isCut = true;
        return;
    }
    m_line = placed.line;
    addRings(placed, border);
    addLids(placed.glyph);
    addSides(border);
}

void Letters::write(SoGeometry& geometry) const
{
    FaceInput input;
    input.positions = m_positions;
    input.coordIndex = m_faces;
    input.texCoords.values = m_texCoords;
    input.texCoords.binding = SoBinding::PER_VERTEX;
    input.creaseAngle = kCreaseAngle;
    input.solid = has(TextExtruder::FRONT) && has(TextExtruder::SIDES) && has(TextExtruder::BACK)
                  && numSteps() > 0;
    if (m_extruder.hasColors) {
        input.colors.values = m_colors;
        input.colors.binding = SoBinding::PER_FACE;
    }
    FaceBuilder(input).build(geometry);
    if (geometry.triangleFaces.empty()) { // one triangle a face
        geometry.triangleFaces = m_lines;
        return;
    }
    for (std::int32_t& face : geometry.triangleFaces)
        face = m_lines[static_cast<std::size_t>(face)];
}

} // namespace

void TextExtruder::build(const TextLayout& text, SoGeometry& geometry) const
{
    if (profile.empty())
        return;
    Letters letters(*this, text.font.size);
    text.place([&](const PlacedGlyph& placed) { letters.add(placed); });
    if (letters.isCut()) {
        SoDebugError::postWarning("SoText3", "\"%s\": the text is too long for its profile; cut",
                                  node ? node->getName().getString() : "");
    }
    letters.write(geometry);
}

} // namespace kalmyr::detail
