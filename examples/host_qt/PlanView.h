#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <QWidget>

/// A view that the program draws all by itself: the scene from above, as a picture in a widget. The
/// inspector knows it by two lines, one in the constructor and one where the mouse is pressed.
class PlanView final : public QWidget {
public:
    PlanView(SoNode* scene, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    SbViewportRegion region() const;

    SoRef<SoSeparator> m_root{new SoSeparator}; ///< camera, light, scene
    SoGLRenderAction m_action;
    SoOffscreenRenderer m_renderer{&m_action};
};
