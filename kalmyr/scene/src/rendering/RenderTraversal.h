#pragma once

#include "rendering/DrawStyles.h"
#include "rendering/FrameBuilder.h"
#include "rendering/RenderList.h"
#include "rendering/RenderListCache.h"

#include <kalmyr/rendering/RenderStatistics.h>

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

class SoGLRenderAction;
class SoNode;
class SoShape;
class SoState;

namespace kalmyr::detail {

/// Turns the traversal of a render action into lists.
///
/// A separator is recorded into a list of its own when it was seen unchanged in the frame before;
/// until then, and where it is small or depends on the view, its content goes into the list of the
/// separator above. While a list is recorded the model matrix and the lights in the state are those
/// set below its separator, so the list stays right wherever it is put.
class RenderTraversal {
public:
    explicit RenderTraversal(SoGLRenderAction& action);

    void begin(SoNode* root);
    void end(SoNode* root);

    /// What the methods of the action call.
    void separator(SoNode* node, bool mayCache);
    void annotation(SoNode* node, bool mayCache = true);
    void shape(SoShape* shape);
    void background(const SbColor& top, const SbColor& bottom);
    /// `pictures` stand around the eye, over the colours; null for none.
    void sky(std::vector<BackgroundStop> stops, std::shared_ptr<const BackgroundPictures> pictures);
    /// A picture on the screen.
    void backgroundPicture(std::shared_ptr<const BackgroundPictures> picture);
    void selection(const SoNode* node);
    /// A light, as it stands in the list, that shines on the whole scene.
    void sceneLight(const SoLightRecord& light);
    /// Fog over the whole scene, in units of the present object space.
    void sceneFog(const FogMark& fog);
    /// What the node does by itself; lights of a group come before what they shine on.
    void visit(SoNode* node);
    void clipPlane(const SoNode* node, const SbVec4f& plane);
    void setViewDependent() { m_viewDependent = true; }

    /// Valid until the next begin(); null before the first.
    const RenderList* getList() const { return m_top.get(); }
    const std::vector<RenderView>& getViews() const { return m_views; }
    /// Whether something in the latest traversal depends on the view, or on the program.
    bool isViewDependent() const { return m_viewDependent; }
    const RenderListCache& getCache() const { return m_cache; }
    /// Brings `frame` up to date with the latest traversal.
    void updateFrame();

    void setCaching(bool on);
    bool isCaching() const { return m_caching; }
    void clear();

    /// Matrix in front of everything, and the view to take before any camera.
    void setStart(const SbMatrix& matrix, const RenderView& view);
    void clearStart() { m_hasStart = false; }

    RenderStatistics statistics;
    Frame frame; ///< of the latest drawing; its memory is used again

    /// Separators with fewer visits below them are not worth a list.
    static constexpr std::uint64_t kMinVisitsToCache = 3;
    /// Lists nest at most this deep, so that walks over them may recurse.
    static constexpr int kMaxNesting = 256;

private:
    struct Root {
        const SoNode* node = nullptr; // Not owned; only compared.
        std::uint64_t frame = 0;
        SoRef<RenderList> list;
    };
    static constexpr std::size_t kMaxRoots = 4;
    static constexpr std::uint64_t kMaxRootAge = 16;

    /// Whether the node's entries can be told apart by its children: it visits them one by one
    /// between a push and a pop, and does nothing else.
    static bool hasParts(const SoNode* node);
    /// Whether a list of the node would serve although something below it changes in every frame:
    /// few of many children do.
    static bool hasFewChanges(const SoNode* node, std::uint64_t changeId);
    void record(SoNode* node, std::uint64_t changeId, std::uint64_t stateKey);
    void visitInParts(SoNode* node, RenderList& list);
    bool patch(SoNode* node, std::uint64_t changeId, std::uint64_t stateKey);
    bool findChanged(const SoNode& node, RenderList& list, std::vector<int>& changed);
    void clearPart(RenderList& list, int index);
    bool replaceParts(SoNode* node, RenderList& list, const std::vector<int>& changed);
    bool replacePart(SoNode* node, RenderList& list, int index);
    template <class Visit>
    void visitApart(SoNode* node, RenderList& into, const Visit& visit);
    void traverseInPlace(SoNode* node, bool mayCache);
    void appendList(RenderList& list);
    void place(RenderList::Entry& entry);
    std::uint64_t stateKey();
    int currentView();
    SoRef<const Surroundings> surroundings();
    SoRef<const SoRenderAppearance> appearance();
    SoRef<const SoRenderAppearance> makeAppearance();
    void addStyled(RenderList::Entry&& entry, SoDrawStyleValues::Style ownStyle);
    bool isTranslucent(const SoTextureValues& texture, std::uint64_t valueId);
    void keepRoot(SoNode* root);

    SoGLRenderAction& m_action;
    SoState* m_state;
    RenderListCache m_cache;
    std::vector<Root> m_roots; ///< after the cache, which their lists refer to
    SoRef<RenderList> m_top;
    RenderList* m_list = nullptr; // Not owned; being recorded.
    std::vector<RenderView> m_views;
    std::unordered_map<std::uint64_t, int> m_viewIndices;
    std::vector<bool> m_notInKey; ///< by stack index: elements that lists do not depend on
    std::uint64_t m_frame = 0;
    std::vector<ListPatch> m_patches; ///< of lists that the latest traversal edited
    int m_nesting = 0;
    std::uint8_t m_layer = 0;
    bool m_viewDependent = false;
    bool m_caching = true;

    std::shared_ptr<const std::vector<SoLightRecord>> m_lastLights;
    std::shared_ptr<const std::vector<SbVec4f>> m_lastPlanes;
    SoRef<const Surroundings> m_lastSurroundings;

    static constexpr int kAppearanceElements = 7;
    using AppearanceKey = std::array<std::uint64_t, kAppearanceElements>;
    struct AppearanceHash {
        std::size_t operator()(const AppearanceKey& key) const;
    };
    std::unordered_map<AppearanceKey, SoRef<const SoRenderAppearance>, AppearanceHash>
        m_appearances;
    AppearanceKey m_lastKey{};
    SoRef<const SoRenderAppearance> m_lastAppearance;
    std::unordered_map<std::uint64_t, bool> m_translucentTextures;
    StyledGeometries m_styled;

    SbMatrix m_startMatrix;
    RenderView m_startView;
    bool m_hasStart = false;
};

} // namespace kalmyr::detail
