#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SoRef.h>

#include <cstdint>
#include <memory>

class QImage;
class QString;
class QWidget;
class SoGuiRenderArea;
class SoNode;
class SoSceneManager;

/// A widget that shows a scene and sends it mouse, wheel and keyboard events.
///
/// Draws through Qt's OpenGL where that is to be had; elsewhere (no display) through the toolkit's
/// own context into a picture that is then painted; without any OpenGL it shows a grey text that
/// says why. All three take events, and QWidget::grab() shows the scene.
///
/// Not a widget itself: the widget belongs to its parent as usual in Qt, and this object belongs to
/// whoever made it. Either may be destroyed first; getWidget() is null once the widget is gone.
/// SoQt::init() must have been called.
class KALMYRQT_API SoQtRenderArea {
public:
    /// How the scene gets onto the screen.
    enum Drawing {
        WINDOW_GL, ///< an OpenGL widget
        IMAGE,     ///< the toolkit's own context draws a picture
        NONE       ///< no OpenGL at all
    };

    /// Makes the widget inside `parent`, or, with `embed` off or without a parent, as a window of
    /// its own. `name` becomes the widget's object name and, of a window, its title.
    explicit SoQtRenderArea(QWidget* parent = nullptr, const char* name = nullptr,
                            bool embed = true);
    virtual ~SoQtRenderArea();
    SoQtRenderArea(const SoQtRenderArea&) = delete;
    SoQtRenderArea& operator=(const SoQtRenderArea&) = delete;

    /// The whole widget, with the decoration of a viewer.
    QWidget* getWidget() const;
    /// The same for whichever object of this class draws that render area; null when none does, or
    /// its widget is gone. In the GUI thread.
    static QWidget* getWidgetOf(const SoGuiRenderArea* area);
    /// The part of it that shows the scene and has the keyboard focus.
    QWidget* getRenderWidget() const;

    /// The render area without its window; stays the same for the life of this object, and lives on
    /// while somebody holds a reference.
    SoGuiRenderArea* getGuiRenderArea() const;
    SoSceneManager* getSceneManager() const;

    void setSceneGraph(SoNode* root);
    SoNode* getSceneGraph() const;
    void setBackgroundColor(const SbColor& color);
    SbColor getBackgroundColor() const;

    /// Asks for a redraw with the next pass of the event loop; several are one.
    void scheduleRedraw();
    /// Draws now, whether or not the widget is visible, and returns whether the scene was drawn.
    /// Also serves a redraw that was scheduled. A visible widget shows it with the next repaint.
    bool redraw();
    /// Number of times that the scene was drawn.
    std::uint64_t getFrameCount() const;
    /// True when the scene changed since it was drawn last.
    bool isRedrawPending() const;

    /// The scene as drawn now, in device pixels, whether or not the widget is visible. Null when
    /// nothing can be drawn.
    QImage grabImage();

    /// Samples a pixel for smooth edges, from 1 (none) to 16; 4 at first. OpenGL may have fewer. A
    /// window that is drawn by OpenGL gets another getRenderWidget() for it.
    void setNumSamples(int samples);
    int getNumSamples() const;

    Drawing getDrawing() const;
    /// Why getDrawing() is NONE; otherwise empty.
    QString getFailure() const;

    void show();
    void hide();

protected:
    struct Impl;
    /// For viewers: with a render area of their own kind, and a whole widget that is filled in
    /// later.
    SoQtRenderArea(SoGuiRenderArea* area, QWidget* parent, const char* name, bool embed);
    Impl& impl() const { return *m_impl; }

private:
    std::unique_ptr<Impl> m_impl;
};
