#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbColor.h>

/// Draws a scene, and over it the edges of everything that the scene's selection nodes have
/// selected, as lines in one colour that nothing hides.
class KALMYR_API SoLineHighlightRenderAction : public SoGLRenderAction {
    SO_DERIVED_ACTION_HEADER(SoLineHighlightRenderAction)

public:
    explicit SoLineHighlightRenderAction(const SbViewportRegion& region = SbViewportRegion());
    ~SoLineHighlightRenderAction() override;

    /// Off: the selection is not shown. On at first.
    void setVisible(bool on) { m_visible = on; }
    bool isVisible() const { return m_visible; }

    /// At first red.
    void setColor(const SbColor& color) { m_color = color; }
    const SbColor& getColor() const { return m_color; }

    /// Pixels; at first 3.
    void setLineWidth(float width) { m_lineWidth = width; }
    float getLineWidth() const { return m_lineWidth; }

    /// A bit pattern of 16 pixels along the lines; at first solid.
    void setLinePattern(unsigned short pattern) { m_linePattern = pattern; }
    unsigned short getLinePattern() const { return m_linePattern; }

protected:
    void drawMore() override;

private:
    SbColor m_color{1, 0, 0};
    float m_lineWidth = 3;
    unsigned short m_linePattern = 0xffff;
    bool m_visible = true;
    std::unique_ptr<SoGLRenderAction> m_collector; ///< walks the selected paths, draws nothing
};
