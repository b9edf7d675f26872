#pragma once

#include <QColor>

namespace mirabo {

/// How the inspected scene is drawn, for who edits it: the values live where the scene is drawn,
/// not in the settings.
class ViewerLook {
public:
    static constexpr int kNoType = -1;

    ViewerLook() = default;
    virtual ~ViewerLook() = default;
    ViewerLook(const ViewerLook&) = delete;
    ViewerLook& operator=(const ViewerLook&) = delete;

    /// A number of SoGLRenderAction::TransparencyType or any other; kNoType when the scene is drawn
    /// nowhere.
    virtual int getTransparencyType() const = 0;
    /// Draws the scene anew. Nothing when it is drawn nowhere.
    virtual void setTransparencyType(int type) = 0;
    virtual QColor getBackground() const = 0;
    virtual void setBackground(const QColor& color) = 0;
};

} // namespace mirabo
