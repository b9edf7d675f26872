#include <kalmyr/base/SbImage.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/shapes/SoSphere.h>

#include "support/ErrorGuard.h"
#include "support/Program.h"

#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

namespace {

/// A transparent ball of one color, with smooth edges, over a background that must not show.
TEST(Pictures, HoldTheColorsOfTheThingsAlone)
{
    SoDB::init();
    if (!SoOffscreenContext::shared().isValid())
        GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoOrthographicCamera;
    camera->position.setValue(SbVec3f(0, 0, 10));
    camera->nearDistance.setValue(1);
    camera->farDistance.setValue(20);
    camera->height.setValue(3);
    auto* model = new SoLightModel;
    model->model.setValue(SoLightModel::BASE_COLOR);
    auto* material = new SoMaterial;
    material->diffuseColor.setValue(SbColor(0.8f, 0.4f, 0.2f));
    material->transparency.setValue(0.4f);
    for (SoNode* node : std::initializer_list<SoNode*>{camera, model, material, new SoSphere})
        root->addChild(node);
    const support::TempFolder folder;
    for (const SbColor& background : {SbColor(0, 0, 0), SbColor(1, 1, 1), SbColor(0, 0.5f, 1)}) {
        SoOffscreenRenderer renderer(SbViewportRegion(64, 64));
        renderer.setComponents(SoOffscreenRenderer::RGB_TRANSPARENCY);
        renderer.setBackgroundColor(background);
        renderer.setNumSamples(4);
        ASSERT_TRUE(renderer.render(root.get()));
        for (const char* name : {"picture.png", "picture.tif"}) {
            std::FILE* file = std::fopen(folder.path(name).c_str(), "wb");
            ASSERT_TRUE(file);
            EXPECT_TRUE(name[8] == 'p' ? renderer.writeToPNG(file) : renderer.writeToTIFF(file));
            std::fclose(file);
            SbImage image;
            ASSERT_TRUE(SoImageFile::read(SbString(folder.path(name)), image));
            ASSERT_EQ(image.getComponents(), 4);
            std::set<int> opacities;
            for (int y = 0; y < 64; ++y) {
                for (int x = 0; x < 64; ++x) {
                    const unsigned char* pixel = image.getPixel(x, y);
                    opacities.insert(pixel[3]);
                    // Colors of low opacity are not exact.
                    for (int c = 0; c < 3 && pixel[3] > 60; ++c)
                        ASSERT_NEAR(pixel[c], (c == 0 ? 204 : c == 1 ? 102 : 51), 8) << name;
                }
            }
            EXPECT_GT(opacities.size(), 2u) << "smooth edges";
            EXPECT_TRUE(opacities.count(0) && opacities.count(153)) << *opacities.rbegin();
        }
    }
}

} // namespace
