// Reading VRML97 text, plain and packed, beside the floor: inflating it and scanning it for its
// numbers. Memory beside what the graph takes in the end.
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>
#include <string>

namespace {

template <class... A>
void add(std::string& text, const char* pattern, A... values)
{
    char line[256];
    text.append(line,
                static_cast<std::size_t>(std::snprintf(line, sizeof line, pattern, values...)));
}

/// One face set with normals.
const std::string& mesh(std::int64_t triangles)
{
    static std::map<std::int64_t, std::string> known;
    std::string& text = known[triangles];
    if (text.empty()) {
        const int columns = 1000, rows = static_cast<int>(triangles / 2 / columns);
        std::string points, normals, faces;
        for (int j = 0; j <= rows; ++j) {
            for (int i = 0; i <= columns; ++i) {
                const double x = i / 10.0, y = j / 10.0;
                const double a = -1.2 * std::cos(x * .4) * std::cos(y * .37),
                             b = 1.11 * std::sin(x * .4) * std::sin(y * .37);
                const double l = std::sqrt(a * a + b * b + 1);
                add(points, "%.6g %.6g %.6g,\n", x, y, 3 * std::sin(x * .4) * std::cos(y * .37));
                add(normals, "%.5f %.5f %.5f,\n", a / l, b / l, 1 / l);
                const int at = j * (columns + 1) + i;
                if (i == columns || j == rows)
                    continue;
                add(faces, "%d, %d, %d, -1,\n%d, %d, %d, -1,\n", at, at + 1, at + columns + 2, at,
                    at + columns + 2, at + columns + 1);
            }
        }
        text = "#VRML V2.0 utf8\nDEF Mesh Shape { geometry IndexedFaceSet { coord Coordinate { "
               "point [\n"
               + points + "] } normal Normal { vector [\n" + normals + "] } coordIndex [\n" + faces
               + "] } }\n";
    }
    return text;
}

std::string packed(const std::string& text)
{
    z_stream z{};
    deflateInit2(&z, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string result(deflateBound(&z, text.size()), 0);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    z.avail_in = static_cast<uInt>(text.size());
    z.next_out = reinterpret_cast<Bytef*>(result.data());
    z.avail_out = static_cast<uInt>(result.size());
    deflate(&z, Z_FINISH);
    result.resize(z.total_out);
    deflateEnd(&z);
    return result;
}

std::string inflated(const std::string& bytes, std::size_t size)
{
    std::string result(size, 0);
    z_stream z{};
    inflateInit2(&z, 15 + 16);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    z.avail_in = static_cast<uInt>(bytes.size());
    z.next_out = reinterpret_cast<Bytef*>(result.data());
    z.avail_out = static_cast<uInt>(result.size());
    inflate(&z, Z_FINISH);
    inflateEnd(&z);
    return result;
}

/// Small transforms with shapes, sharing appearances and geometries; one entry in ten repeats one.
std::string nodes(int count, std::int64_t& bodies)
{
    bodies = 0;
    static const char* kGeometry[] = {"Box { size 1 2 3 }", "Sphere { radius 1.5 }",
                                      "Cone { bottomRadius 1 height 2 }",
                                      "Cylinder { radius 0.5 height 3 }"};
    std::string text = "#VRML V2.0 utf8\n";
    for (int i = 0; i < count; ++i) {
        if (i >= 64 && i % 10 == 9) {
            add(text, "USE T%d\n", i - 1 - i % 7);
            continue;
        }
        const double at = i * 0.0137;
        bodies += i < 16 ? 5 : 2;
        add(text,
            "DEF T%d Transform {\n  translation %.4f %.4f %.4f\n  rotation 0 1 0 %.5f\n  scale 1 1 "
            "1.25\n  children [\n    Shape {\n",
            i, at, -at, at * 2, std::fmod(at, 6.28));
        if (i < 16)
            add(text,
                "      appearance DEF A%d Appearance { material Material { diffuseColor 0.%d 0.5 "
                "0.2 } }\n      geometry DEF G%d %s\n",
                i, i, i, kGeometry[i % 4]);
        else
            add(text, "      appearance USE A%d\n      geometry USE G%d\n", i * 7 % 16, i * 5 % 16);
        text += "    }\n  ]\n}\n";
    }
    return text;
}

void scan(const std::string& text)
{
    double sum = 0;
    const char *at = text.data(), *end = at + text.size();
    while (at < end) {
        const char c = *at;
        if ((c >= '0' && c <= '9') || c == '-' || c == '.') {
            float value = 0;
            const char* next = std::from_chars(at, end, value).ptr;
            sum += value;
            at = next > at ? next : at + 1;
        } else {
            ++at;
        }
    }
    benchmark::DoNotOptimize(sum);
}

SoRef<SoVRMLGroup> read(const std::string& text)
{
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return SoRef<SoVRMLGroup>(SoDB::readAllVRML(&in));
}

void countBytes(benchmark::State& state, const std::string& text)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

// Argument of the meshes: triangles.

void meshFloor(benchmark::State& state)
{
    const std::string& text = mesh(state.range(0));
    for (auto _ : state)
        scan(text);
    countBytes(state, text);
}

void meshRead(benchmark::State& state)
{
    SoDB::init();
    const std::string& text = mesh(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(read(text).get());
    countBytes(state, text);
}

void packedFloor(benchmark::State& state)
{
    const std::string& text = mesh(state.range(0));
    const std::string bytes = packed(text);
    for (auto _ : state)
        scan(inflated(bytes, text.size()));
    countBytes(state, text);
}

void packedRead(benchmark::State& state)
{
    SoDB::init();
    const std::string& text = mesh(state.range(0));
    const std::string bytes = packed(text);
    for (auto _ : state)
        benchmark::DoNotOptimize(read(bytes).get());
    countBytes(state, text);
}

/// Argument: entries in the file. The graph is let go of outside the clock.
void nodesRead(benchmark::State& state)
{
    SoDB::init();
    std::int64_t bodies = 0;
    const std::string text = nodes(static_cast<int>(state.range(0)), bodies);
    for (auto _ : state) {
        SoRef<SoVRMLGroup> root = read(text);
        state.PauseTiming();
        root.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * bodies);
    countBytes(state, text);
}

/// A line of the process's status, in bytes.
double statusBytes(const char* name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name))
            return std::strtod(line.c_str() + std::strlen(name), nullptr) * 1024;
    return 0;
}

/// What reading a file takes at its peak beyond what was there before, and what the graph takes.
void measurePeak(benchmark::State& state, const std::string& text)
{
    SoDB::init();
    const std::string path = "/tmp/bench_io_read.wrl";
    std::ofstream(path, std::ios::binary) << text;
    double peak = 0, graph = 0;
    for (auto _ : state) {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << 5; // the peak begins anew
        const double before = statusBytes("VmRSS:");
        SoInput in;
        in.openFile(SbString(path));
        SoRef<SoVRMLGroup> root(SoDB::readAllVRML(&in));
        peak = statusBytes("VmHWM:") - before;
        in.closeFile();
        malloc_trim(0);
        graph = statusBytes("VmRSS:") - before;
        root.reset();
    }
    std::remove(path.c_str());
    state.counters["graph"] = graph;
    state.counters["peak"] = peak;
    state.counters["peak/graph"] = peak / graph;
}

void meshPeak(benchmark::State& state)
{
    measurePeak(state, std::string(mesh(state.range(0))));
}

void packedPeak(benchmark::State& state)
{
    measurePeak(state, packed(mesh(state.range(0))));
}

void nodesPeak(benchmark::State& state)
{
    std::int64_t bodies = 0;
    measurePeak(state, nodes(static_cast<int>(state.range(0)), bodies));
}

/// Stops itself half-way, and measures the pauses between calls of progress().
class StoppedInput final : public SoInput {
public:
    /// Processor time: others use the machine, too.
    static double now()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    }
    void progress(std::size_t bytesRead, std::size_t total) override
    {
        const double time = now();
        longestPause = std::max(longestPause, time - last);
        last = time;
        if (bytesRead >= total / 2)
            stop();
    }
    double last = now();
    double longestPause = 0;
};

/// The time from a stop inside progress() to the return; a stop that comes from elsewhere waits
/// one pause in addition. Inflating is part of the reading.
void measureStop(benchmark::State& state, const std::string& text)
{
    SoDB::init();
    double pause = 0;
    for (auto _ : state) {
        StoppedInput in;
        if (in.setBuffer(text.data(), text.size()))
            SoDB::readAllVRML(&in);
        state.SetIterationTime(StoppedInput::now() - in.last);
        pause = std::max(pause, in.longestPause);
    }
    state.counters["pause_ms"] = pause * 1e3;
}

void meshStop(benchmark::State& state)
{
    measureStop(state, mesh(state.range(0)));
}

void packedStop(benchmark::State& state)
{
    measureStop(state, packed(mesh(state.range(0))));
}

void nodesStop(benchmark::State& state)
{
    std::int64_t bodies = 0;
    measureStop(state, nodes(static_cast<int>(state.range(0)), bodies));
}

/// Argument: instances of a small prototype.
void instancesStop(benchmark::State& state)
{
    std::string text = "#VRML V2.0 utf8\nPROTO P [ exposedField SFVec3f at 0 0 0 ] { Transform { "
                       "translation IS at children Shape { geometry Box { } } } }\n";
    for (int i = 0; i < state.range(0); ++i)
        add(text, "P { at %d 0 0 }\n", i);
    measureStop(state, text);
}

void meshes(benchmark::internal::Benchmark* b)
{
    b->Arg(50'000)->Arg(250'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

void entries(benchmark::internal::Benchmark* b)
{
    b->Arg(12'500)->Arg(50'000)->Arg(200'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(meshFloor)->Apply(meshes);
BENCHMARK(meshRead)->Apply(meshes);
BENCHMARK(packedFloor)->Apply(meshes);
BENCHMARK(packedRead)->Apply(meshes);
BENCHMARK(nodesRead)->Apply(entries);
BENCHMARK(meshPeak)->Apply(meshes)->Iterations(1);
BENCHMARK(packedPeak)->Apply(meshes)->Iterations(1);
BENCHMARK(nodesPeak)->Apply(entries)->Iterations(1);
BENCHMARK(meshStop)->Apply(meshes)->UseManualTime()->Iterations(5);
BENCHMARK(packedStop)->Apply(meshes)->UseManualTime()->Iterations(5);
BENCHMARK(nodesStop)->Apply(entries)->UseManualTime()->Iterations(5);
BENCHMARK(instancesStop)->Apply(entries)->UseManualTime()->Iterations(5);

} // namespace

BENCHMARK_MAIN();
