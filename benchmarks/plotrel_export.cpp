// The way of a scene to a vector file: sight, light, hidden surfaces, writing. Besides the times:
// what the file takes for each triangle, and the memory of the process at its highest.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/plotrel/SoToPDFAction.h>
#include <kalmyr/plotrel/SoVectorizeCGMAction.h>
#include <kalmyr/plotrel/SoVectorizeGDIAction.h>
#include <kalmyr/plotrel/SoVectorizeHPGLAction.h>
#include <kalmyr/plotrel/SoVectorizePSAction.h>
#include <kalmyr/shapes/SoQuadMesh.h>
#include <kalmyr/shapes/SoSphere.h>

#include <sys/resource.h>

#include <cmath>
#include <filesystem>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

namespace {

SoSeparator* withCamera()
{
    SoDB::init();
    SoPlotrel::init();
    auto* root = new SoSeparator;
    auto* camera = new SoPerspectiveCamera;
    camera->position.setValue(SbVec3f(0, 0, 6));
    camera->nearDistance.setValue(1);
    camera->farDistance.setValue(40);
    root->addChild(camera);
    root->addChild(new SoDirectionalLight);
    return root;
}

/// A wavy sheet seen from the front: all triangles are visible.
SoRef<SoNode> sheet(int triangles)
{
    SoRef<SoNode> root(withCamera());
    const int side = static_cast<int>(std::sqrt(triangles / 2.0));
    auto* hints = new SoShapeHints;
    hints->creaseAngle.setValue(3);
    auto* places = new SoCoordinate3;
    places->point.setNum((side + 1) * (side + 1));
    std::vector<SbVec3f> points;
    for (int j = 0; j <= side; ++j)
        for (int i = 0; i <= side; ++i) {
            const float x = 5.0f * static_cast<float>(i) / static_cast<float>(side) - 2.5f;
            const float y = 5.0f * static_cast<float>(j) / static_cast<float>(side) - 2.5f;
            points.emplace_back(x, y, 0.2f * std::sin(5 * x) * std::cos(4 * y));
        }
    places->point.setValues(0, static_cast<int>(points.size()), points.data());
    auto* mesh = new SoQuadMesh;
    mesh->verticesPerRow.setValue(side + 1);
    mesh->verticesPerColumn.setValue(side + 1);
    auto* group = static_cast<SoSeparator*>(root.get());
    group->addChild(hints);
    group->addChild(places);
    group->addChild(mesh);
    return root;
}

/// Spheres in and behind each other: about a third of the triangles faces the eye, and many of
/// those are hidden, or intersect others.
SoRef<SoNode> spheres(int triangles)
{
    SoRef<SoNode> root(withCamera());
    auto* group = static_cast<SoSeparator*>(root.get());
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-2, 2), color(0, 1);
    constexpr int kTrianglesOfSphere = 960;
    for (int i = 0; i < std::max(1, triangles / kTrianglesOfSphere); ++i) {
        auto* one = new SoSeparator;
        auto* material = new SoMaterial;
        material->diffuseColor.setValue(SbColor(color(random), color(random), color(random)));
        auto* move = new SoTransform;
        move->translation.setValue(SbVec3f(place(random), place(random), place(random)));
        move->scaleFactor.setValue(SbVec3f(0.3f, 0.3f, 0.3f));
        one->addChild(material);
        one->addChild(move);
        one->addChild(new SoSphere);
        group->addChild(one);
    }
    return root;
}

template <class Action>
void exportScene(benchmark::State& state, SoRef<SoNode> (*make)(int))
{
    const SoRef<SoNode> root = make(static_cast<int>(state.range(0)));
    const std::string name =
        (std::filesystem::temp_directory_path() / "kalmyr_benchmark_export").string();
    for (auto _ : state) {
        Action action;
        SoVectorOutput& output = *action.getVectorOutput();
        if (!output.openFile(name.c_str()))
            return state.SkipWithError("cannot write");
        action.apply(root.get());
        if (!output.closeFile())
            return state.SkipWithError("not written");
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["bytes/triangle"] =
        static_cast<double>(std::filesystem::file_size(name)) / static_cast<double>(state.range(0));
    state.counters["peakMB"] = static_cast<double>(usage.ru_maxrss) / 1024;
    state.SetComplexityN(state.range(0));
    std::filesystem::remove(name);
}

template <class Action>
void visibleTo(benchmark::State& state)
{
    exportScene<Action>(state, sheet);
}
void spheresToPDF(benchmark::State& state)
{
    exportScene<SoToPDFAction>(state, spheres);
}

void atGrowingSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(10)
        ->Range(10'000, 1'000'000)
        ->Complexity(benchmark::oNLogN)
        ->Unit(benchmark::kMillisecond);
}
BENCHMARK(visibleTo<SoToPDFAction>)->Apply(atGrowingSizes);
BENCHMARK(spheresToPDF)->Apply(atGrowingSizes);
BENCHMARK(visibleTo<SoVectorizePSAction>)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(visibleTo<SoVectorizeCGMAction>)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(visibleTo<SoVectorizeGDIAction>)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(visibleTo<SoVectorizeHPGLAction>)->Arg(100'000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
