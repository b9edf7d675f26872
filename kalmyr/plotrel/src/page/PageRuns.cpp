#include "PageRuns.h"

#include "PolygonSet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <memory>

namespace kalmyr::detail {

namespace {

/// Runs that a primitive may still join.
constexpr std::size_t kOpenRuns = 8;
/// Smaller polygons count as parts of a surface; millimetres. Others have edges to be seen, which
/// are smooth only where they are paths: readers draw those of meshes ragged.
constexpr float kSmall = 4;
/// Large flat polygons between two meshes join them up to this number.
constexpr std::uint32_t kMostLargeInMesh = 32;
/// Runs of small polygons that make a mesh.
constexpr std::size_t kLeastMeshRuns = 24;

/// The cells of a grid over the drawing that something touches.
class Cells {
public:
    static constexpr int kSide = 64;

    bool touches(const Cells& o) const
    {
        for (int row = std::max(m_low, o.m_low); row <= std::min(m_high, o.m_high); ++row)
            if (m_rows[row] & o.m_rows[row])
                return true;
        return false;
    }
    void add(const Cells& o)
    {
        for (int row = o.m_low; row <= o.m_high; ++row)
            m_rows[row] |= o.m_rows[row];
        m_low = std::min(m_low, o.m_low);
        m_high = std::max(m_high, o.m_high);
    }
    /// Only the rows from the lowest to the highest one are set.
    void setRectangle(int left, int right, int low, int high)
    {
        const std::uint64_t row = (~std::uint64_t(0) >> (63 - right)) & (~std::uint64_t(0) << left);
        std::fill(m_rows.begin() + low, m_rows.begin() + high + 1, row);
        m_low = low;
        m_high = high;
    }

private:
    std::array<std::uint64_t, kSide> m_rows{};
    int m_low = kSide;
    int m_high = -1;
};

class Gatherer {
public:
    Gatherer(const VectorDrawing& drawing, PageRuns& result) : m_drawing(drawing), m_result(result)
    {
    }

    void add(std::uint32_t index)
    {
        const VectorPrimitive& one = m_drawing.primitives[index];
        if (one.kind == VectorPrimitive::TEXT || one.count == 0)
            return;
        cover(one);
        PageRun run = runOf(one);
        if (run.opacity == 0)
            return;
        run.first = run.last = index;
        run.count = 1;
        run.extent = m_extent;
        const bool polygon = one.kind == VectorPrimitive::POLYGON;
        const bool mixes = run.opacity < 255 || (run.image >= 0 && hasAlpha(run.image));
        for (std::size_t i = m_open.size(); i-- > 0;) {
            Open& open = m_open[i];
            const bool touches = m_cells.touches(open.cells);
            PageRun& known = m_result.runs[open.run];
            const bool isApart = one.group || open.group
                                     ? one.group == open.group
                                     : !open.polygons || open.polygons->add(index);
            if (known.isLike(run) && isApart && (!mixes || polygon || !touches)) {
                m_result.next[known.last] = index;
                known.last = index;
                ++known.count;
                known.extent += run.extent;
                open.cells.add(m_cells);
                return;
            }
            if (touches)
                break;
        }
        if (m_open.size() == kOpenRuns)
            m_open.pop_front();
        Open& open = m_open.emplace_back();
        open.run = m_result.runs.size();
        open.cells.add(m_cells);
        open.group = polygon ? one.group : 0;
        if (mixes && polygon && !open.group) {
            open.polygons = std::make_unique<PolygonSet>(m_drawing);
            open.polygons->add(index);
        }
        m_result.runs.push_back(run);
    }

private:
    struct Open {
        std::size_t run = 0;
        Cells cells;
        std::uint32_t group = 0; ///< of polygons that do not overlap each other
        /// Of a run that lets light through.
        std::unique_ptr<PolygonSet> polygons;
    };

    PageRun runOf(const VectorPrimitive& one) const
    {
        PageRun run;
        run.opacity =
            static_cast<std::uint8_t>(std::lround(std::clamp(one.opacity, 0.0f, 1.0f) * 255));
        if (one.kind == VectorPrimitive::POLYGON && one.image >= 0) {
            run.kind = PageRun::WINDOWS;
            run.image = one.image;
            return run;
        }
        const bool small = run.opacity < 255 && m_extent < kSmall;
        if (one.kind == VectorPrimitive::POLYGON && (one.shaded || small)) {
            run.kind = PageRun::SHADED;
            return run;
        }
        run.color = PageColor::of(m_drawing.vertices[one.first]);
        if (one.kind != VectorPrimitive::POLYGON) {
            run.kind = one.kind == VectorPrimitive::LINE ? PageRun::LINES : PageRun::POINTS;
            run.width = one.width;
        }
        return run;
    }

    void cover(const VectorPrimitive& one)
    {
        const VectorVertex* vertices = m_drawing.vertices.data() + one.first;
        float left = vertices->x, right = left, low = vertices->y, high = low;
        for (std::uint32_t i = 1; i < one.count; ++i) {
            left = std::min(left, vertices[i].x);
            right = std::max(right, vertices[i].x);
            low = std::min(low, vertices[i].y);
            high = std::max(high, vertices[i].y);
        }
        m_extent = std::max(right - left, high - low);
        // Seams are closed by strokes of less than this width.
        const float around = one.width / 2 + 0.1f;
        m_cells.setRectangle(cell(left - around - m_drawing.x, m_drawing.width),
                             cell(right + around - m_drawing.x, m_drawing.width),
                             cell(low - around - m_drawing.y, m_drawing.height),
                             cell(high + around - m_drawing.y, m_drawing.height));
    }

    bool hasAlpha(std::int32_t image)
    {
        m_hasAlpha.resize(m_drawing.images.size(), -1);
        signed char& known = m_hasAlpha[image];
        if (known < 0)
            known = m_drawing.images[image].pixels.hasTransparency();
        return known != 0;
    }

    static int cell(float place, float size)
    {
        const float share = size > 0 ? place / size : 0;
        return static_cast<int>(std::clamp(share, 0.0f, 0.999f) * Cells::kSide);
    }

    const VectorDrawing& m_drawing;
    PageRuns& m_result;
    std::deque<Open> m_open;
    Cells m_cells; ///< of the primitive at hand
    float m_extent = 0;
    std::vector<signed char> m_hasAlpha; ///< of each image; -1: not known yet
};

/// Makes one mesh of neighbouring meshes and the few flat polygons between them, and of many small
/// flat polygons: one mesh is smaller than several objects, and has no seams.
class MeshJoiner {
public:
    explicit MeshJoiner(PageRuns& all) : m_all(all), m_runs(std::move(all.runs)) {}

    void join()
    {
        for (m_at = 0; m_at < m_runs.size();) {
            const std::size_t end = meshEnd();
            PageRun run = m_runs[m_at++];
            if (end > m_at)
                run.kind = PageRun::SHADED;
            for (; m_at < end; ++m_at)
                append(run, m_runs[m_at]);
            m_all.runs.push_back(run);
        }
    }

private:
    /// Behind the runs from the present one on that make a mesh.
    std::size_t meshEnd() const
    {
        std::size_t end = m_at, fine = 0;
        std::uint32_t large = 0;
        for (std::size_t i = m_at; i < m_runs.size() && mayJoin(m_runs[i]); ++i) {
            const bool isMesh = m_runs[i].kind == PageRun::SHADED;
            if (!isMesh && isFine(m_runs[i])) {
                ++fine;
            } else if (!isMesh) {
                fine = 0;
                large += m_runs[i].count;
                if (end == m_at || large > kMostLargeInMesh)
                    break;
            }
            if (isMesh || fine >= kLeastMeshRuns) {
                end = i + 1;
                large = 0;
            }
        }
        return end;
    }

    static bool mayJoin(const PageRun& run)
    {
        return run.opacity == 255 && (run.kind == PageRun::SHADED || run.kind == PageRun::FLAT);
    }
    static bool isFine(const PageRun& run)
    {
        return run.extent < kSmall * static_cast<float>(run.count);
    }

    void append(PageRun& run, const PageRun& more)
    {
        m_all.next[run.last] = more.first;
        run.last = more.last;
        run.count += more.count;
    }

    PageRuns& m_all;
    std::vector<PageRun> m_runs;
    std::size_t m_at = 0;
};

} // namespace

bool PageRun::isLike(const PageRun& o) const
{
    return kind == o.kind && opacity == o.opacity && color == o.color && width == o.width
           && image == o.image;
}

PageRuns::PageRuns(const VectorDrawing& drawing, bool meshes) : next(drawing.primitives.size())
{
    Gatherer gatherer(drawing, *this);
    for (std::uint32_t i = 0; i < drawing.primitives.size(); ++i)
        gatherer.add(i);
    if (meshes)
        MeshJoiner(*this).join();
}

} // namespace kalmyr::detail
