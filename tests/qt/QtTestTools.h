#pragma once

#include "support/Passes.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/shapes/SoCube.h>

#include <QImage>
#include <QTest>
#include <QWheelEvent>
#include <QWidget>

#include <gtest/gtest.h>

/// Separator { LightModel, Material, Cube } in one flat colour.
struct FlatCube {
    explicit FlatCube(const SbColor& color = SbColor(0, 1, 0)) : root(new SoSeparator)
    {
        auto* model = new SoLightModel;
        model->model.setValue(SoLightModel::BASE_COLOR);
        material = new SoMaterial;
        material->diffuseColor.setValue(color);
        cube = new SoCube;
        root->addChild(model);
        root->addChild(material);
        root->addChild(cube);
    }

    SoRef<SoSeparator> root;
    SoMaterial* material; // Owned by the root, as the cube.
    SoCube* cube;
};

/// Share of the pixels that have that colour, within a small tolerance.
inline double shareOf(const QImage& image, const QColor& color)
{
    if (image.isNull())
        return -1;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor p = image.pixelColor(x, y);
            count += std::abs(p.red() - color.red()) < 6 && std::abs(p.green() - color.green()) < 6
                     && std::abs(p.blue() - color.blue()) < 6;
        }
    }
    return static_cast<double>(count) / (image.width() * image.height());
}

/// A viewer in a window of its own, on a cube.
class QtViewerTest : public testing::Test {
protected:
    static constexpr int kWidth = 200;
    static constexpr int kHeight = 160;

    void SetUp() override
    {
        SoQt::init(nullptr);
        viewer = std::make_unique<SoQtExaminerViewer>(nullptr, "viewer", true);
        viewer->setSceneGraph(scene.root.get());
        viewer->getWidget()->resize(kWidth, kHeight);
        viewer->show();
        ASSERT_TRUE(support::passUntilExposed(viewer->getWidget()));
        if (viewer->getDrawing() == SoQtRenderArea::NONE)
            GTEST_SKIP() << viewer->getFailure().toStdString();
        ASSERT_TRUE(viewer->redraw());
    }
    void TearDown() override
    {
        viewer.reset();
        SoQt::finish();
    }

    QWidget* surface() const { return viewer->getRenderWidget(); }
    SoCamera& camera() const { return *viewer->getCamera(); }
    QPoint middle() const { return surface()->rect().center(); }

    void drag(Qt::MouseButton button, const QPoint& way,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mousePress(surface(), button, modifiers, middle());
        for (int step = 1; step <= 4; ++step) {
            // QTest::mouseMove holds no button.
            const QPoint at = middle() + way * step / 4;
            QMouseEvent move(QEvent::MouseMove, at, surface()->mapToGlobal(at), Qt::NoButton,
                             button, modifiers);
            QCoreApplication::sendEvent(surface(), &move);
        }
        QTest::mouseRelease(surface(), button, modifiers, middle() + way);
    }

    void wheel(const QPoint& at, int delta)
    {
        QWheelEvent event(at, surface()->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(surface(), &event);
    }

    /// The point that the camera looks at.
    SbVec3f interest() const
    {
        return camera().position.getValue()
               + camera().orientation.getValue().rotated(
                   SbVec3f(0, 0, -camera().focalDistance.getValue()));
    }

    FlatCube scene;
    std::unique_ptr<SoQtExaminerViewer> viewer;
};
