#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include "support/ErrorGuard.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

/// Draws texts of scenes below a camera that sees x and y from -2 to 2 in parallel, from z = 10.
class RenderedScene : public ::testing::Test {
protected:
    static constexpr int kSize = 64;

    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        m_renderer.setBackgroundColor(SbColor(0, 0, 0));
        m_renderer.getGLRenderAction()->setTransparencyType(SoGLRenderAction::SORTED_OBJECT_BLEND);
    }

    static SoRef<SoNode> read(const std::string& text)
    {
        SoInput in;
        in.setBuffer(text.data(), text.size());
        return SoRef<SoNode>(SoDB::readAll(&in));
    }

    /// Puts the camera in front of a scene.
    void setUp(SoNode* scene)
    {
        m_root = new SoSeparator;
        auto* camera = new SoOrthographicCamera;
        camera->position.setValue(SbVec3f(0, 0, 10));
        camera->nearDistance = 1;
        camera->farDistance = 20;
        camera->height = 4;
        m_root->addChild(camera);
        m_root->addChild(scene);
    }
    void drawText(const std::string& text)
    {
        const SoRef<SoNode> scene = read(text);
        ASSERT_TRUE(scene) << text;
        setUp(scene.get());
        for (int frame = 0; frame < 3; ++frame) // the later ones from lists that were kept
            redraw();
    }
    void redraw() { ASSERT_TRUE(m_renderer.render(m_root.get())); }

    /// Draws without light.
    void draw(const std::string& content)
    {
        drawText("#Kalmyr V1.0 ascii\nSeparator { LightModel { model BASE_COLOR } " + content
                 + " }");
    }
    void draw97(const std::string& content) { drawText("#VRML V2.0 utf8\n" + content); }

    static int pixelOf(float place) { return static_cast<int>((place + 2) / 4 * kSize); }
    const unsigned char* pixelAt(float x, float y) const
    {
        return m_renderer.getBuffer() + 3 * (pixelOf(y) * kSize + pixelOf(x));
    }
    void expectColor(float x, float y, const SbColor& color, const std::string& what,
                     double tolerance = 2.5) const
    {
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(pixelAt(x, y)[c], std::min(1.0f, std::max(0.0f, color[c])) * 255, tolerance)
                << what << ": component " << c << " at " << x << ' ' << y;
    }

    SoRef<SoSeparator> m_root;
    SoOffscreenRenderer m_renderer{SbViewportRegion(kSize, kSize)};
};
