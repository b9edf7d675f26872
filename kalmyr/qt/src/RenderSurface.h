#pragma once

#include <QImage>
#include <QString>

#include <cstdint>
#include <functional>

class QWidget;
class SoGuiRenderArea;

/// The part of a render area's widget that shows the scene: one class for each way of drawing.
/// Deleted together with its widget, by either side.
class RenderSurface {
public:
    virtual ~RenderSurface() = default;

    virtual QWidget* widget() = 0;
    /// Draws now, shown or not.
    virtual bool redraw() = 0;
    /// As drawn now, in device pixels; null when it cannot be drawn.
    virtual QImage grab() = 0;
    /// Asks for a redraw with the next repaint.
    void schedule();
    virtual QString failure() const { return QString(); }
    /// False when it takes a new surface to have another number of samples.
    virtual bool setSamples(int samples) = 0;
    /// Whether the scene is being drawn: the widget must not be deleted.
    bool isDrawing() const { return m_drawing; }

    bool isStale() const { return m_stale; }
    std::uint64_t frames() const { return m_frames; }

    /// Whether Qt can show OpenGL of the needed version in widgets here. Asked once a process.
    static bool hasWindowGL();
    /// With a parent widget, which owns it. `area` must outlive the surface or detach() be called.
    static RenderSurface* create(SoGuiRenderArea* area, QWidget* parent, int samples);
    /// Goes on counting where another one stood.
    void takeCount(const RenderSurface& other) { m_frames = other.m_frames; }

    /// The area goes: nothing is drawn any more.
    void detach() { m_area = nullptr; }

protected:
    explicit RenderSurface(SoGuiRenderArea* area) : m_area(area) {}
    void drawn()
    {
        m_stale = false;
        ++m_frames;
    }

    /// Calls `draw` with the area, while no other thread edits the scene; false, with another
    /// repaint arranged for, when one does. The area outlives the call; the surface may be gone
    /// when it is false.
    bool drawWith(const std::function<bool(SoGuiRenderArea&)>& draw);

    SoGuiRenderArea* m_area; // Not owned.

private:
    bool m_drawing = false;
    bool m_stale = true;
    std::uint64_t m_frames = 0;
};
