#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoAnnotation.h>
#include <kalmyr/nodes/SoClipPlane.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/rendering/SoLineHighlightRenderAction.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/RenderStatistics.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoLineSet.h>
#include <kalmyr/shapes/SoPointSet.h>
#include <kalmyr/shapes/SoSphere.h>

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/core/SoPath.h>

#include <epoxy/gl.h>

#include <array>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr int kSize = 64;
const SbColor kLine(1, 0, 1);
const SbColor kGround(0.5f, 0.5f, 0.5f);

/// Green things before a grey ground, seen from z: x and y from -2 to 2, 16 pixels a unit. What is
/// selected has a magenta outline with a white rim.
class Outlines : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        m_scene = new SoSelection;
        m_camera = new SoOrthographicCamera;
        m_camera->position.setValue(SbVec3f(0, 0, 10));
        m_camera->nearDistance.setValue(1);
        m_camera->farDistance.setValue(20);
        m_camera->height.setValue(4);
        m_scene->addChild(m_camera);
        auto* model = new SoLightModel;
        model->model.setValue(SoLightModel::BASE_COLOR);
        m_scene->addChild(model);
        m_material = new SoMaterial;
        m_material->diffuseColor.setValue(SbColor(0, 1, 0));
        m_scene->addChild(m_material);
        m_action.setColor(kLine);
        m_renderer.setGLRenderAction(&m_action);
        m_renderer.setBackgroundColor(kGround);
    }
    void TearDown() override
    {
        m_renderer.setGLRenderAction(nullptr);
        if (m_scene)
            m_scene->deselectAll(); // its paths hold the node itself
    }

    /// A separator with a translation and something; from -1 to 1 in each direction for a cube.
    SoSeparator* add(SoNode* shape, const SbVec3f& place = SbVec3f(0, 0, 0))
    {
        auto* one = new SoSeparator;
        auto* translation = new SoTranslation;
        translation->translation.setValue(place);
        one->addChild(translation);
        one->addChild(shape);
        m_scene->addChild(one);
        return one;
    }
    static SoCube* cube(float size)
    {
        auto* shape = new SoCube;
        shape->width.setValue(size);
        shape->height.setValue(size);
        shape->depth.setValue(size);
        return shape;
    }

    bool draw() { return m_renderer.render(m_scene.get()); }
    std::size_t drawsOfObject() const { return m_action.getStatistics().outlineDrawCalls; }

    std::array<int, 3> pixel(int x, int y) const
    {
        const int width = m_renderer.getViewportRegion().getWindowSize()[0];
        const unsigned char* p = m_renderer.getBuffer() + 3 * (y * width + x);
        return {p[0], p[1], p[2]};
    }
    /// G: green, B: blue, L: line, R: rim, dot: ground, anything else: '?'.
    char kindOf(int x, int y) const
    {
        const auto p = pixel(x, y);
        const auto is = [&p](int r, int g, int b) {
            return std::abs(p[0] - r) < 10 && std::abs(p[1] - g) < 10 && std::abs(p[2] - b) < 10;
        };
        if (is(0, 255, 0))
            return 'G';
        if (is(255, 0, 255))
            return 'L';
        if (is(230, 230, 230))
            return 'R';
        return is(128, 128, 128) ? '.' : is(0, 0, 255) ? 'B' : '?';
    }
    std::string row(int y, int from, int to) const
    {
        std::string kinds;
        for (int x = from; x < to; ++x)
            kinds += kindOf(x, y);
        return kinds;
    }
    std::string column(int x, int from, int to) const
    {
        std::string kinds;
        for (int y = from; y < to; ++y)
            kinds += kindOf(x, y);
        return kinds;
    }
    int count(char kind) const
    {
        int sum = 0;
        for (int i = 0; i < kSize * kSize; ++i)
            sum += kindOf(i % kSize, i / kSize) == kind ? 1 : 0;
        return sum;
    }

    SoRef<SoSelection> m_scene;
    SoOrthographicCamera* m_camera = nullptr; // Not owned; the scene's.
    SoMaterial* m_material = nullptr;         // Not owned; the scene's.
    SoLineHighlightRenderAction m_action;
    SoOffscreenRenderer m_renderer{SbViewportRegion(kSize, kSize)};
};

} // namespace

TEST_F(Outlines, AreLinesOfTwoPixelsWithARim)
{
    add(cube(2));
    for (const int samples : {1, 4}) {
        m_renderer.setNumSamples(samples);
        m_scene->deselectAll();
        ASSERT_TRUE(draw());
        EXPECT_EQ(row(32, 10, 18), "......GG");
        EXPECT_EQ(drawsOfObject(), 0u);
        m_scene->select(m_scene->getChild(3));
        ASSERT_TRUE(draw());
        EXPECT_EQ(row(32, 10, 18), "...RLLGG") << samples;
        EXPECT_EQ(row(32, 46, 54), "GGLLR...") << samples;
        EXPECT_EQ(column(32, 10, 18), "...RLLGG") << samples;
        EXPECT_EQ(count('G'), 32 * 32) << "the object itself is not drawn over";
    }
    m_action.setVisible(false);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 10, 18), "......GG");
}

TEST_F(Outlines, GrowWithTheDensityOfTheScreen)
{
    m_scene->select(add(cube(2)));
    SbViewportRegion region(kSize, kSize);
    region.setPixelsPerInch(144);
    m_renderer.setViewportRegion(region);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 8, 18), "..RRLLLLGG");
}

TEST_F(Outlines, AreSeenOnAnyGround)
{
    m_scene->select(add(cube(2)));
    for (const SbColor& line : {SoOutline().getColor(), SbColor(0.1f, 0.1f, 0.4f)}) {
        m_action.setColor(line);
        for (const SbColor& ground : {SbColor(1, 1, 1), SbColor(0, 0, 0), SbColor(1, 0, 0), line}) {
            m_renderer.setBackgroundColor(ground);
            ASSERT_TRUE(draw());
            const auto distance = [&](int x) {
                int most = 0;
                for (std::size_t c = 0; c < 3; ++c)
                    most = std::max(most, std::abs(pixel(x, 32)[c] - pixel(10, 32)[c]));
                return most;
            };
            EXPECT_GT(std::max(distance(14), distance(13)), 100);
        }
    }
}

TEST_F(Outlines, AreThinWhereSomethingHidesTheObject)
{
    m_scene->select(add(cube(2)));
    auto* blue = new SoMaterial;
    blue->diffuseColor.setValue(SbColor(0, 0, 1));
    m_scene->addChild(blue);
    SoSeparator* front = add(cube(4), SbVec3f(-2, 0, 4)); // all of the left half
    for (const int samples : {1, 4}) {
        m_renderer.setNumSamples(samples);
        ASSERT_TRUE(draw());
        EXPECT_EQ(row(32, 12, 18), "BB?LBB") << samples;
        EXPECT_EQ(row(32, 46, 54), "GGLLR...") << samples;
        EXPECT_EQ(column(20, 12, 18), "BB?LBB") << samples;
        EXPECT_EQ(column(40, 12, 18), ".RLLGG") << samples;
    }
    // Transparent shapes hide nothing; the selected object may be one itself.
    blue->transparency.setValue(0.5f);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 12, 16), "??LL");
    m_scene->deselectAll();
    m_scene->select(front);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(60, 30, 36), "??LLR."); // its right side
}

TEST_F(Outlines, SurroundOneOccurrenceOnly)
{
    auto* shared = new SoSeparator;
    shared->addChild(cube(0.5f)); // 8 pixels
    add(shared, SbVec3f(-1, 0, 0));
    SoSeparator* right = add(shared, SbVec3f(1, 0, 0));
    const SoRef<SoPath> path(new SoPath(m_scene.get()));
    path->append(m_scene->findChild(right));
    path->append(1);
    m_scene->select(path.get());
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 8, 14), "....GG");
    EXPECT_EQ(row(32, 40, 46), ".RLLGG");
}

TEST_F(Outlines, CostOneMoreDrawingWhileSomethingMoves)
{
    SoSeparator* object = add(cube(1));
    SoSeparator* other = add(cube(1), SbVec3f(1, 1, 1));
    const auto settle = [this] {
        ASSERT_TRUE(draw());
        ASSERT_TRUE(draw());
        EXPECT_EQ(drawsOfObject(), 0u);
    };
    const auto expectOne = [&](const char* why) {
        ASSERT_TRUE(draw());
        EXPECT_EQ(drawsOfObject(), 1u) << why;
        settle();
    };
    m_scene->select(object);
    expectOne("selected");
    const std::string before = row(32, 0, kSize);
    settle();
    EXPECT_EQ(row(32, 0, kSize), before) << "the outline stays";

    static_cast<SoTranslation*>(object->getChild(0))->translation.setValue(0.1f, 0, 0);
    expectOne("moved");
    static_cast<SoTranslation*>(other->getChild(0))->translation.setValue(0.5f, 0.5f, 2);
    expectOne("something else moved, which may hide it");
    m_camera->height.setValue(5);
    expectOne("seen by another camera");
    m_renderer.setViewportRegion(SbViewportRegion(kSize, kSize / 2));
    expectOne("another viewport");
    m_action.setLineWidth(3);
    expectOne("another style");
    m_scene->deselectAll();
    m_scene->select(other);
    expectOne("another selected");

    m_material->diffuseColor.setValue(SbColor(0, 0, 1));
    ASSERT_TRUE(draw());
    EXPECT_EQ(drawsOfObject(), 0u) << "colours have no part in it";
    m_scene->deselectAll();
    const std::size_t calls = m_action.getStatistics().drawCalls;
    ASSERT_TRUE(draw());
    EXPECT_EQ(drawsOfObject(), 0u);
    EXPECT_EQ(m_action.getStatistics().drawCalls, calls);
}

TEST_F(Outlines, SurroundLinesAndPoints)
{
    auto* figure = new SoSeparator;
    auto* style = new SoDrawStyle;
    style->pointSize.setValue(4);
    auto* points = new SoCoordinate3;
    const SbVec3f places[] = {SbVec3f(-1, 0.03f, 0), SbVec3f(1, 0.03f, 0), SbVec3f(0, 1, 0)};
    points->point.setValues(0, 3, places);
    auto* line = new SoLineSet;
    line->numVertices.setValue(2);
    auto* dot = new SoPointSet;
    dot->startIndex.setValue(2);
    figure->addChild(style);
    figure->addChild(points);
    figure->addChild(line);
    figure->addChild(dot);
    m_scene->addChild(figure);
    m_scene->select(figure);
    ASSERT_TRUE(draw());
    EXPECT_EQ(column(32, 28, 37), ".RLLGLLR.");
    EXPECT_EQ(row(48, 24, 40), "...RLLGGGGLLR...");
}

TEST_F(Outlines, AreThoseOfTheWholeObject)
{
    auto* group = new SoSeparator;
    group->addChild(new SoSphere);
    group->addChild(cube(1));
    m_scene->select(add(group));
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 10, 32), "...RLLGGGGGGGGGGGGGGGG") << "no edge within";
    EXPECT_EQ(row(32, 32, 54), "GGGGGGGGGGGGGGGGLLR...");

    auto* wire = new SoDrawStyle;
    wire->style.setValue(SoDrawStyle::LINES);
    m_scene->insertChild(wire, 0);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 10, 16), "...RLL");
    EXPECT_EQ(row(26, 26, 28).find('L'), std::string::npos) << "its wires have no outline";
}

TEST_F(Outlines, FollowClipPlanes)
{
    auto* plane = new SoClipPlane;
    plane->plane.setValue(SbPlane(SbVec3f(1, 0, 0), 0)); // keeps x > 0
    auto* clipped = new SoSeparator;
    clipped->addChild(plane);
    clipped->addChild(cube(2));
    m_scene->addChild(clipped);
    m_scene->select(clipped);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 28, 34), ".RLLGG");
}

TEST_F(Outlines, StayWithinTheViewport)
{
    SbViewportRegion region(kSize, kSize);
    region.setViewportPixels(32, 32, 32, 32);
    m_renderer.setViewportRegion(region);
    m_scene->select(add(cube(2))); // 40 to 56
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(48, 34, 42), "...RLLGG");
    m_camera->height.setValue(1.9f); // fills it
    ASSERT_TRUE(draw());
    EXPECT_EQ(count('L'), 0);
    EXPECT_EQ(count('R'), 0);
}

TEST_F(Outlines, AreThinBelowAnnotations)
{
    SoSeparator* back = add(cube(2));
    auto* label = new SoAnnotation;
    auto* blue = new SoMaterial;
    blue->diffuseColor.setValue(SbColor(0, 0, 1));
    auto* place = new SoTranslation;
    place->translation.setValue(-2, 0, -3); // behind, and drawn over it all the same
    label->addChild(blue);
    label->addChild(place);
    label->addChild(cube(4));
    m_scene->addChild(label);
    m_scene->select(back);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 12, 18), "BB?LBB");
    EXPECT_EQ(row(32, 46, 54), "GGLLR...");
    m_scene->deselectAll();
    m_scene->select(label);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(60, 30, 36), "BBLLR.");
}

TEST_F(Outlines, ShowAPatternWhenAskedTo)
{
    m_scene->select(add(cube(2)));
    ASSERT_TRUE(draw());
    const int solid = count('L');
    m_action.setLinePattern(0x00ff);
    ASSERT_TRUE(draw());
    EXPECT_NEAR(count('L'), solid / 2, solid / 10);
    m_action.setLinePattern(0xffff);
    ASSERT_TRUE(draw());
    EXPECT_EQ(count('L'), solid);
}

/// For contexts that refuse the textures, and by a preference for others.
TEST_F(Outlines, MayBeDrawnAsEdges)
{
    m_scene->select(add(new SoSphere));
    SoPreferences::setValue("KMR_OUTLINE_EDGES", "1");
    ASSERT_TRUE(draw());
    SoPreferences::removeValue("KMR_OUTLINE_EDGES");
    EXPECT_GT(count('L'), 100); // a circle of 32 pixels, 2 wide
    EXPECT_LT(count('L'), 400);
    EXPECT_EQ(kindOf(32, 32), 'G');
    EXPECT_EQ(count('R'), 0);
}

/// An outline of its own for any action: the path's head stands anywhere in the scene.
TEST_F(Outlines, FindTheirPlacesInTheScene)
{
    auto* object = new SoSeparator;
    auto* choice = new SoSwitch;
    SoSeparator* part = new SoSeparator;
    part->addChild(cube(0.5f));
    choice->addChild(part);
    choice->whichChild.setValue(0);
    object->addChild(choice);
    add(object, SbVec3f(-1, 0, 0));
    add(object, SbVec3f(1, 0, 0));
    const SoRef<SoPath> path(new SoPath(object));
    path->append(0);
    path->append(0);

    SoOutline outline;
    outline.setColor(kLine);
    outline.setPath(path.get());
    SoGLRenderAction plain;
    EXPECT_TRUE(plain.addOutline(outline));
    EXPECT_FALSE(plain.addOutline(outline));
    m_renderer.setGLRenderAction(&plain);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 8, 14), ".RLLGG");
    EXPECT_EQ(row(32, 40, 46), ".RLLGG");

    choice->whichChild.setValue(SO_SWITCH_NONE);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 40, 46), ".RLL..") << "what is switched off is found by its outline";
    static_cast<SoCube*>(part->getChild(0))->width.setValue(0.25f);
    ASSERT_TRUE(draw());
    EXPECT_EQ(row(32, 40, 48), "...RLL..") << "and followed";

    choice->removeChild(0);
    ASSERT_TRUE(draw());
    EXPECT_EQ(count('L'), 0) << "a path that was cut off names nothing";
    outline.setPath(nullptr);
    const SoRef<SoSeparator> elsewhere(new SoSeparator);
    elsewhere->addChild(cube(1));
    const SoRef<SoPath> foreign(new SoPath(elsewhere.get()));
    outline.setPath(foreign.get());
    ASSERT_TRUE(draw());
    EXPECT_EQ(count('L'), 0) << "not in this scene";
    EXPECT_EQ(plain.findRootOf(object), m_scene.get());
    EXPECT_EQ(plain.findRootOf(elsewhere.get()), nullptr);
    m_renderer.setGLRenderAction(nullptr);
}

/// Views in one context keep a picture each.
TEST_F(Outlines, AreKeptForEachView)
{
    const SoRef<SoPath> path(new SoPath(add(cube(2))));
    SoOutline outline;
    outline.setPath(path.get());
    SoGLRenderAction first;
    SoGLRenderAction second;
    first.addOutline(outline);
    second.addOutline(outline);
    second.setTransparencyType(SoGLRenderAction::BLEND);
    for (int round = 0; round < 4; ++round) {
        for (SoGLRenderAction* action : {&first, &second}) {
            m_renderer.setGLRenderAction(action);
            ASSERT_TRUE(draw());
            EXPECT_EQ(action->getStatistics().outlineDrawCalls, round == 0 ? 1u : 0u) << round;
        }
    }
    m_renderer.setGLRenderAction(nullptr);
}

TEST_F(Outlines, EndBeforeOrAfterTheirActions)
{
    auto outline = std::make_unique<SoOutline>();
    {
        SoGLRenderAction brief;
        brief.addOutline(*outline);
        EXPECT_EQ(outline->getActions().size(), 1u);
    }
    EXPECT_TRUE(outline->getActions().empty());
    const SoRef<SoPath> path(new SoPath(add(cube(2))));
    outline->setColor(kLine);
    outline->setPath(path.get());
    m_action.addOutline(*outline);
    ASSERT_TRUE(draw());
    EXPECT_GT(count('L'), 0);
    outline.reset();
    ASSERT_TRUE(draw());
    EXPECT_EQ(count('L'), 0);
}

/// The state of the program's own context is as without an outline.
TEST_F(Outlines, LeaveTheContextAsItWas)
{
    constexpr GLenum kNames[] = {GL_DRAW_FRAMEBUFFER_BINDING,
                                 GL_READ_FRAMEBUFFER_BINDING,
                                 GL_VERTEX_ARRAY_BINDING,
                                 GL_CURRENT_PROGRAM,
                                 GL_ACTIVE_TEXTURE,
                                 GL_BLEND,
                                 GL_BLEND_SRC_RGB,
                                 GL_BLEND_DST_RGB,
                                 GL_BLEND_EQUATION_RGB,
                                 GL_DEPTH_TEST,
                                 GL_DEPTH_WRITEMASK,
                                 GL_SCISSOR_TEST,
                                 GL_CULL_FACE,
                                 GL_TEXTURE_BINDING_2D,
                                 GL_RENDERBUFFER_BINDING};
    add(cube(2));
    SoOffscreenContext& context = SoOffscreenContext::shared();
    ASSERT_TRUE(context.makeCurrent());
    GLuint framebuffer = 0;
    GLuint buffers[2] = {};
    glGenFramebuffers(1, &framebuffer);
    glGenRenderbuffers(2, buffers);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, buffers[0]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, kSize, kSize);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, buffers[0]);
    glBindRenderbuffer(GL_RENDERBUFFER, buffers[1]);
    // Depths of a kind that the off-screen renderer does not use.
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH32F_STENCIL8, kSize, kSize);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                              buffers[1]);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 30, kSize);
    m_action.setClearing(true, true);
    m_action.setBackgroundColor(SbColorRGBA(kGround));
    m_action.setViewportRegion(SbViewportRegion(kSize, kSize));

    std::array<std::vector<GLint>, 2> states;
    std::array<std::vector<unsigned char>, 2> pictures;
    for (std::size_t i = 0; i < 2; ++i) {
        if (i == 1)
            m_scene->select(m_scene->getChild(3));
        for (int frame = 0; frame < 2; ++frame)
            m_action.apply(m_scene.get());
        for (const GLenum name : kNames) {
            GLint values[4] = {};
            glGetIntegerv(name, values);
            states[i].push_back(values[0]);
        }
        GLint box[4] = {};
        glGetIntegerv(GL_SCISSOR_BOX, box);
        states[i].insert(states[i].end(), box, box + 4);
        pictures[i].resize(4 * kSize * kSize);
        glReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pictures[i].data());
    }
    EXPECT_EQ(states[0], states[1]);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    const auto red = [&](std::size_t picture, std::size_t x) {
        return pictures[picture][4 * (32 * kSize + x)];
    };
    EXPECT_EQ(red(1, 15), 255) << "the line";
    EXPECT_EQ(red(0, 15), 128);
    EXPECT_EQ(red(1, 48), red(0, 48)) << "outside the program's scissor box";
    glDisable(GL_SCISSOR_TEST);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteRenderbuffers(2, buffers);
    context.doneCurrent();
}
