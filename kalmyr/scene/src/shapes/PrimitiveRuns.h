#pragma once

#include <kalmyr/shapes/ShapeSource.h>

#include <vector>

namespace kalmyr::detail {

/// How a run of coordinate indices, up to the next -1, is cut into faces, segments or points.
struct PrimitiveRuns {
    enum Rule { POLYGON, STRIP, QUAD_STRIP, FIXED, SEGMENTS, POINTS };

    Rule rule = POLYGON;
    std::uint32_t size = 0; ///< corners of a face of FIXED

    static PrimitiveRuns of(const FaceInput& input)
    {
        if (input.faceSize > 0)
            return {FIXED, input.faceSize};
        return {input.quadStrips ? QUAD_STRIP : input.strips ? STRIP : POLYGON};
    }
    static PrimitiveRuns of(const ShapeSource& source)
    {
        return source.kind == ShapeSource::LINES    ? PrimitiveRuns{SEGMENTS}
               : source.kind == ShapeSource::POINTS ? PrimitiveRuns{POINTS}
                                                    : of(source.input);
    }

    /// Primitives in a run of that many corners.
    std::uint32_t count(std::uint32_t corners) const
    {
        switch (rule) {
        case POLYGON:
            return 1;
        case STRIP:
            return corners > 2 ? corners - 2 : 0;
        case QUAD_STRIP:
            return corners > 3 ? (corners - 2) / 2 : 0;
        case FIXED:
            return corners / size;
        case SEGMENTS:
            return corners > 1 ? corners - 1 : 0;
        default:
            return corners;
        }
    }

    /// Appends the slots of the corners of primitive `k` of the run.
    void addCorners(std::uint32_t begin, std::uint32_t end, std::uint32_t k,
                    std::vector<std::uint32_t>& slots) const
    {
        const std::uint32_t at = begin + k, pair = begin + 2 * k;
        switch (rule) {
        case POLYGON:
            addRange(begin, end, slots);
            break;
        case STRIP:
            if (k % 2 == 0)
                slots.insert(slots.end(), {at, at + 1, at + 2});
            else
                slots.insert(slots.end(), {at + 1, at, at + 2});
            break;
        case QUAD_STRIP:
            slots.insert(slots.end(), {pair, pair + 1, pair + 3, pair + 2});
            break;
        case FIXED:
            addRange(begin + k * size, begin + (k + 1) * size, slots);
            break;
        case SEGMENTS:
            slots.insert(slots.end(), {at, at + 1});
            break;
        case POINTS:
            slots.push_back(at);
            break;
        }
    }

    /// The parts that PER_PART counts: faces of a fixed size, segments and points one by one, else
    /// runs.
    bool countsParts() const { return rule == FIXED || rule == SEGMENTS || rule == POINTS; }

private:
    static void addRange(std::uint32_t begin, std::uint32_t end, std::vector<std::uint32_t>& slots)
    {
        for (std::uint32_t slot = begin; slot < end; ++slot)
            slots.push_back(slot);
    }
};

/// Calls back with begin and end of each run of indices between the -1s.
template <class F>
void forRuns(std::span<const std::int32_t> indices, F&& function)
{
    std::uint32_t begin = 0;
    const auto size = static_cast<std::uint32_t>(indices.size());
    for (std::uint32_t s = 0; s < size; ++s) {
        if (indices[s] != -1)
            continue;
        function(begin, s);
        begin = s + 1;
    }
    if (begin < size)
        function(begin, size);
}

} // namespace kalmyr::detail
