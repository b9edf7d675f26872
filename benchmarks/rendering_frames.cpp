// Frames of the renderer against plain OpenGL loops that draw the same picture in the same run.
//
//     bench_rendering_frames [FRAMES]
//
// Prints one "name value unit" line per figure. Frames of both sides alternate, so that a busy
// machine disturbs both alike; a figure is the median. The plain loops place every object anew for
// each frame, as a program with a moving camera has to.

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoNormal.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/rendering/RenderStatistics.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoSceneView.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>

#include <epoxy/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <vector>

namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 1024;
constexpr int kSide = 100;     // cubes a side: 10,000 in all
constexpr int kMeshSide = 708; // quads a side: 1,002,528 triangles in all

double now()
{
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Of all threads of the process: other programs disturb it less than the time of day.
double cpuNow()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

void print(const char* name, double value, const char* unit)
{
    std::printf("%s %.4g %s\n", name, value, unit);
    std::fflush(stdout);
}

const char* const kVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
uniform mat4 projection;
uniform mat4 modelView;
uniform mat3 normalMatrix;
out vec3 n;
void main() { n = normalMatrix * normal; gl_Position = projection * (modelView * vec4(position, 1.0)); }
)";
const char* const kFragment = R"(#version 330 core
in vec3 n;
uniform vec4 color;
uniform vec3 toLight;
uniform float ambient;
uniform bool twoSided;
out vec4 fragment;
void main()
{
    vec3 m = normalize(n);
    if (twoSided && !gl_FrontFacing) m = -m;
    fragment = vec4(color.rgb * max(dot(m, toLight), 0.0) + ambient, color.a);
}
)";

/// The plain side: vertex arrays, matrices and colours of the same items, drawn one after another.
class PlainLoop {
public:
    PlainLoop(const SoSceneView& view, bool solid);
    void draw() const;

private:
    struct Object {
        GLuint vertexArray;
        GLsizei count;
        SbMatrix matrix;
        SbVec4f color;
    };
    std::vector<Object> m_objects;
    SbMatrix m_viewing;
    SbMatrix m_projection;
    GLuint m_program;
    bool m_solid;
};

GLuint compilePlain()
{
    const GLuint program = glCreateProgram();
    for (const auto& [stage, text] :
         {std::pair{GL_VERTEX_SHADER, kVertex}, {GL_FRAGMENT_SHADER, kFragment}}) {
        const GLuint shader = glCreateShader(static_cast<GLenum>(stage));
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        glAttachShader(program, shader);
    }
    glLinkProgram(program);
    return program;
}

GLuint uploadPlain(const SoGeometry& g)
{
    GLuint names[3];
    glGenVertexArrays(1, &names[0]);
    glGenBuffers(2, &names[1]);
    glBindVertexArray(names[0]);
    const auto bytes = static_cast<GLsizeiptr>(g.positions.size() * sizeof(SbVec3f));
    glBindBuffer(GL_ARRAY_BUFFER, names[1]);
    glBufferData(GL_ARRAY_BUFFER, 2 * bytes, nullptr, GL_STATIC_DRAW);
    glBufferSubData(GL_ARRAY_BUFFER, 0, bytes, g.positions.data());
    glBufferSubData(GL_ARRAY_BUFFER, bytes, bytes, g.normals.data());
    glEnableVertexAttribArray(0);
    glEnableVertexAttribArray(1);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, reinterpret_cast<const void*>(bytes));
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, names[2]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                 static_cast<GLsizeiptr>(g.triangles.size() * sizeof(GLuint)), g.triangles.data(),
                 GL_STATIC_DRAW);
    glBindVertexArray(0);
    return names[0];
}

PlainLoop::PlainLoop(const SoSceneView& view, bool solid)
    : m_viewing(view.cameras.back().view.viewing),
      m_projection(view.cameras.back().view.projection),
      m_program(compilePlain()),
      m_solid(solid)
{
    const SbMatrix toWorld = m_viewing.inverse();
    for (const SoSceneView::Item& item : view.items) {
        m_objects.push_back({uploadPlain(*item.geometry),
                             static_cast<GLsizei>(item.geometry->triangles.size()),
                             item.toEye * toWorld, SbVec4f(item.appearance->diffuse, 1.0f)});
    }
}

void PlainLoop::draw() const
{
    glViewport(0, 0, kWidth, kHeight);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    if (m_solid) {
        glEnable(GL_CULL_FACE);
    }
    glUseProgram(m_program);
    const GLint modelView = glGetUniformLocation(m_program, "modelView");
    const GLint normalMatrix = glGetUniformLocation(m_program, "normalMatrix");
    const GLint color = glGetUniformLocation(m_program, "color");
    glUniformMatrix4fv(glGetUniformLocation(m_program, "projection"), 1, GL_FALSE, m_projection[0]);
    glUniform3f(glGetUniformLocation(m_program, "toLight"), 0, 0, 1);
    glUniform1f(glGetUniformLocation(m_program, "ambient"), 0.04f);
    glUniform1i(glGetUniformLocation(m_program, "twoSided"), m_solid ? 0 : 1);
    for (const Object& object : m_objects) {
        float mv[16];
        for (int r = 0; r < 4; ++r) {
            for (int c = 0; c < 4; ++c) {
                mv[4 * r + c] =
                    object.matrix[r][0] * m_viewing[0][c] + object.matrix[r][1] * m_viewing[1][c]
                    + object.matrix[r][2] * m_viewing[2][c] + object.matrix[r][3] * m_viewing[3][c];
            }
        }
        // Rotations and even scales only, as in these scenes.
        const float n[9] = {mv[0], mv[1], mv[2], mv[4], mv[5], mv[6], mv[8], mv[9], mv[10]};
        glUniformMatrix4fv(modelView, 1, GL_FALSE, mv);
        glUniformMatrix3fv(normalMatrix, 1, GL_FALSE, n);
        glUniform4fv(color, 1, object.color.getValue());
        glBindVertexArray(object.vertexArray);
        glDrawElements(GL_TRIANGLES, object.count, GL_UNSIGNED_INT, nullptr);
    }
    glBindVertexArray(0);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
}

void bindTarget()
{
    GLuint names[2];
    GLuint framebuffer = 0;
    glGenRenderbuffers(2, names);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, names[0]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, kWidth, kHeight);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, names[0]);
    glBindRenderbuffer(GL_RENDERBUFFER, names[1]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, kWidth, kHeight);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, names[1]);
}

SoSeparator* withCamera(SoNode* content, float distance)
{
    auto* root = new SoSeparator;
    auto* camera = new SoPerspectiveCamera;
    camera->position.setValue(SbVec3f(0, 0, distance));
    camera->nearDistance.setValue(distance / 10);
    camera->farDistance.setValue(distance * 2);
    root->addChild(camera);
    root->addChild(new SoDirectionalLight);
    root->addChild(content);
    return root;
}

/// Separator, transform, material, cube, 10,000 times; each cube of a size of its own on request.
SoSeparator* makeCubes(bool ownSizes, std::vector<SoTransform*>& transforms)
{
    auto* all = new SoSeparator;
    for (int i = 0; i < kSide * kSide; ++i) {
        auto* one = new SoSeparator;
        auto* transform = new SoTransform;
        transform->translation.setValue(
            SbVec3f(float(i % kSide) - kSide / 2.0f, float(i / kSide) - kSide / 2.0f, 0));
        transform->rotation.setValue(SbRotation(SbVec3f(1, 1, 0), float(i) * 0.01f));
        auto* material = new SoMaterial;
        material->diffuseColor.setValue(SbColor(float(i % 7) / 7, float(i % 11) / 11, 0.8f));
        auto* cube = new SoCube;
        const float size = ownSizes ? 0.4f + float(i) * 2e-5f : 0.5f;
        cube->width.setValue(size);
        cube->height.setValue(size);
        cube->depth.setValue(size);
        for (SoNode* node : {static_cast<SoNode*>(transform), static_cast<SoNode*>(material),
                             static_cast<SoNode*>(cube)}) {
            one->addChild(node);
        }
        all->addChild(one);
        transforms.push_back(transform);
    }
    return all;
}

SoSeparator* makeMesh(bool withNormals)
{
    auto* all = new SoSeparator;
    auto* hints = new SoShapeHints;
    hints->vertexOrdering.setValue(SoShapeHints::COUNTERCLOCKWISE);
    auto* coordinates = new SoCoordinate3;
    auto* normals = new SoNormal;
    auto* faces = new SoIndexedFaceSet;
    const int side = kMeshSide + 1;
    std::vector<SbVec3f> points;
    std::vector<SbVec3f> directions;
    for (int i = 0; i < side * side; ++i) {
        const float x = float(i % side) / kMeshSide * 2 - 1;
        const float y = float(i / side) / kMeshSide * 2 - 1;
        points.emplace_back(x, y, 0.1f * std::sin(9 * x) * std::cos(9 * y));
        SbVec3f n(-0.9f * std::cos(9 * x) * std::cos(9 * y),
                  0.9f * std::sin(9 * x) * std::sin(9 * y), 1.0f);
        n.normalize();
        directions.push_back(n);
    }
    std::vector<std::int32_t> indices;
    for (int y = 0; y < kMeshSide; ++y) {
        for (int x = 0; x < kMeshSide; ++x) {
            const int a = y * side + x;
            for (const int i : {a, a + 1, a + side + 1, -1, a, a + side + 1, a + side, -1}) {
                indices.push_back(i);
            }
        }
    }
    coordinates->point.setValues(0, static_cast<int>(points.size()), points.data());
    normals->vector.setValues(0, static_cast<int>(directions.size()), directions.data());
    faces->coordIndex.setValues(0, static_cast<int>(indices.size()), indices.data());
    hints->creaseAngle.setValue(1);
    all->addChild(hints);
    all->addChild(coordinates);
    const SoRef<SoNode> kept(normals); // goes where it is not wanted
    if (withNormals) {
        all->addChild(normals);
    }
    all->addChild(faces);
    return all;
}

double timeFrame(const std::function<void()>& frame)
{
    const double start = now();
    frame();
    glFinish();
    return now() - start;
}

struct Case {
    SoRef<SoSeparator> root;
    SoGLRenderAction action{SbViewportRegion(kWidth, kHeight)};
    std::unique_ptr<PlainLoop> plain;
};

void prepare(Case& c, SoNode* content, float distance, bool solid)
{
    c.root = withCamera(content, distance);
    c.action.setClearing(true, true);
    const SoSceneView view = kalmyr::viewScene(c.action, c.root.get());
    c.plain = std::make_unique<PlainLoop>(view, solid);
}

std::vector<unsigned char> pixels()
{
    std::vector<unsigned char> out(std::size_t(kWidth) * kHeight * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, kWidth, kHeight, GL_RGB, GL_UNSIGNED_BYTE, out.data());
    return out;
}

/// Share of the bytes that differ visibly: both sides have to draw the same picture.
double difference(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        count += std::abs(int(a[i]) - int(b[i])) > 8;
    }
    return double(count) / double(a.size());
}

void compare(const std::string& name, Case& c, int frames,
             const std::function<void(int)>& edit = {})
{
    const auto ours = [&c] { c.action.apply(c.root.get()); };
    const auto plain = [&c] { c.plain->draw(); };
    for (int i = 0; i < 3; ++i) {
        timeFrame(ours);
    }
    const auto picture = pixels();
    timeFrame(plain);
    print((name + ".different").c_str(), difference(picture, pixels()), "share");
    std::vector<double> oursTimes;
    std::vector<double> plainTimes;
    std::vector<double> traverse;
    std::vector<double> flatten;
    std::vector<double> cpuRatios;
    for (int i = 0; i < frames; ++i) {
        const double start = cpuNow();
        plainTimes.push_back(timeFrame(plain));
        const double between = cpuNow();
        if (edit) {
            edit(i);
        }
        oursTimes.push_back(timeFrame(ours));
        cpuRatios.push_back((cpuNow() - between) / (between - start));
        traverse.push_back(c.action.getStatistics().traverseSeconds * 1000);
        flatten.push_back(c.action.getStatistics().flattenSeconds * 1000);
    }
    print((name + ".plain").c_str(), median(plainTimes), "ms");
    print((name + ".ours").c_str(), median(oursTimes), "ms");
    print((name + ".ours_traverse").c_str(), median(traverse), "ms");
    print((name + ".ours_flatten").c_str(), median(flatten), "ms");
    print((name + ".cpu_ratio").c_str(), median(cpuRatios), "times");
    print((name + ".ratio").c_str(), median(oursTimes) / median(plainTimes), "times");
}

/// A mesh that was never seen: normals are made, everything is brought to the context, drawn.
void firstFrame()
{
    Case mesh;
    mesh.root = withCamera(makeMesh(false), 2.6f);
    mesh.action.setClearing(true, true);
    const auto draw = [&mesh] { mesh.action.apply(mesh.root.get()); };
    print("mesh_first.frame", timeFrame(draw), "ms");
    print("mesh_first.next_frame", timeFrame(draw), "ms");
}

} // namespace

int main(int argc, char** argv)
{
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : 25;
    SoDB::init();
    SoOffscreenContext context;
    if (!context.makeCurrent()) {
        std::printf("skipped: %s\n", context.getError());
        return 0;
    }
    bindTarget();
    std::vector<SoTransform*> transforms;
    {
        Case own;
        prepare(own, makeCubes(true, transforms), 140, true);
        compare("cubes_own", own, frames);
        // One leaf moves before every frame: all else must come from the kept list.
        compare("cubes_own_one_moving", own, frames, [&transforms](int i) {
            transforms[5000]->translation.setValue(SbVec3f(float(i) * 0.01f, 0, 1));
        });
        // Or has another colour.
        auto* all = static_cast<SoSeparator*>(own.root->getChild(own.root->getNumChildren() - 1));
        auto* look =
            static_cast<SoMaterial*>(static_cast<SoSeparator*>(all->getChild(4000))->getChild(1));
        compare("cubes_own_one_coloured", own, frames, [look](int i) {
            look->diffuseColor.setValue(SbColor(1, 0, float(i % 100) / 100));
        });
    }
    {
        Case shared;
        transforms.clear();
        prepare(shared, makeCubes(false, transforms), 140, true);
        compare("cubes_shared", shared, frames);
    }
    {
        Case mesh;
        prepare(mesh, makeMesh(true), 2.6f, false);
        compare("mesh", mesh, frames);
    }
    firstFrame();
    SoGLRenderAction::releaseContext();
    context.doneCurrent();
    return 0;
}
