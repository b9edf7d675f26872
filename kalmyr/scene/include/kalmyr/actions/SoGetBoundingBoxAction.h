#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <memory>
#include <vector>

/// Measures what the nodes below show, in the space of the node that it is applied to (for a path:
/// of the path's head).
class KALMYR_API SoGetBoundingBoxAction : public SoAction {
    SO_ACTION_HEADER(SoGetBoundingBoxAction)

public:
    explicit SoGetBoundingBoxAction(const SbViewportRegion& region);

    void setViewportRegion(const SbViewportRegion& region) { m_region = region; }
    const SbViewportRegion& getViewportRegion() const { return m_region; }

    /// Axis-parallel; empty when there is nothing to see.
    SbBox3f getBoundingBox() const { return m_result.project(); }
    /// The same in its own space: tighter where a single object was measured.
    SbXfBox3f getXfBoundingBox() const { return {m_result.box, m_result.matrix}; }
    /// The centre that a single shape gave for itself; otherwise the middle of the box.
    SbVec3f getCenter() const { return m_result.getCenter(); }

    /// For shapes: adds a box of the present object space. Empty boxes are ignored.
    void extendBy(const SbBox3f& box) { extendBy(box, box.getCenter()); }
    void extendBy(const SbBox3f& box, const SbVec3f& center);

    /// For separators, in place of state->push() and pop():
    ///
    ///     if (action->open(this, m_boxCache.get())) {
    ///         action->measureChildren(*getChildren(), &m_boxCache);
    ///         action->close(this, &m_boxCache);
    ///     }
    ///
    /// measureChildren() is traverseChildren() for children whose bounds the cache may know.
    /// open() is false when the cache answered already. Between the calls the model matrix is
    /// relative to the separator. close() fills the cache, making it where it is worth its memory;
    /// a null cache means not to cache.
    bool open(const SoNode* node, const SoBoundingBoxCache* cache);
    void measureChildren(const SoChildList& children, std::unique_ptr<SoBoundingBoxCache>* cache);
    void close(const SoNode* node, std::unique_ptr<SoBoundingBoxCache>* cache);

    /// For nodes whose size depends on more than fields and declared state, such as the view: none
    /// of the separators around may remember its bounds.
    void doNotCache();

    /// For nodes that make what follows stand in the root's space, or that take what came before
    /// out of the measure.
    void resetTransform(const SoNode* node);
    void resetBox();

    /// Separators with fewer visits below them are measured anew rather than remembered.
    static constexpr std::uint64_t kMinVisitsToCache = 8;
    /// Fewer children are measured anew rather than remembered one by one.
    static constexpr int kMinParts = 4;

protected:
    void beginTraversal(SoNode* root) override;
    void endTraversal(SoNode* root) override;

private:
    struct Open {
        SoBoundsUnion bounds;
        const SbMatrix* toOuter = nullptr; ///< kept by the state while the separator is open
        std::uint64_t stateKey = 0;
        std::uint64_t viewId = 0;
        std::uint64_t visitsBefore = 0;
        bool cacheable = true;
        bool ownView = false;
    };
    /// The bounds of the separator that was left last.
    struct Closed {
        const SoNode* node = nullptr; ///< null when its bounds are not to be remembered
        SoBounds bounds;
        bool ownView = false;
    };
    int addParts(const SoChildList& children, const std::unique_ptr<SoBoundingBoxCache>& cache,
                 int i, std::uint64_t key, int end);
    void addPart(const SoBoundingBoxCache& cache, int index);
    bool addRun(const SoChildList& children, std::unique_ptr<SoBoundingBoxCache>& cache, int first,
                std::uint64_t key);
    bool measurePart(SoNode* child, int index, int numChildren,
                     std::unique_ptr<SoBoundingBoxCache>& cache, std::uint64_t key);
    bool isPlain() const;
    void keepPart(std::unique_ptr<SoBoundingBoxCache>& cache, int index, int numChildren,
                  std::uint64_t key);

    SbViewportRegion m_region;
    std::vector<Open> m_open; ///< the root's and one per open separator
    Closed m_closed;
    SoBounds m_result;
};
