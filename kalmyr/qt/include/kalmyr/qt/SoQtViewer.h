#pragma once

#include <kalmyr/qt/SoQtRenderArea.h>

class SoCamera;
class SoGuiViewer;

/// A render area with a camera to move, and a column of buttons at its right edge: pick and view
/// mode, home and set home, view all, view what is chosen, seek, kind of camera, headlight, sides
/// and draw styles. The right mouse button opens the same as a menu in viewing mode, with the
/// viewer's settings.
///
/// Keys while the scene has the focus: Esc view or pick, S seek, H or Home home, V view all, F view
/// what is chosen, 1 to 6 the sides, P perspective or parallel; others in another scheme.
class KALMYRQT_API SoQtViewer : public SoQtRenderArea {
public:
    /// Which parts of the decoration are built.
    enum BuildFlag {
        BUILD_NONE = 0,
        BUILD_DECORATION = 1, ///< the button column
        BUILD_POPUP = 2,      ///< the menu on the right mouse button
        BUILD_ALL = 3
    };
    /// The purpose of the viewer.
    enum Type {
        BROWSER ///< looking at a scene: a camera of the viewer's own stands outside the given scene
    };

    ~SoQtViewer() override;

    SoGuiViewer* getGuiViewer() const;
    SoCamera* getCamera() const;

    void setViewing(bool on);
    bool isViewing() const;
    void viewAll();
    void saveHomePosition();
    void resetToHomePosition();
    void setHeadlight(bool on);
    bool isHeadlight() const;

    /// Shows or hides the button column; it is shown at first when it was built.
    void setDecoration(bool on);
    bool isDecoration() const;

protected:
    SoQtViewer(SoGuiViewer* viewer, QWidget* parent, const char* name, bool embed, BuildFlag flag,
               Type type);

private:
    class Decoration;
    std::unique_ptr<Decoration> m_decoration;
};
