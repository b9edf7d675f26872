#include "U3DContent.h"

#include "U3DBlocks.h"
#include "U3DFormat.h"
#include "U3DSymbols.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr std::uint32_t kMaxUpdatesPerBlock = 4096;

/// The step in which positions of lines and points are counted: a power of two, so fine that
/// counting is exact in floats.
float quantumOf(const U3DWire& wire)
{
    float largest = 0;
    for (const SbVec3f& p : wire.positions) {
        for (int i = 0; i < 3; ++i)
            largest = std::max(
                {largest, std::abs(p[i]), std::abs(p[i] / 2 - wire.positions[0][i] / 2) * 2});
    }
    if (largest == 0)
        return 1;
    constexpr int kBits = 23;
    return std::ldexp(1.0f, std::max(std::ilogb(largest) + 1 - kBits, -126));
}

void writeUpdate(U3DSymbols& symbols, const U3DWire& wire, std::uint32_t position,
                 const SbVec3f& predicted, float quantum, std::size_t& item)
{
    const std::uint32_t range = std::max(position, 1u);
    const SbVec3f difference = wire.positions[position] - predicted;
    symbols.fixed(0, range); // predicted from the first position
    std::uint32_t signs = 0;
    for (int i = 0; i < 3; ++i)
        signs |= difference[i] < 0 ? 1u << i : 0;
    symbols.u8(signs, SIGN_CONTEXT);
    for (int i = 0; i < 3; ++i)
        symbols.u32(
            static_cast<std::uint32_t>(std::floor(0.5f + std::abs(difference[i]) / quantum)),
            POSITION_CONTEXT + i);
    symbols.u32(0, NUM_NORMALS_CONTEXT);
    std::size_t end = item;
    while (end < wire.items.size() && wire.items[end].last == position)
        ++end;
    symbols.u32(static_cast<std::uint32_t>(end - item), SHADING_CONTEXT);
    for (; item < end; ++item) {
        symbols.u32(wire.items[item].shader, SHADING_CONTEXT);
        if (!wire.isPoints) {
            symbols.fixed(wire.items[item].first, range);
            symbols.u32(0, NORMAL_INDEX_CONTEXT);
        }
        symbols.u32(0, NORMAL_INDEX_CONTEXT);
    }
}

} // namespace

void declareWire(U3DBlocks& out, const U3DGenerator& generator)
{
    const U3DWire& wire = generator.wire;
    const std::size_t start =
        out.begin(wire.isPoints ? POINT_SET_DECLARATION : LINE_SET_DECLARATION);
    out.text(generator.name);
    out.u32(0); // index in the chain
    out.u32(0);
    out.u32(static_cast<std::uint32_t>(wire.items.size()));
    out.u32(static_cast<std::uint32_t>(wire.positions.size()));
    for (int i = 0; i < 4; ++i)
        out.u32(0); // normals, diffuse and specular colours, texture coordinates
    const auto numShadings =
        static_cast<std::uint32_t>(std::max<std::size_t>(wire.colors.size(), 1));
    out.u32(numShadings);
    for (std::uint32_t i = 0; i < numShadings; ++i) {
        out.u32(0); // colours
        out.u32(0); // texture layers
        out.u32(i);
    }
    declareQuality(out, quantumOf(wire));
    for (int i = 0; i < 3; ++i)
        out.u32(0);
    out.u32(0); // bones
    out.end(start);
}

/// Every position is predicted from the first one as readers know it, so that no error adds up.
bool writeWire(U3DBlocks& out, const U3DGenerator& generator, const U3DContentOptions& options)
{
    const U3DWire& wire = generator.wire;
    const float quantum = quantumOf(wire);
    const auto numPositions = static_cast<std::uint32_t>(wire.positions.size());
    SbVec3f first;
    for (int i = 0; i < 3; ++i)
        first[i] = std::round(wire.positions[0][i] / quantum) * quantum;
    std::size_t item = 0;
    for (std::uint32_t from = 0; from < numPositions; from += kMaxUpdatesPerBlock) {
        const std::uint32_t to = std::min(from + kMaxUpdatesPerBlock, numPositions);
        const std::size_t start =
            out.begin(wire.isPoints ? POINT_SET_CONTINUATION : LINE_SET_CONTINUATION);
        out.text(generator.name);
        out.u32(0); // index in the chain
        out.u32(from);
        out.u32(to);
        U3DSymbols symbols(out, options.compressed);
        for (std::uint32_t p = from; p < to; ++p)
            writeUpdate(symbols, wire, p, p == 0 ? SbVec3f() : first, quantum, item);
        symbols.finish();
        out.end(start);
        if (!options.advance(to - from))
            return false;
    }
    return true;
}

} // namespace kalmyr::detail
