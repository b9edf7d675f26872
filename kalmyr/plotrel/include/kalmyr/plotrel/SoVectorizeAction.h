#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <functional>
#include <optional>

struct SoSceneView;
class SoVectorOutput;

/// Draws a scene as vectors on a page: what a render action shows in a viewport of the same
/// proportions.
///
/// The scene is traversed as for rendering. Faces are lit at their corners, cut to the view and to
/// the clipping planes, and put into an order in which what is nearer comes later; faces that
/// intersect or overlap each other in a ring are split. What is wholly hidden is left out. Lines
/// and points are drawn where they are not hidden. Cost: n log n in the triangles for scenes whose
/// depth complexity (layers behind each other) is bounded.
///
/// Use: open the file of the action's output, apply the action, close the file.
///
/// Threads: the thread that owns the scene graph.
class PLOTREL_API SoVectorizeAction : public SoAction {
    SO_ACTION_HEADER(SoVectorizeAction)

public:
    enum Style {
        SHADED,      ///< surfaces with their colours
        HIDDEN_LINES ///< a line drawing: edges of the faces, without those that faces hide; black,
                     ///< or white on a dark background, and without the scene's background
    };

    ~SoVectorizeAction() override;

    /// Returns the output that receives the drawing. Owned by the action.
    SoVectorOutput* getVectorOutput() const;

    /// Its proportions are those of the drawing, unless the output has a drawing size of its own,
    /// and its pixels those in which the scene's line widths and point sizes are measured. At first
    /// 1280 by 1024.
    void setViewportRegion(const SbViewportRegion& region) { m_region = region; }
    const SbViewportRegion& getViewportRegion() const { return m_region; }

    /// Behind the scene; none at first: the paper stays bare. A background node of the scene is
    /// drawn in front of it.
    void setBackgroundColor(const SbColor& color) { m_background = color; }
    void setNoBackground() { m_background.reset(); }
    const std::optional<SbColor>& getBackgroundColor() const { return m_background; }

    /// A scene without a camera of its own is shown whole, lit from the eye. On at first.
    void setDefaultCamera(bool on) { m_defaultCamera = on; }
    bool hasDefaultCamera() const { return m_defaultCamera; }

    /// At first SHADED.
    void setStyle(Style style) { m_style = style; }
    Style getStyle() const { return m_style; }

    /// How much the colours within a triangle may differ from what the light makes of it, from
    /// 1/255 to 1; at first 4/255. Triangles are divided until they do. Formats without shading get
    /// flat triangles whose neighbours differ by at most four times as much.
    void setShadingTolerance(float tolerance);
    float getShadingTolerance() const { return m_tolerance; }

    /// Only the visible parts of partly hidden faces are written, for devices whose inks or pens do
    /// not cover what lies below. Off at first: later faces hide parts of earlier ones.
    void setCuttingHiddenParts(bool on) { m_cutting = on; }
    bool isCuttingHiddenParts() const { return m_cutting; }

    /// Called now and then with the share of the work that is done; false stops it, and nothing is
    /// written. The scene may change meanwhile: what is drawn is the scene as it was at the
    /// beginning.
    using ProgressCallback = std::function<bool(float share)>;
    void setProgressCallback(ProgressCallback callback) { m_progress = std::move(callback); }

    /// Draws into the output's open file. Errors are posted: no open file, nothing in view, a file
    /// that cannot be written.
    void apply(SoNode* root) override;
    void apply(SoPath* path) override;
    /// Whether the latest application has drawn.
    bool hasDrawn() const { return m_drawn; }
    /// Whether the progress callback stopped the latest application.
    bool wasStopped() const { return m_stopped; }

protected:
    /// `output` becomes the action's.
    explicit SoVectorizeAction(SoVectorOutput* output);

    /// Called before the drawing is made, with what is applied to (`root` is null for a path) and
    /// what its cameras see.
    virtual void sceneViewed(SoNode* root, const SoSceneView& view);

private:
    struct Job;
    template <class Scene>
    void draw(Scene* scene);

    SoVectorOutput* m_output; // Owned.
    SbViewportRegion m_region{1280, 1024};
    std::optional<SbColor> m_background;
    Style m_style = SHADED;
    float m_tolerance = 4.0f / 255;
    bool m_defaultCamera = true;
    bool m_cutting = false;
    bool m_drawn = false;
    bool m_stopped = false;
    ProgressCallback m_progress;
};
