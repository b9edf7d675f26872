#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>

#include <memory>
#include <vector>

class SoGLRenderAction;
class SoPath;

namespace kalmyr::detail {
class Outliner;
}

/// The silhouette of some objects as a line around what is seen of them, with a narrow rim of a
/// contrasting tone. Where something hides an object the line is half as wide.
///
/// An outline is drawn by every render action that it is given to (SoGLRenderAction::addOutline)
/// whose scene holds the objects, after the scene and over all of it. It costs one more drawing of
/// the objects in frames in which they, the camera, or the shapes that may hide them have changed;
/// in others the picture of the outline is laid over the scene again, and without objects it costs
/// nothing. What a program drew into the depth buffer by itself is taken as it was in the latest
/// frame of the former kind.
///
/// Threads: the thread that owns the scene graph.
class KALMYR_API SoOutline {
public:
    SoOutline();
    ~SoOutline();
    SoOutline(const SoOutline&) = delete;
    SoOutline& operator=(const SoOutline&) = delete;

    /// The objects: what is below the tail of each path. A path may begin anywhere in the scene:
    /// where its head stands in several places there is an outline in each. Paths follow edits of
    /// the graph; one that was cut off is left out. Nulls and empty paths are ignored.
    void setPaths(const std::vector<const SoPath*>& paths);
    /// One path; null: none.
    void setPath(const SoPath* path);
    bool isEmpty() const;

    /// Off: nothing is drawn. On at first.
    void setVisible(bool on);
    bool isVisible() const;
    /// At first orange. The rim is dark around a bright line and bright around a dark one.
    void setColor(const SbColor& color);
    const SbColor& getColor() const;
    /// Points, which are pixels on a screen of 72 pixels an inch (SbViewportRegion); from 1 to 16,
    /// at first 2. The rim is one point wide.
    void setLineWidth(float width);
    float getLineWidth() const;
    /// A bit pattern of 16 pixels; at first solid. The pattern stands still on the screen, in
    /// diagonal stripes, as a silhouette has no beginning that it could start from.
    void setLinePattern(unsigned short pattern);
    unsigned short getLinePattern() const;

    /// The actions that it was given to, in that order.
    const std::vector<SoGLRenderAction*>& getActions() const { return m_actions; }

    /// For the render actions.
    kalmyr::detail::Outliner& outliner() { return *m_outliner; }

private:
    friend class SoGLRenderAction;
    std::vector<SoGLRenderAction*> m_actions; // Not owned.
    std::unique_ptr<kalmyr::detail::Outliner> m_outliner;
};
