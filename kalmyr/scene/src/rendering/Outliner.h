#pragma once

#include "rendering/FrameBuilder.h"
#include "rendering/GLOutline.h"
#include "rendering/GLRenderer.h"
#include "rendering/RenderList.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/rendering/RenderStatistics.h>

#include <cstdint>
#include <memory>
#include <vector>

class SoGLRenderAction;

namespace kalmyr::detail {

/// An object to be outlined.
struct OutlinedObject {
    /// Anywhere in the scene.
    OutlinedObject(const SoPath* objectPath, int firstNode)
        : path(objectPath), first(firstNode), length(objectPath->getLength())
    {
    }
    /// Below a selection node that was seen in a place of its own.
    OutlinedObject(const SoPath* objectPath, const SbMatrix& matrix, const RenderView& startView)
        : OutlinedObject(objectPath, 0)
    {
        toWorld = matrix;
        view = startView;
        isPlaced = true;
    }
    bool isWhole() const { return path->getLength() == length; }
    /// Null when not even that is left.
    SoNode* getHead() const { return path->getLength() > first ? path->getNode(first) : nullptr; }

    SoRef<const SoPath> path;
    int first;  ///< node that counts
    int length; ///< a path that was cut off names something else
    SbMatrix toWorld;
    RenderView view;
    bool isPlaced = false; ///< matrix and view in front of the path's head are known
};

/// Draws the outline of some objects over the frames of render actions.
///
/// A frame is drawn between prepare() and finish(); in frames for which the picture of the outline
/// has to be made anew the objects are added layer by layer.
class Outliner {
public:
    Outliner();
    ~Outliner();

    OutlineStyle style;
    bool isVisible = true;

    void setObjects(std::vector<OutlinedObject> objects);
    const std::vector<OutlinedObject>& getObjects() const { return m_objects; }
    bool hasObjects() const { return !m_objects.empty(); }

    /// Returns whether there is anything to outline in the frame, which `action` made of `root`.
    /// The device, frame and options outlast the call of finish().
    bool prepare(GLDevice& device, const SoGLRenderAction& action, SoNode* root, const Frame& scene,
                 const GLFrameOptions& options);
    /// Whether layerDrawn() is to be called.
    bool isStale() const { return m_stale; }
    void layerDrawn(int layer);
    void finish(RenderStatistics& statistics);

private:
    struct Collected {
        SoRef<const RenderList> list; ///< holds what the frame points to
        Frame frame;
    };
    /// The list of a placed object that was collected last: another view of it needs no traversal.
    struct Kept {
        SoRef<const RenderList> list;
        SoRef<const SoPath> path;
        std::uint64_t changeId = 0; ///< of the path's head
        SbMatrix toWorld;
    };
    std::uint64_t keyOf(const Frame& scene, const GLFrameOptions& options, bool followsGraph) const;
    GLOutline& picture() const { return m_device->outline(m_picture); }
    void collect(SoNode* root);
    void collect(const SoPath& path);
    void collectPlaced(const OutlinedObject& object);
    void openPicture(const GLFrameOptions& options);
    void close();
    bool areAllIn(const Frame& scene) const;
    PixelBox boxOf(const GLFrameOptions& options) const;
    void drawEdges();

    const std::uint64_t m_number; ///< among all of the process
    std::vector<OutlinedObject> m_objects;
    std::unique_ptr<SoGLRenderAction> m_collector; ///< walks the paths, draws nothing
    std::vector<Collected> m_collected;            ///< while a frame is drawn
    Kept m_kept;
    bool m_stale = false;
    bool m_asEdges = false;
    std::uint64_t m_picture = 0; ///< number of the present action's, among the device's
    std::uint64_t m_key = 0;
    RenderStatistics m_statistics;
    GLDevice* m_device = nullptr;              // Not owned; of the present frame.
    const GLFrameOptions* m_options = nullptr; // Not owned; the same.
};

} // namespace kalmyr::detail
