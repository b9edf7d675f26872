#pragma once

#include <kalmyr/qt/SoQtRenderArea.h>

class SoCamera;
class SoGuiViewer;

/// A render area with a camera to move, and a column of buttons at its right edge: pick and view
/// mode, home and set home, view all, seek, kind of camera, headlight.
///
/// Keys while the scene has the focus: Esc view or pick, S seek, H or Home home, V view all.
class KALMYRQT_API SoQtViewer : public SoQtRenderArea {
public:
    /// Which parts of the decoration are built.
    enum BuildFlag {
        BUILD_NONE = 0,
        BUILD_DECORATION = 1, ///< the button column
        BUILD_POPUP = 2,      ///< the same as a menu on the right mouse button in viewing mode
        BUILD_ALL = 3
    };
    enum Type {
        BROWSER, ///< the viewer's own camera, beside the scene
        EDITOR   ///< the same for now: a scene's own camera is moved where it has one
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

    /// Shows or hides the button column.
    void setDecoration(bool on);
    bool isDecoration() const;

protected:
    SoQtViewer(SoGuiViewer* viewer, QWidget* parent, const char* name, bool embed, BuildFlag flag,
               Type type);

private:
    class Decoration;
    std::unique_ptr<Decoration> m_decoration;
};
