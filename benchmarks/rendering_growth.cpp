// Frames of more and more shapes: what one costs beyond the driver, and what a change adds.

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/RenderStatistics.h>
#include <kalmyr/shapes/SoCube.h>

#include <benchmark/benchmark.h>
#include <epoxy/gl.h>

#include <cmath>
#include <vector>

namespace {

constexpr int kSize = 64; // pixels: the driver has as little to do as may be

struct Scene {
    SoRef<SoSeparator> root{new SoSeparator};
    SoSeparator* group = nullptr;
    std::vector<SoTranslation*> places;
    SoRef<SoCube> cube{new SoCube};
};

SoSeparator* makePart(Scene& scene, float x, float y)
{
    auto* part = new SoSeparator(2);
    auto* place = new SoTranslation;
    place->translation.setValue(SbVec3f(x, y, 0));
    scene.places.push_back(place);
    part->addChild(place);
    part->addChild(scene.cube.get());
    // Three visits make a list worth keeping.
    part->addChild(new SoSeparator(0));
    return part;
}

Scene makeScene(std::int64_t count)
{
    Scene scene;
    const int side = static_cast<int>(std::sqrt(static_cast<double>(count)));
    auto* camera = new SoPerspectiveCamera;
    camera->position.setValue(SbVec3f(0, 0, 3.0f * static_cast<float>(side)));
    camera->nearDistance.setValue(static_cast<float>(side));
    camera->farDistance.setValue(5.0f * static_cast<float>(side));
    scene.root->addChild(camera);
    scene.root->addChild(new SoDirectionalLight);
    scene.group = new SoSeparator(static_cast<int>(count));
    for (std::int64_t i = 0; i < count; ++i) {
        scene.group->addChild(makePart(scene, static_cast<float>(i % side) - side / 2.0f,
                                       static_cast<float>(i / side) - side / 2.0f));
    }
    scene.root->addChild(scene.group);
    return scene;
}

enum Change { NOTHING, MOVE, CAMERA, INSERT };

void change(Scene& scene, Change what, int step)
{
    const float shift = 0.001f * static_cast<float>(step % 100);
    switch (what) {
    case MOVE:
        scene.places[scene.places.size() / 2]->translation.setValue(SbVec3f(shift, 0, 0));
        break;
    case CAMERA:
        static_cast<SoCamera*>(scene.root->getChild(0))
            ->orientation.setValue(SbRotation(SbVec3f(0, 1, 0), shift));
        break;
    case INSERT:
        if (step % 2) {
            scene.group->removeChild(1);
        } else {
            scene.group->insertChild(makePart(scene, 0, 0), 1);
        }
        break;
    default:
        break;
    }
}

/// Arguments: shapes; what changes before each frame. The time is that of traversing and placing;
/// what the driver takes to hand over is told beside it.
void frameOfMany(benchmark::State& state)
{
    SoDB::init();
    SoOffscreenContext context;
    if (!context.makeCurrent()) {
        state.SkipWithError(context.getError());
        return;
    }
    GLuint names[2];
    GLuint framebuffer = 0;
    glGenRenderbuffers(2, names);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    constexpr GLenum kFormats[] = {GL_RGBA8, GL_DEPTH_COMPONENT24};
    constexpr GLenum kPlaces[] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
    for (int i = 0; i < 2; ++i) {
        glBindRenderbuffer(GL_RENDERBUFFER, names[i]);
        glRenderbufferStorage(GL_RENDERBUFFER, kFormats[i], kSize, kSize);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, kPlaces[i], GL_RENDERBUFFER, names[i]);
    }
    {
        Scene scene = makeScene(state.range(0));
        const auto what = static_cast<Change>(state.range(1));
        SoGLRenderAction action(SbViewportRegion(kSize, kSize));
        action.setClearing(true, true);
        for (int i = 0; i < 4; ++i) {
            change(scene, what, i);
            action.apply(scene.root.get());
        }
        const auto& statistics = action.getStatistics();
        int step = 0;
        double submit = 0;
        for (auto _ : state) {
            change(scene, what, step++);
            action.apply(scene.root.get());
            glFinish();
            state.SetIterationTime(statistics.traverseSeconds + statistics.flattenSeconds);
            submit += statistics.submitSeconds;
        }
        const auto shapes = static_cast<double>(state.range(0));
        state.counters["bytes_a_shape"] =
            static_cast<double>(statistics.geometryBytes + statistics.planBytes) / shapes;
        state.counters["visits"] = static_cast<double>(statistics.visits);
        state.counters["calls"] = static_cast<double>(statistics.drawCalls);
        state.counters["submit_ms"] = submit * 1000 / static_cast<double>(step);
        SoGLRenderAction::releaseContext();
    }
    context.doneCurrent();
}

} // namespace

BENCHMARK(frameOfMany)
    ->ArgNames({"shapes", "change"})
    ->ArgsProduct({{1000, 10000, 100000, 1000000}, {NOTHING, MOVE, CAMERA, INSERT}})
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
