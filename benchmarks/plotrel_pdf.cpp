// The writers of PDF and PostScript: seconds and bytes for a triangle, of a wavy surface in the
// order of its mesh or in a scattered one. Looks: 0 flat in changing colours, 1 shaded, 2 both
// mixed, 3 shaded and transparent, 4 flat in one colour, 5 large ones of many colours above each
// other, 6 shaded with a line after each.
#include "ByteWriter.h"
#include "pdf/PdfWriter.h"
#include "postscript/PostScriptWriter.h"
#include "VectorDrawing.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>

using namespace kalmyr::detail;

namespace {

enum Look { FLAT, SHADED, MIXED, CLEAR, PLAIN, LARGE, LINED };

VectorVertex vertexAt(int x, int y, int side)
{
    const float u = float(x) / side, v = float(y) / side;
    const float light = 0.5f + 0.45f * std::sin(9 * u + 4 * std::sin(7 * v));
    return {10 + 277 * u, 10 + 190 * v, light, 0.8f * light, 0.3f + 0.3f * light};
}

VectorDrawing surface(int triangles, Look look, bool scattered)
{
    VectorDrawing drawing;
    drawing.pageWidth = 297;
    drawing.pageHeight = 210;
    drawing.x = drawing.y = 10;
    drawing.width = 277;
    drawing.height = 190;
    const int side = static_cast<int>(std::sqrt(triangles / 2.0));
    std::vector<int> cells(static_cast<std::size_t>(side) * side);
    std::iota(cells.begin(), cells.end(), 0);
    if (scattered)
        std::shuffle(cells.begin(), cells.end(), std::mt19937(1));
    for (const int cell : cells) {
        const int x = cell % side, y = cell / side;
        const int reach = look == LARGE ? side / 10 : 1;
        const VectorVertex a = vertexAt(x, y, side),
                           b = vertexAt(std::min(x + reach, side), y, side),
                           c = vertexAt(std::min(x + reach, side), std::min(y + reach, side), side),
                           d = vertexAt(x, std::min(y + reach, side), side);
        for (const auto& corners : {std::array{a, b, c}, std::array{a, c, d}}) {
            VectorPrimitive& one = drawing.add(VectorPrimitive::POLYGON);
            one.shaded =
                look == SHADED || look == CLEAR || look == LINED || (look == MIXED && cell % 3 > 0);
            one.opacity = look == CLEAR ? 0.5f : 1;
            for (VectorVertex corner : corners) {
                if (look == PLAIN)
                    corner.red = corner.green = corner.blue = 0.5f;
                drawing.addVertex(corner);
            }
            if (look == LINED) {
                drawing.add(VectorPrimitive::LINE).width = 0.1f;
                drawing.addVertex({a.x, a.y});
                drawing.addVertex({c.x, c.y});
            }
        }
    }
    return drawing;
}

template <class Write>
void measure(benchmark::State& state, Write write)
{
    const VectorDrawing drawing = surface(static_cast<int>(state.range(0)),
                                          static_cast<Look>(state.range(1)), state.range(2) != 0);
    std::FILE* const file = std::tmpfile();
    std::size_t size = 0;
    for (auto _ : state) {
        std::rewind(file);
        ByteWriter bytes(file);
        write(drawing, bytes);
        size = bytes.position();
    }
    std::fclose(file);
    const auto triangles = static_cast<double>(state.range(0));
    state.counters["bytes/triangle"] = static_cast<double>(size) / triangles;
    state.counters["triangles"] =
        benchmark::Counter(triangles, benchmark::Counter::kIsIterationInvariantRate);
}

void pdf(benchmark::State& state)
{
    measure(state,
            [](const VectorDrawing& drawing, ByteWriter& bytes) { writePdf(drawing, {}, bytes); });
}

void postScript(benchmark::State& state)
{
    measure(state, [](const VectorDrawing& drawing, ByteWriter& bytes) {
        writePostScript(drawing, {}, bytes);
    });
}

void sizes(benchmark::internal::Benchmark* one)
{
    one->ArgNames({"triangles", "look", "scattered"})
        ->Unit(benchmark::kMillisecond)
        ->ArgsProduct({{100000, 1000000}, {FLAT, SHADED}, {0, 1}});
}

BENCHMARK(pdf)->Apply(sizes)->ArgsProduct({{100000, 1000000},
                                           {MIXED, CLEAR, PLAIN, LARGE, LINED},
                                           {1}});
BENCHMARK(postScript)->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
