#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/rendering/SoOutline.h>

/// Draws a scene, and over it the outline (SoOutline) of everything that the scene's selection
/// nodes have selected, wherever in the scene those nodes stand.
class KALMYR_API SoLineHighlightRenderAction : public SoGLRenderAction {
    SO_DERIVED_ACTION_HEADER(SoLineHighlightRenderAction)

public:
    explicit SoLineHighlightRenderAction(const SbViewportRegion& region = SbViewportRegion());
    ~SoLineHighlightRenderAction() override;

    /// Off: the selection is not shown. On at first.
    void setVisible(bool on) { m_selected.setVisible(on); }
    bool isVisible() const { return m_selected.isVisible(); }

    /// At first cyan.
    void setColor(const SbColor& color) { m_selected.setColor(color); }
    const SbColor& getColor() const { return m_selected.getColor(); }

    /// Points; at first 2. See SoOutline.
    void setLineWidth(float width) { m_selected.setLineWidth(width); }
    float getLineWidth() const { return m_selected.getLineWidth(); }

    /// At first solid. See SoOutline.
    void setLinePattern(unsigned short pattern) { m_selected.setLinePattern(pattern); }
    unsigned short getLinePattern() const { return m_selected.getLinePattern(); }

protected:
    SoOutline* frameOutline() override;

private:
    SoOutline m_selected;
};
