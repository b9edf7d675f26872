#pragma once

#include "mirabo/preferences/ViewerLook.h"

namespace mirabo {

/// The look of the scene manager that the tool was given, a host's or that of the tool's own
/// viewer. It is asked for anew at each call, and never kept.
class SceneManagerLook final : public ViewerLook {
public:
    int getTransparencyType() const override;
    void setTransparencyType(int type) override;
    /// Components are cut to 0 to 255.
    QColor getBackground() const override;
    void setBackground(const QColor& color) override;
};

} // namespace mirabo
