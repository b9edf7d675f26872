// What a viewer does before a frame in which only the camera moved: from outside of a scene, where
// its box says where the near plane stands, and in its midst, where the nearest things are looked
// for.
#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

/// A city of cubes in blocks of 100, around the origin.
SoRef<SoSeparator> makeCity(int numCubes)
{
    SoRef<SoSeparator> city(new SoSeparator);
    const int side = static_cast<int>(std::sqrt(numCubes / 100.0));
    for (int b = 0; b < side * side; ++b) {
        auto* block = new SoSeparator;
        for (int i = 0; i < 100; ++i) {
            auto* house = new SoSeparator;
            auto* place = new SoTranslation;
            place->translation =
                SbVec3f(static_cast<float>(b % side - side / 2) * 50 + i % 10 * 5, 0,
                        static_cast<float>(b / side - side / 2) * 50 + i / 10 * 5);
            house->addChild(place);
            house->addChild(new SoCube);
            block->addChild(house);
        }
        city->addChild(block);
    }
    return city;
}

/// A wavy ground of about so many triangles.
SoRef<SoSeparator> makeGround(int numTriangles)
{
    const int side = static_cast<int>(std::sqrt(numTriangles / 2.0));
    std::vector<SbVec3f> points;
    std::vector<std::int32_t> faces;
    for (int z = 0; z <= side; ++z)
        for (int x = 0; x <= side; ++x)
            points.emplace_back(static_cast<float>(x - side / 2), std::sin(x * 0.3f) - 3,
                                static_cast<float>(z - side / 2));
    for (int z = 0; z < side; ++z) {
        for (int x = 0; x < side; ++x) {
            const int corner = z * (side + 1) + x;
            for (const int i : {corner, corner + side + 1, corner + side + 2, corner + 1, -1})
                faces.push_back(i);
        }
    }
    SoRef<SoSeparator> ground(new SoSeparator);
    auto* coordinates = new SoCoordinate3;
    coordinates->point.setValues(0, static_cast<int>(points.size()), points.data());
    auto* set = new SoIndexedFaceSet;
    set->coordIndex.setValues(0, static_cast<int>(faces.size()), faces.data());
    ground->addChild(coordinates);
    ground->addChild(set);
    return ground;
}

void prepare(benchmark::State& state, SoNode* scene, const SbVec3f& eye)
{
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSize(SbVec2i32(1280, 1024));
    viewer->setSceneGraph(scene);
    viewer->prepareFrame();
    float angle = 0;
    for (auto _ : state) {
        angle += 0.01f;
        viewer->getCamera()->position = eye;
        viewer->getCamera()->orientation = SbRotation(SbVec3f(0, 1, 0), angle);
        viewer->prepareFrame();
    }
}

void fromOutside(benchmark::State& state)
{
    const SoRef<SoSeparator> city = makeCity(static_cast<int>(state.range(0)));
    prepare(state, city.get(), SbVec3f(0, 0, 1e5f));
}

void amidShapes(benchmark::State& state)
{
    const SoRef<SoSeparator> city = makeCity(static_cast<int>(state.range(0)));
    prepare(state, city.get(), SbVec3f(2.5f, 0, 2.5f));
}

void overOneMesh(benchmark::State& state)
{
    const SoRef<SoSeparator> ground = makeGround(static_cast<int>(state.range(0)));
    prepare(state, ground.get(), SbVec3f(0, 0, 0));
}

void repeated(benchmark::State& state)
{
    const SoRef<SoSeparator> city = makeCity(static_cast<int>(state.range(0)));
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSceneGraph(city.get());
    viewer->prepareFrame();
    viewer->getCamera()->position = SbVec3f(2.5f, 0, 2.5f);
    viewer->prepareFrame();
    for (auto _ : state)
        viewer->prepareFrame();
}

BENCHMARK(fromOutside)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(amidShapes)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(overOneMesh)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(repeated)->Arg(10000)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    kalmyr::initGui();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
