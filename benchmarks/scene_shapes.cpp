// A mesh of a million triangles: building its geometry, its search tree, rays through it, and picks
// with the action. And one face with very many corners.

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/shapes/SoGeometry.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>
#include <kalmyr/shapes/TriangleTree.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

namespace {

constexpr int kSide = 707; // 2 * 707 * 707 triangles

struct Grid {
    std::vector<SbVec3f> positions;
    std::vector<std::int32_t> faces;
    std::vector<std::uint32_t> triangles;

    Grid()
    {
        for (int y = 0; y <= kSide; ++y) {
            for (int x = 0; x <= kSide; ++x) {
                const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
                positions.emplace_back(fx, fy, 20 * std::sin(fx * 0.03f) * std::cos(fy * 0.05f));
            }
        }
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const int a = y * (kSide + 1) + x, b = a + 1, c = a + kSide + 1, d = c + 1;
                faces.insert(faces.end(), {a, b, d, -1, a, d, c, -1});
            }
        }
        for (const std::int32_t i : faces) {
            if (i >= 0)
                triangles.push_back(static_cast<std::uint32_t>(i));
        }
    }
};

const Grid& grid()
{
    static const Grid s_grid;
    return s_grid;
}

/// Argument: crease angle in tenths of a radian.
void buildGeometry(benchmark::State& state)
{
    kalmyr::FaceInput input;
    input.positions = grid().positions;
    input.coordIndex = grid().faces;
    input.creaseAngle = static_cast<float>(state.range(0)) / 10;
    for (auto _ : state) {
        const SoRef<SoGeometry> geometry(new SoGeometry);
        kalmyr::FaceBuilder(input).build(*geometry);
        benchmark::DoNotOptimize(geometry->triangles.data());
        state.counters["vertices"] = static_cast<double>(geometry->positions.size());
    }
    state.counters["triangles"] = static_cast<double>(grid().triangles.size() / 3);
}

void buildTree(benchmark::State& state)
{
    for (auto _ : state) {
        const kalmyr::TriangleTree tree(grid().positions, grid().triangles);
        state.counters["bytes/triangle"] =
            static_cast<double>(tree.getSize()) / static_cast<double>(tree.getNumTriangles());
    }
}

/// Rays from above to anywhere on the ground.
std::vector<std::pair<SbVec3f, SbVec3f>> makeRays()
{
    std::mt19937 engine(1);
    std::uniform_real_distribution<float> place(0, kSide);
    std::vector<std::pair<SbVec3f, SbVec3f>> rays;
    for (int i = 0; i < 4096; ++i) {
        const SbVec3f from(place(engine), place(engine), 300), to(place(engine), place(engine), 0);
        rays.emplace_back(from, to - from);
    }
    return rays;
}

void castRay(benchmark::State& state)
{
    const kalmyr::TriangleTree tree(grid().positions, grid().triangles);
    const auto rays = makeRays();
    std::size_t i = 0, hits = 0;
    for (auto _ : state) {
        kalmyr::TriangleTree::Hit hit;
        const auto& [origin, direction] = rays[i++ % rays.size()];
        hits += tree.intersect(origin, direction, 0, 1e30f, hit);
    }
    state.counters["hit"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}

SoRef<SoSeparator> meshScene()
{
    SoDB::init();
    SoRef<SoSeparator> root(new SoSeparator);
    auto* coordinates = new SoCoordinate3;
    auto* faces = new SoIndexedFaceSet;
    coordinates->point.setValues(0, grid().positions);
    faces->coordIndex.setValues(0, grid().faces);
    root->addChild(coordinates);
    root->addChild(faces);
    return root;
}

/// Argument: whether every face that is met is wanted.
void pickMesh(benchmark::State& state)
{
    const SoRef<SoSeparator> root = meshScene();
    SoRayPickAction action{SbViewportRegion()};
    action.setPickAll(state.range(0) != 0);
    const auto rays = makeRays();
    std::size_t i = 0, hits = 0;
    const auto pick = [&] {
        const auto& [origin, direction] = rays[i++ % rays.size()];
        action.setRay(origin, direction);
        action.apply(root.get());
        hits += action.getPickedPoints().size();
    };
    pick();
    for (auto _ : state)
        pick();
    state.counters["hit"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}

/// The first pick, geometry known and search tree not.
void pickMeshFirst(benchmark::State& state)
{
    const SoRef<SoSeparator> root = meshScene();
    auto* faces = static_cast<SoIndexedFaceSet*>(root->getChild(1));
    SoRayPickAction action{SbViewportRegion()};
    SoGetBoundingBoxAction bounds{SbViewportRegion()};
    for (auto _ : state) {
        state.PauseTiming();
        faces->touch();
        bounds.apply(root.get());
        state.ResumeTiming();
        action.setRay(SbVec3f(300, 300, 300), SbVec3f(0, 0.1f, -1));
        action.apply(root.get());
    }
}

/// One face, jagged all round. Argument: number of corners.
void cutJaggedFace(benchmark::State& state)
{
    constexpr double kTurn = 6.283185307179586;
    std::mt19937 engine(1);
    std::uniform_real_distribution<double> radius(50, 100);
    kalmyr::FaceInput input;
    std::vector<SbVec3f> corners;
    std::vector<std::int32_t> face;
    const auto count = static_cast<int>(state.range(0));
    for (int i = 0; i < count; ++i) {
        const double angle = kTurn * i / count, r = radius(engine);
        corners.emplace_back(static_cast<float>(r * std::cos(angle)),
                             static_cast<float>(r * std::sin(angle)), 0.0f);
        face.push_back(i);
    }
    face.push_back(-1);
    input.positions = corners;
    input.coordIndex = face;
    input.convex = false;
    for (auto _ : state) {
        const SoRef<SoGeometry> geometry(new SoGeometry);
        kalmyr::FaceBuilder(input).build(*geometry);
        state.counters["triangles"] = static_cast<double>(geometry->triangles.size() / 3);
    }
    state.SetComplexityN(count);
}

} // namespace

BENCHMARK(cutJaggedFace)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Arg(300000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(buildGeometry)->Arg(0)->Arg(5)->Arg(32)->Unit(benchmark::kMillisecond);
BENCHMARK(buildTree)->Unit(benchmark::kMillisecond);
BENCHMARK(castRay)->Unit(benchmark::kMicrosecond);
BENCHMARK(pickMesh)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(pickMeshFirst)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
