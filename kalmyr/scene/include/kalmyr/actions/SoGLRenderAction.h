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
    ///
    /// Transparent is an item with a material, colours or a texture that let light through in some
    /// place. "After everything opaque" means that of the same layer: what stands on top of others
    /// (SoAnnotation) is drawn when they are complete. From DELAYED_BLEND on, transparent surfaces
    /// are hidden by opaque ones and never by each other.
    enum TransparencyType : int {
        /// A pattern of holes in 16 steps, the same for all surfaces; whatever comes in front
        /// hides what is behind. Needs no order, and works where nothing is blended.
        SCREEN_DOOR = 0,
        /// Blended at once, in order of traversal: what is traversed later and lies behind is
        /// hidden. For scenes that are built from back to front.
        BLEND = 3,
        /// After everything opaque, blended in order of traversal.
        DELAYED_BLEND = 4,
        /// After everything opaque, item by item from back to front by the middles of their boxes,
        /// of each item the far side before the near one: right for convex things that do not
        /// reach into each other.
        SORTED_OBJECT_BLEND = 6,
        /// Sorted at each pixel, camera by camera: what one camera sees is complete, transparent
        /// things included, before what the next camera in order of traversal sees is drawn over
        /// it. With one camera the same as DELAYED_SORTED_PIXELS_BLEND.
        SORTED_PIXELS_BLEND = 7,
        /// Sorted at each pixel after everything opaque that any camera sees. Right also for
        /// surfaces that cross each other; of surfaces that coincide the later one in order of
        /// traversal is in front. The nearest 64 surfaces at each pixel are exact, and those behind
        /// them are drawn as SORTED_TRIANGLES_BLEND draws them. With several samples a pixel each
        /// sample is sorted (OpenGL 4.0; elsewhere each pixel). Every surface is drawn once for
        /// each that lies over it. Textures of at most 256 MB hold what is being sorted, of large
        /// pictures a part at a time; a target whose depths cannot be read gets
        /// SORTED_TRIANGLES_BLEND.
        DELAYED_SORTED_PIXELS_BLEND = 8,
        /// After everything opaque, all triangles of all items from back to front by their middles:
        /// right for small triangles that do not cross. Lines and points come after them.
        SORTED_TRIANGLES_BLEND = 10,
        /// After everything opaque, item by item from back to front, the triangles of each from
        /// back to front: right for things of any form that do not reach into each other.
        SORTED_OBJECT_TRIANGLES_BLEND = 12,
        /// Everything is drawn opaque.
        NO_TRANSPARENCY = 13
    };

    /// The way in which shapes are shown, whatever the scene says of their look.
    enum DrawStyle : int {
        AS_IS,
        NO_TEXTURE,
        HIDDEN_LINE,  ///< the edges of faces, without those that faces hide
        WIREFRAME,    ///< the edges of faces
        POINTS,       ///< the corners of faces
        BOUNDING_BOX, ///< the box around each shape
        FLAT          ///< each face in one tone
    };

    /// One picture for each eye.
    struct Stereo {
        bool isOn = false;
        float separation = 0;  ///< of the eyes, in units of the world
        float convergence = 0; ///< distance at which both eyes see things at the same place
        friend bool operator==(const Stereo&, const Stereo&) = default;
    };

    explicit SoGLRenderAction(const SbViewportRegion& region = SbViewportRegion());
    ~SoGLRenderAction() override;

    /// The part of the target to draw into; cameras fit their view to it.
    void setViewportRegion(const SbViewportRegion& region) { m_region = region; }
    const SbViewportRegion& getViewportRegion() const { return m_region; }

    /// The part of the window that the target holds, in pixels: what belongs at `origin` of the
    /// window comes to the target's lower left. The part may reach beyond the window. Pictures that
    /// are put together of parts have no seams when the origins are multiples of 16 and, with
    /// outlines, 64 pixels around each part are thrown away. A size of 0 0, as at first, is the
    /// whole window.
    void setWindowPart(const SbVec2i32& origin, const SbVec2i32& size)
    {
        m_partOrigin = origin;
        m_partSize = size;
    }
    const SbVec2i32& getWindowPartOrigin() const { return m_partOrigin; }
    const SbVec2i32& getWindowPartSize() const { return m_partSize; }

    /// Any number is kept; one that has no enumerator is drawn like one that has: 1 as 3, 2 as 4,
    /// 5 as 6, 9 as 10, 11 as 12. At first SORTED_OBJECT_BLEND.
    void setTransparencyType(int type) { m_transparencyType = type; }
    int getTransparencyType() const { return m_transparencyType; }

    /// At first AS_IS. Shapes that are invisible stay so. Lines and points of the scene are shown
    /// as they are, but for BOUNDING_BOX and POINTS.
    void setDrawStyle(DrawStyle style) { m_drawStyle = style; }
    DrawStyle getDrawStyle() const { return m_drawStyle; }

    /// Draws for glasses with a red glass on the left and a cyan one on the right: what cameras see
    /// in perspective, from two places. Clears colours and depths in any case. Off at first.
    void setStereo(const Stereo& stereo) { m_stereo = stereo; }
    const Stereo& getStereo() const { return m_stereo; }

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
    /// For initClass() of node types that are so at every visit: nodes of the type, and of types
    /// derived from it, are asked again for every frame, and so is what is above them. A derived
    /// type with a method of its own calls setViewDependent() there.
    static void addViewDependentType(SoType type);

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
    void drawBothEyes(kalmyr::detail::GLDevice& device, SoNode* root);

    friend class SoOutline;
    std::vector<SoOutline*> m_outlines;   // Not owned.
    const SoNode* m_latestRoot = nullptr; // Not owned; only compared.
    SbViewportRegion m_region;
    SbVec2i32 m_partOrigin{0, 0};
    SbVec2i32 m_partSize{0, 0};
    SbColorRGBA m_backgroundColor;
    int m_transparencyType = SORTED_OBJECT_BLEND;
    DrawStyle m_drawStyle = AS_IS;
    Stereo m_stereo;
    bool m_clearColor = false;
    bool m_clearDepth = false;
    bool m_drawn = false;
    bool m_traversed = false; ///< false when the application was refused
    bool m_reported = false;
    std::unique_ptr<kalmyr::detail::RenderTraversal> m_traversal;
};
