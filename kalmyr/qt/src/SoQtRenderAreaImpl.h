#pragma once

#include "EventBridge.h"
#include "RenderSurface.h"

#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/qt/SoQtRenderArea.h>

#include <QPointer>
#include <QWidget>

#include <functional>

struct SoQtRenderArea::Impl {
    Impl(SoGuiRenderArea* area, QWidget* parent, const char* name, bool embed);
    ~Impl();

    /// Null once the widget is gone.
    RenderSurface* surface() const { return surfaceWidget ? m_surface : nullptr; }
    /// Gives the surface the size that it will have when it is shown.
    void layOut();
    void setSamples(int number);

    /// Called when there is another surface.
    std::function<void()> onNewSurface;
    int samples = kDefaultSamples;

    SoRef<SoGuiRenderArea> area;
    QPointer<QWidget> whole;         // Owned, unless its parent is faster.
    QPointer<QWidget> surfaceWidget; // Owned by `whole`.
    QPointer<EventBridge> bridge;    // Owned by the surface's widget.

private:
    static constexpr int kDefaultSamples = 4;
    bool isBusy() const;
    void makeSurface();
    void renewSurface();

    RenderSurface* m_surface = nullptr; // Same object as surfaceWidget.
};
