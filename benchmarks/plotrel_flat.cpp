// Drawings to files of flat formats, and the passes before them, by the number of triangles.
#include "ByteWriter.h"
#include "cgm/CgmWriter.h"
#include "emf/EmfWriter.h"
#include "Flattening.h"
#include "hpgl/HpglWriter.h"

#include <benchmark/benchmark.h>

#include <cmath>

using namespace kalmyr::detail;

namespace {

/// A hill of triangles, lit from a side, that fills a page.
VectorDrawing hill(std::int64_t triangles, float opacity = 1, float shift = 0)
{
    VectorDrawing drawing;
    drawing.pageWidth = 297;
    drawing.pageHeight = 210;
    drawing.x = drawing.y = 10;
    drawing.width = 277;
    drawing.height = 190;
    const int rows = static_cast<int>(std::sqrt(triangles / 2.0));
    const auto at = [&](int column, int row) {
        const float x = static_cast<float>(column) / static_cast<float>(rows);
        const float y = static_cast<float>(row) / static_cast<float>(rows);
        const float light = 0.5f + 0.3f * std::sin(9 * x) * std::cos(7 * y);
        return VectorVertex{10 + shift + (277 - shift) * x, 10 + shift + (190 - shift) * y, light,
                            light * 0.8f, 0.3f + light * 0.3f};
    };
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < rows; ++column)
            for (int half = 0; half < 2; ++half) {
                VectorPrimitive& one = drawing.add(VectorPrimitive::POLYGON);
                one.shaded = true;
                one.opacity = opacity;
                drawing.addVertex(at(column, row));
                drawing.addVertex(at(column + 1, row + half));
                drawing.addVertex(at(column + 1 - half, row + 1));
            }
    return drawing;
}

VectorDrawing flatHill(std::int64_t triangles)
{
    VectorDrawing drawing = hill(triangles);
    divideShading(drawing, 16.0f / 255);
    return drawing;
}

void writeHpglColors(const VectorDrawing& drawing, ByteWriter& bytes)
{
    writeHpgl(drawing, {}, bytes);
}

void writeFormat(benchmark::State& state, void (*write)(const VectorDrawing&, ByteWriter&))
{
    const VectorDrawing drawing = flatHill(state.range(0));
    std::size_t size = 0;
    for (auto _ : state) {
        ByteWriter bytes(nullptr);
        write(drawing, bytes);
        size = bytes.position();
        benchmark::DoNotOptimize(bytes.take());
    }
    state.counters["bytes_each"] = static_cast<double>(size) / static_cast<double>(state.range(0));
}

void runPass(benchmark::State& state, const VectorDrawing& drawing, void (*pass)(VectorDrawing&))
{
    std::size_t count = 0;
    for (auto _ : state) {
        state.PauseTiming();
        VectorDrawing changed = drawing;
        state.ResumeTiming();
        pass(changed);
        count = changed.primitives.size();
    }
    state.counters["pieces_each"] =
        static_cast<double>(count) / static_cast<double>(state.range(0));
}

void divide(benchmark::State& state)
{
    runPass(state, hill(state.range(0)),
            [](VectorDrawing& drawing) { divideShading(drawing, 16.0f / 255); });
}

/// Few large triangles, so that nearly all is division.
void divideFinely(benchmark::State& state)
{
    runPass(state, hill(state.range(0) / 20),
            [](VectorDrawing& drawing) { divideShading(drawing, 1.0f / 255); });
}

/// Half of the triangles are glass above the other half.
void mix(benchmark::State& state)
{
    VectorDrawing drawing = hill(state.range(0) / 2);
    const VectorDrawing glass = hill(state.range(0) / 2, 0.5f, 0.31f);
    const auto first = static_cast<std::uint32_t>(drawing.vertices.size());
    drawing.vertices.insert(drawing.vertices.end(), glass.vertices.begin(), glass.vertices.end());
    for (VectorPrimitive one : glass.primitives) {
        one.first += first;
        drawing.primitives.push_back(one);
    }
    runPass(state, drawing, [](VectorDrawing& changed) { mixTransparency(changed); });
}

/// One pane above all of them.
void mixPane(benchmark::State& state)
{
    VectorDrawing drawing = hill(state.range(0));
    drawing.add(VectorPrimitive::POLYGON).opacity = 0.5f;
    for (const auto& [x, y] : {std::pair(12, 12), {280, 12}, {280, 190}, {12, 190}})
        drawing.addVertex({static_cast<float>(x), static_cast<float>(y), 0, 0, 1});
    runPass(state, drawing, [](VectorDrawing& changed) { mixTransparency(changed); });
}

} // namespace

BENCHMARK_CAPTURE(writeFormat, cgm, writeCgm)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeFormat, emf, writeEmf)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeFormat, hpgl, writeHpglColors)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(divide)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(divideFinely)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(mix)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(mixPane)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
