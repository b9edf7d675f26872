// Reading VRML97 text beside the floor: scanning the same text for its numbers.
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>

namespace {

constexpr int kColumns = 1000;
constexpr int kRows = 500;

template <class... A>
void add(std::string& text, const char* pattern, A... values)
{
    char line[256];
    text.append(line,
                static_cast<std::size_t>(std::snprintf(line, sizeof line, pattern, values...)));
}

/// One face set of a million triangles with normals.
const std::string& mesh()
{
    static const std::string text = [] {
        std::string points, normals, faces;
        for (int j = 0; j <= kRows; ++j) {
            for (int i = 0; i <= kColumns; ++i) {
                const double x = i / 10.0, y = j / 10.0;
                const double a = -1.2 * std::cos(x * .4) * std::cos(y * .37),
                             b = 1.11 * std::sin(x * .4) * std::sin(y * .37);
                const double l = std::sqrt(a * a + b * b + 1);
                add(points, "%.6g %.6g %.6g,\n", x, y, 3 * std::sin(x * .4) * std::cos(y * .37));
                add(normals, "%.5f %.5f %.5f,\n", a / l, b / l, 1 / l);
                const int at = j * (kColumns + 1) + i;
                if (i == kColumns || j == kRows)
                    continue;
                add(faces, "%d, %d, %d, -1,\n%d, %d, %d, -1,\n", at, at + 1, at + kColumns + 2, at,
                    at + kColumns + 2, at + kColumns + 1);
            }
        }
        return "#VRML V2.0 utf8\nDEF Mesh Shape { geometry IndexedFaceSet { coord Coordinate { "
               "point [\n"
               + points + "] } normal Normal { vector [\n" + normals + "] } coordIndex [\n" + faces
               + "] } }\n";
    }();
    return text;
}

/// Small transforms with shapes, sharing appearances and geometries; one entry in ten repeats one.
std::string nodes(int count)
{
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

void read(const std::string& text)
{
    SoInput in;
    in.setBuffer(text.data(), text.size());
    const SoRef<SoVRMLGroup> root(SoDB::readAllVRML(&in));
    benchmark::DoNotOptimize(root.get());
}

void meshFloor(benchmark::State& state)
{
    const std::string& text = mesh(); // made before the clock runs
    for (auto _ : state)
        scan(text);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(mesh().size()));
}

void meshRead(benchmark::State& state)
{
    SoDB::init();
    const std::string& text = mesh();
    for (auto _ : state)
        read(text);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(mesh().size()));
}

void nodesRead(benchmark::State& state)
{
    SoDB::init();
    const std::string text = nodes(static_cast<int>(state.range(0)));
    for (auto _ : state)
        read(text);
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

BENCHMARK(meshFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(meshRead)->Unit(benchmark::kMillisecond);
BENCHMARK(nodesRead)->Arg(12500)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
