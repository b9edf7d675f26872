#pragma once

#include "EventBridge.h"
#include "RenderSurface.h"

#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/qt/SoQtRenderArea.h>

#include <QPointer>
#include <QWidget>

struct SoQtRenderArea::Impl {
    Impl(SoGuiRenderArea* area, QWidget* parent, const char* name, bool embed);
    ~Impl();

    /// Null once the widget is gone.
    RenderSurface* surface() const { return surfaceWidget ? m_surface : nullptr; }
    /// Gives the surface the size that it will have when it is shown.
    void layOut();

    SoRef<SoGuiRenderArea> area;
    QPointer<QWidget> whole;         // Owned, unless its parent is faster.
    QPointer<QWidget> surfaceWidget; // Owned by `whole`.
    QPointer<EventBridge> bridge;    // Owned by the surface's widget.

private:
    RenderSurface* m_surface; // Same object as surfaceWidget.
};
