// Frames of 1280 by 1024 pixels with and without the outline of a selected object.

#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/rendering/SoLineHighlightRenderAction.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/RenderStatistics.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoQuadMesh.h>

#include <epoxy/gl.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 1024;

enum Selected { NOTHING = 0, OBJECT = 1 };
enum Camera { STILL = 0, MOVING = 1 };

/// The shared context with a target of that size.
class Target {
public:
    Target()
    {
        m_ok = SoOffscreenContext::shared().makeCurrent();
        if (!m_ok)
            return;
        glGenRenderbuffers(2, m_buffers);
        glGenFramebuffers(1, &m_framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        attach(GL_COLOR_ATTACHMENT0, GL_RGBA8, m_buffers[0]);
        attach(GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT24, m_buffers[1]);
    }
    ~Target()
    {
        if (!m_ok)
            return;
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteRenderbuffers(2, m_buffers);
        SoOffscreenContext::shared().doneCurrent();
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    explicit operator bool() const { return m_ok; }

private:
    static void attach(GLenum where, GLenum format, GLuint buffer)
    {
        glBindRenderbuffer(GL_RENDERBUFFER, buffer);
        glRenderbufferStorage(GL_RENDERBUFFER, format, kWidth, kHeight);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, where, GL_RENDERBUFFER, buffer);
    }
    bool m_ok = false;
    GLuint m_framebuffer = 0;
    GLuint m_buffers[2] = {};
};

/// A wavy sheet of side * side quads.
SoNode* makeSheet(int side)
{
    auto* sheet = new SoSeparator;
    auto* points = new SoCoordinate3;
    auto* mesh = new SoQuadMesh;
    std::vector<SbVec3f> places;
    for (int i = 0; i < (side + 1) * (side + 1); ++i) {
        const float x = static_cast<float>(i % (side + 1)) / static_cast<float>(side) * 2 - 1;
        const float y = static_cast<float>(i / (side + 1)) / static_cast<float>(side) * 2 - 1;
        places.emplace_back(x, y, 0.1f * std::sin(9 * x) * std::cos(9 * y));
    }
    points->point.setValues(0, static_cast<int>(places.size()), places.data());
    mesh->verticesPerRow.setValue(side + 1);
    mesh->verticesPerColumn.setValue(side + 1);
    sheet->addChild(points);
    sheet->addChild(mesh);
    return sheet;
}

/// One of side * side cubes is selected.
SoNode* makeCubes(int side, SoNode*& one)
{
    auto* all = new SoSeparator;
    for (int i = 0; i < side * side; ++i) {
        auto* place = new SoSeparator;
        auto* translation = new SoTranslation;
        const float x = static_cast<float>(i % side) / static_cast<float>(side) * 2 - 1;
        const float y = static_cast<float>(i / side) / static_cast<float>(side) * 2 - 1;
        translation->translation.setValue(x, y, 0);
        auto* cube = new SoCube;
        const float size = 1.0f / static_cast<float>(side);
        cube->width.setValue(size);
        cube->height.setValue(size);
        cube->depth.setValue(size);
        place->addChild(translation);
        place->addChild(cube);
        all->addChild(place);
        if (i == side * side / 2 + side / 2)
            one = place;
    }
    return all;
}

void drawFrames(benchmark::State& state, SoNode* content, SoNode* object)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    camera->position.setValue(SbVec3f(0, 0, 3));
    camera->nearDistance.setValue(0.5f);
    camera->farDistance.setValue(6);
    auto* selection = new SoSelection;
    root->addChild(camera);
    root->addChild(new SoDirectionalLight);
    root->addChild(selection);
    selection->addChild(content);
    if (state.range(1) == OBJECT)
        selection->select(object);

    const Target target;
    if (!target) {
        state.SkipWithError("no OpenGL");
        return;
    }
    SoLineHighlightRenderAction action(SbViewportRegion(kWidth, kHeight));
    action.setClearing(true, true);
    for (int i = 0; i < 5; ++i)
        action.apply(root.get());
    std::size_t draws = 0;
    float x = 0;
    for (auto _ : state) {
        if (state.range(2) == MOVING)
            camera->position.setValue(SbVec3f(x = x > 0 ? -0.01f : 0.01f, 0, 3));
        action.apply(root.get());
        glFinish();
        draws += action.getStatistics().outlineDrawCalls;
    }
    state.counters["object_draws"] =
        static_cast<double>(draws) / static_cast<double>(state.iterations());
    selection->deselectAll();
}

/// Arguments: quads a side; what is selected; whether the camera moves.
void frameOfOneMesh(benchmark::State& state)
{
    SoDB::init();
    SoNode* sheet = makeSheet(static_cast<int>(state.range(0)));
    drawFrames(state, sheet, sheet);
}

/// Arguments: cubes a side; what is selected; whether the camera moves.
void frameOfManyShapes(benchmark::State& state)
{
    SoDB::init();
    SoNode* one = nullptr;
    SoNode* cubes = makeCubes(static_cast<int>(state.range(0)), one);
    drawFrames(state, cubes, one);
}

void addArguments(benchmark::internal::Benchmark* bench, std::initializer_list<int> sizes)
{
    bench->ArgNames({"side", "selected", "moving"})->Unit(benchmark::kMillisecond)->UseRealTime();
    for (const int size : sizes)
        for (const int camera : {STILL, MOVING})
            for (const int selected : {NOTHING, OBJECT})
                bench->Args({size, selected, camera});
}

const int kRegistered = [] {
    addArguments(benchmark::RegisterBenchmark("frameOfOneMesh", frameOfOneMesh), {70, 700});
    addArguments(benchmark::RegisterBenchmark("frameOfManyShapes", frameOfManyShapes), {100});
    return 0;
}();

} // namespace

BENCHMARK_MAIN();
