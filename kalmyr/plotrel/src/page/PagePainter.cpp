#include "PagePainter.h"

#include "PageOutline.h"

#include <algorithm>
#include <numeric>

namespace kalmyr::detail {

namespace {

/// Corners that go into one path: poppler takes much longer for paths of twice as many.
constexpr std::size_t kMostPathCorners = 100000;

/// Of the lines, in their own colour, around opaque flat polygons; millimetres. Readers smooth the
/// edges of each path by itself, and the paper would shine through between two that abut. Measured
/// on fine surfaces: at 0.05 mm the seams can still be seen at 150 dots an inch, at 0.15 mm the
/// shape grows visibly.
constexpr float kSeamWidth = 0.1f;

std::string rgbText(const PageColor& color)
{
    std::string text = "[";
    for (const int part : {color.red, color.green, color.blue}) {
        appendNumber(text, part / 255.0, 3);
        text += ' ';
    }
    text.back() = ']';
    return text;
}

std::string linearPiece(const PageColor& from, const PageColor& to)
{
    return "<< /FunctionType 2 /Domain [0 1] /N 1\n/C0 " + rgbText(from) + " /C1 " + rgbText(to)
           + " >>\n";
}

/// The primitives of a run; where they need several paths, those of one part of the page follow
/// each other, so that the paths share few sides. Linear time.
std::vector<std::uint32_t> byPlace(const VectorDrawing& drawing, const PageRuns& all,
                                   const PageRun& run)
{
    std::vector<std::uint32_t> list = all.listOf(run);
    if (list.size() < kMostPathCorners / 4)
        return list;
    constexpr int kTiles = 64;
    const auto tile = [&](std::uint32_t at) {
        const VectorVertex& place = drawing.vertices[drawing.primitives[at].first];
        const auto part = [](float offset, float size) {
            const float share = size > 0 ? offset / size : 0;
            return static_cast<int>(std::clamp(share, 0.0f, 0.999f) * kTiles);
        };
        return kTiles * part(place.y - drawing.y, drawing.height)
               + part(place.x - drawing.x, drawing.width);
    };
    std::vector<std::uint32_t> ends(kTiles * kTiles + 1), sorted(list.size());
    for (const std::uint32_t at : list)
        ++ends[tile(at) + 1];
    std::partial_sum(ends.begin(), ends.end(), ends.begin());
    for (const std::uint32_t at : list)
        sorted[ends[tile(at)]++] = at;
    return sorted;
}

} // namespace

std::string gradientFunction(const std::vector<VectorBackgroundStop>& stops)
{
    std::string pieces, bounds, encode;
    float end = 0;
    int count = 0;
    PageColor color = PageColor::of(stops[0].color);
    const auto add = [&](float share, const PageColor& next) {
        // Pieces without a height are not allowed.
        if (share - end > 1e-4f) {
            if (count++ > 0) {
                appendNumber(bounds, end, 5);
                bounds += ' ';
            }
            pieces += linearPiece(color, next);
            encode += "0 1 ";
            end = share;
        }
        color = next;
    };
    for (const VectorBackgroundStop& stop : stops)
        add(std::clamp(stop.share, 0.0f, 1.0f), PageColor::of(stop.color));
    add(1, color);
    return "<< /FunctionType 3 /Domain [0 1]\n/Functions [" + pieces + "]\n/Bounds [" + bounds
           + "] /Encode [" + encode + "] >>";
}

void PagePainter::paint(const VectorDrawing& drawing)
{
    m_content.save();
    m_content.rectangle(drawing.x, drawing.y, drawing.width, drawing.height);
    m_content.op("W n");
    paintBackground(drawing);
    m_content.op("1 j");
    const PageRuns all(drawing, m_meshes);
    for (const PageRun& run : all.runs) {
        if (run.opacity == 255) {
            paintRun(drawing, all, run);
            continue;
        }
        m_content.save();
        setOpacity(run.opacity);
        paintRun(drawing, all, run);
        m_content.restore();
    }
    m_content.restore();
    m_content.flush();
}

void PagePainter::paintBackground(const VectorDrawing& drawing)
{
    const auto& stops = drawing.background;
    if (stops.empty())
        return;
    const PageColor color = PageColor::of(stops[0].color);
    if (std::all_of(stops.begin(), stops.end(),
                    [&](const auto& stop) { return PageColor::of(stop.color) == color; })) {
        m_content.setFill(color);
        m_content.rectangle(drawing.x, drawing.y, drawing.width, drawing.height);
        m_content.op("f");
        return;
    }
    paintGradient(drawing);
}

void PagePainter::paintRun(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run)
{
    switch (run.kind) {
    case PageRun::FLAT:
        paintPolygons(drawing, all, run);
        break;
    case PageRun::SHADED:
        paintMeshes(drawing, all, run);
        break;
    case PageRun::LINES:
        paintLines(drawing, all, run);
        break;
    case PageRun::POINTS:
        paintPoints(drawing, all, run);
        break;
    case PageRun::WINDOWS:
        m_content.save();
        setClip(drawing, all, run);
        paintImage(drawing, run.image);
        m_content.restore();
        break;
    }
}

void PagePainter::setClip(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run)
{
    PageOutline outline;
    all.forEach(run, [&](std::uint32_t at) {
        const VectorPrimitive& one = drawing.primitives[at];
        outline.addPolygon(&drawing.vertices[one.first], one.count);
    });
    for (const std::vector<PagePlace>& path : outline.take())
        m_content.closedPath(path);
    m_content.op("W n");
}

void PagePainter::paintPolygons(const VectorDrawing& drawing, const PageRuns& all,
                                const PageRun& run)
{
    const bool opaque = run.opacity == 255;
    const PageColor color = PageColor::of(drawing.vertices[drawing.primitives[run.first].first]);
    m_content.setFill(color);
    if (opaque) {
        m_content.setStroke(color);
        m_content.setLineWidth(kSeamWidth);
    }
    PageOutline outline;
    std::size_t corners = 0;
    const auto fill = [&] {
        for (const std::vector<PagePlace>& path : outline.take())
            m_content.closedPath(path);
        m_content.op(opaque ? "B" : "f");
        corners = 0;
    };
    for (const std::uint32_t at : opaque ? byPlace(drawing, all, run) : all.listOf(run)) {
        const VectorPrimitive& one = drawing.primitives[at];
        if (corners > kMostPathCorners && opaque)
            fill();
        corners += one.count;
        outline.addPolygon(&drawing.vertices[one.first], one.count);
    }
    fill();
}

void PagePainter::paintMeshes(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run)
{
    if (run.opacity < 255 && hasOneColor(drawing, all, run)) {
        paintPolygons(drawing, all, run);
        return;
    }
    PageMesh mesh;
    std::vector<PageMesh::Packed> clear;
    const auto flush = [&] {
        PageMesh::Packed packed = mesh.take();
        if (packed.bytes.empty())
            return;
        if (run.opacity < 255)
            clear.push_back(std::move(packed));
        else
            paintMesh(packed);
    };
    all.forEach(run, [&](std::uint32_t at) {
        const VectorPrimitive& one = drawing.primitives[at];
        const VectorVertex* corners = &drawing.vertices[one.first];
        if (one.shaded)
            for (std::uint32_t i = 2; i < one.count; ++i)
                mesh.addTriangle(corners[0], corners[i - 1], corners[i]);
        else
            mesh.addPolygon(corners, one.count);
        if (mesh.isFull())
            flush();
    });
    flush();
    if (!clear.empty())
        paintClearMeshes(clear);
}

bool PagePainter::hasOneColor(const VectorDrawing& drawing, const PageRuns& all,
                              const PageRun& run) const
{
    const PageColor color = PageColor::of(drawing.vertices[drawing.primitives[run.first].first]);
    bool same = true;
    all.forEach(run, [&](std::uint32_t at) {
        const VectorPrimitive& one = drawing.primitives[at];
        same = same && !one.shaded && PageColor::of(drawing.vertices[one.first]) == color;
    });
    return same;
}

void PagePainter::paintLines(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run)
{
    m_content.setStroke(run.color);
    m_content.setLineWidth(run.width);
    std::size_t corners = 0;
    all.forEach(run, [&](std::uint32_t at) {
        const VectorPrimitive& one = drawing.primitives[at];
        const VectorVertex* places = &drawing.vertices[one.first];
        if (corners > kMostPathCorners && run.opacity == 255) {
            m_content.op("S");
            corners = 0;
        }
        corners += one.count;
        const VectorVertex& end = places[one.count - 1];
        const bool closed = one.count > 3 && places[0].x == end.x && places[0].y == end.y;
        m_content.moveTo(places[0].x, places[0].y);
        for (std::uint32_t i = 1; i + closed < one.count; ++i)
            m_content.lineTo(places[i].x, places[i].y);
        if (closed)
            m_content.op("h");
    });
    m_content.op("S");
}

void PagePainter::paintPoints(const VectorDrawing& drawing, const PageRuns& all, const PageRun& run)
{
    m_content.setStroke(run.color);
    m_content.setLineWidth(run.width);
    m_content.setRoundCaps(true);
    all.forEach(run, [&](std::uint32_t at) {
        const VectorVertex& place = drawing.vertices[drawing.primitives[at].first];
        m_content.moveTo(place.x, place.y);
        m_content.lineTo(place.x, place.y);
    });
    m_content.op("S");
    m_content.setRoundCaps(false);
}

} // namespace kalmyr::detail
