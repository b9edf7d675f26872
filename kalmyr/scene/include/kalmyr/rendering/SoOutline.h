#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>

#include <memory>
#include <vector>

class SoGLRenderAction;
class SoNode;
class SoPath;

namespace kalmyr::detail {
class Outliner;
}

/// The silhouette of an object as a line around what is seen of them, with a narrow rim of a
/// contrasting tone. Where something hides the object the line is half as wide.
///
/// An outline is drawn by every render action that it is given to (SoGLRenderAction::addOutline)
/// whose scene holds the object, after the scene and over all of it. It costs one more drawing of
/// the object in frames in which it, the camera, or the shapes that may hide it have changed; in
/// others the picture of the outline is laid over the scene again, and without an object it costs
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

    /// The object: what is below the tail of a path; null: none. Of the path only the nodes from
    /// number `from` on count, and they may stand anywhere in the scene: where the first of them is
    /// found in several places there is an outline in each. Holds a reference on the path, which is
    /// not copied and follows edits of the graph; one that is cut off names nothing any more.
    void setPath(const SoPath* path, int from = 0);
    const SoPath* getPath() const;
    /// The first node of the path that counts; null without.
    SoNode* getHead() const;
    bool isEmpty() const;

    /// Off: nothing is drawn. On at first.
    void setVisible(bool on);
    bool isVisible() const;
    /// At first cyan, which few things in scenes are. The rim is dark around a bright line and
    /// bright around a dark one.
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
