#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace kalmyr::detail {
class GLDevice;
class RenderTraversal;
struct RenderStatistics;
} // namespace kalmyr::detail
class SoOutline;

/// Draws a scene into the OpenGL context that is current when it is applied.
///
/// A traversal produces a list of what is to be seen, which is then culled against the view, sorted
/// by state and submitted. The list is kept per separator: what has not changed since the previous
/// application costs one comparison, whatever is above it and whatever the camera does. Geometry
/// and textures stay in buffers of the context until the geometry dies.
///
/// The context needs OpenGL 3.3 or newer, core or compatibility. Without one, apply() posts an
/// error (once, until it succeeds again) and draws nothing. After drawing, the state of the context
/// is that of a new context as far as the action changed it; what is bound for drawing into, the
/// viewport and the pixel store settings are left as set.
///
/// Threads: the thread that owns the scene graph.
class KALMYR_API SoGLRenderAction : public SoAction {
    SO_ACTION_HEADER(SoGLRenderAction)

public:
    /// How transparent surfaces are drawn; the numbers are part of the interface.
    enum TransparencyType : int {
        SCREEN_DOOR = 0,         ///< a pattern of holes; needs no order
        BLEND = 3,               ///< blended in order of traversal
        DELAYED_BLEND = 4,       ///< blended in order of traversal after everything opaque
        SORTED_OBJECT_BLEND = 6, ///< after everything opaque, objects from back to front
        SORTED_PIXELS_BLEND = 7, ///< order right at every pixel; drawn as SORTED_TRIANGLES_BLEND
        DELAYED_SORTED_PIXELS_BLEND = 8,    ///< drawn as SORTED_TRIANGLES_BLEND
        SORTED_TRIANGLES_BLEND = 10,        ///< all triangles of all objects from back to front
        SORTED_OBJECT_TRIANGLES_BLEND = 12, ///< objects from back to front, triangles within each
        NO_TRANSPARENCY = 13                ///< everything is drawn opaque
    };

    explicit SoGLRenderAction(const SbViewportRegion& region = SbViewportRegion());
    ~SoGLRenderAction() override;

    /// The part of the target to draw into; cameras fit their view to it.
    void setViewportRegion(const SbViewportRegion& region) { m_region = region; }
    const SbViewportRegion& getViewportRegion() const { return m_region; }

    /// Any number is kept; one that has no enumerator is drawn like the nearest one that has.
    /// At first SORTED_OBJECT_BLEND.
    void setTransparencyType(int type) { m_transparencyType = type; }
    int getTransparencyType() const { return m_transparencyType; }

    /// Whether apply() clears the viewport's part of colour and depth buffer first; off at first.
    void setClearing(bool color, bool depth);
    bool isClearingColor() const { return m_clearColor; }
    bool isClearingDepth() const { return m_clearDepth; }
    /// The colour to clear with, black at first.
    void setBackgroundColor(const SbColorRGBA& color) { m_backgroundColor = color; }
    const SbColorRGBA& getBackgroundColor() const { return m_backgroundColor; }

    /// Drawn after the scene; not owned, and either may die first. False, and nothing changes, when
    /// the outline is added already, or is not.
    bool addOutline(SoOutline& outline);
    bool removeOutline(SoOutline& outline);

    /// The node that the action was applied to most recently when `node` is that or stands below
    /// it; null otherwise.
    SoNode* findRootOf(SoNode* node) const;

    /// Lists of separators are kept between applications; on at first.
    void setCaching(bool on);
    bool isCaching() const;
    /// Forgets all kept lists, and with them the references on geometry.
    void clearCaches();

    /// Draws. A null root, or an application within an application, is refused with a debug error.
    void apply(SoNode* root) override;
    void apply(SoPath* path) override;

    /// False when the latest application could not draw for want of a context.
    bool hasDrawn() const { return m_drawn; }

    /// For nodes: what they do depends on the camera, the absolute position or anything else
    /// outside their subtree and the state, so it must be asked again for every frame.
    void setViewDependent();

    /// Frees what is kept in the current context for all actions. A window calls it, its context
    /// being current, before the context goes; without it the memory goes with the context.
    static void releaseContext();

    /// Counts of the latest application.
    const kalmyr::detail::RenderStatistics& getStatistics() const;

    /// The traversal's inner state, for the methods of the rendering area.
    kalmyr::detail::RenderTraversal& traversal() { return *m_traversal; }

protected:
    void beginTraversal(SoNode* root) override;
    void endTraversal(SoNode* root) override;
    /// An outline that a derived action draws besides those that were added; called in each frame
    /// when the scene was traversed. Null: none.
    virtual SoOutline* frameOutline() { return nullptr; }

private:
    bool canDraw();
    void draw(SoNode* root);
    void drawFrame(kalmyr::detail::GLDevice& device, SoNode* root);

    friend class SoOutline;
    std::vector<SoOutline*> m_outlines;   // Not owned.
    const SoNode* m_latestRoot = nullptr; // Not owned; only compared.
    SbViewportRegion m_region;
    SbColorRGBA m_backgroundColor;
    int m_transparencyType = SORTED_OBJECT_BLEND;
    bool m_clearColor = false;
    bool m_clearDepth = false;
    bool m_drawn = false;
    bool m_traversed = false; ///< false when the application was refused
    bool m_reported = false;
    std::unique_ptr<kalmyr::detail::RenderTraversal> m_traversal;
};
