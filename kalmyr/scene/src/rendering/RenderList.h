#pragma once

#include "rendering/BackgroundPictures.h"

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/rendering/SoRenderAppearance.h>

#include <cstdint>
#include <memory>
#include <numeric>
#include <vector>

class SoNode;

namespace kalmyr::detail {

class RenderListCache;

/// What a camera sees, and where on the target.
struct RenderView {
    SoView view;
    SbViewportRegion region;
};

/// Lights and clip planes that were set within one list, in the space of that list. What a list
/// inherits is not in it, so a list serves under any lights.
struct Surroundings final : SoRefCounter {
    std::vector<SoLightRecord> lights;
    std::vector<SbVec4f> clipPlanes;

    friend bool operator==(const Surroundings& a, const Surroundings& b)
    {
        return a.lights == b.lights && a.clipPlanes == b.clipPlanes;
    }
};

/// A colour at an angle from the zenith, in radians.
struct BackgroundStop {
    SbColor color;
    float angle = 0;
};

/// Fog over the whole scene. Of several the bound one counts, else the first.
struct FogMark {
    SoFogValues values;
    bool isBound = false;
};

/// What stands below one separator, in the order of traversal and in the separator's own space.
///
/// Lists are shared by all places where the separator is seen under equal state, and nest.
class RenderList final : public SoRefCounter {
public:
    enum Kind : std::uint8_t { ITEM, LIST, BACKGROUND, SELECTION, LIGHT, FOG };

    struct Entry {
        Kind kind = ITEM;
        bool identity = false;    ///< the matrix does nothing
        bool transparent = false; ///< some part of the item lets light through
        std::uint8_t layer = 0;   ///< relative to the list's own layer
        std::int32_t index =
            -1; ///< view of the item or list, or place in backgrounds or fogs; -1: the view above
        SoRef<SoGeometry> geometry;
        SoRef<const SoRenderAppearance> appearance;
        SoRef<RenderList> list;
        SoRef<const Surroundings> surroundings; ///< null: nothing beyond what the list inherits;
                                                ///< of a LIGHT: the light
        SbMatrix matrix;                        ///< to the list's space
        SbBox3f box;                            ///< in the list's space
        float pixelReach = 0;         ///< so many pixels around the box may be drawn on as well
        const SoNode* node = nullptr; ///< not owned; the list is dropped when it may be gone
    };
    struct Background {
        SbVec3f
            up; ///< in the list's space; zero: the picture's own, angles are shares from its top
        std::vector<BackgroundStop> stops;                  ///< rising angles
        std::shared_ptr<const BackgroundPictures> pictures; ///< over the colours; null for none
        SbMatrix toWorld;                                   ///< of the pictures around the eye
        bool isSky() const { return up != SbVec3f(0, 0, 0); }
    };

    RenderList() = default;

    void addItem(Entry&& entry);
    void addList(Entry&& entry);
    void addBackground(const Background& background);
    /// A node with a list of selected paths; its own space is `matrix` away.
    void addSelection(const SoNode* selection, const SbMatrix& matrix, int view);
    /// A light that shines on the whole scene.
    void addLight(const SoLightRecord& light);
    /// Fog over the whole scene, in units of the space that `matrix` leads out of.
    void addFog(const FogMark& fog, const SbMatrix& matrix);

    const std::vector<Entry>& getEntries() const { return m_entries; }
    const Background& getBackground(const Entry& entry) const
    {
        return m_backgrounds[static_cast<std::size_t>(entry.index)];
    }
    const SbBox3f& getBox() const { return m_box; }
    float getPixelReach() const { return m_pixelReach; }
    /// Whether a background or a selection stands in it or in a list below.
    bool hasMarks() const { return m_hasMarks; }
    /// Adds the lights that shine on the whole scene, as they stand in the world that `toWorld`
    /// leads to.
    void gatherLights(const SbMatrix& toWorld, std::vector<SoLightRecord>& lights) const;
    /// Sets the fog that counts, with its visibility in the world, unless `fog` counts before it.
    void findFog(const SbMatrix& toWorld, FogMark& fog) const;
    void finish() { m_entries.shrink_to_fit(); }

    /// Which entries came of which child, of a node with many children.
    struct Parts {
        std::vector<std::uint32_t> counts; ///< of entries, by child
        int firstFree = 0;        ///< children from here on have no effect on those behind them
        std::size_t numEdits = 0; ///< since the box was last made anew
        std::size_t firstEntry(int child) const
        {
            return std::accumulate(counts.begin(), counts.begin() + child, std::size_t{0});
        }
    };
    /// Null where the list can only be made as a whole.
    Parts* getParts() { return m_parts.get(); }
    const Parts* getParts() const { return m_parts.get(); }
    /// Whether the entries of `other`, none of which is a mark, can take the place of others.
    bool canTake(const RenderList& other) const;
    /// Entries from `first` on make room for those of `from`. The box only grows, but is made anew
    /// now and then, so that the cost of an edit does not depend on the length.
    void replace(std::size_t first, std::size_t count, RenderList& from);
    /// Whether both hold the same, lists below by identity whatever their boxes are.
    bool isSameAs(const RenderList& other) const;
    /// Whether the entries differ by their places only; `hasNewLook` is set when the colours and
    /// textures' places of their looks differ as well.
    static bool areOfOneKind(const Entry& a, const Entry& b, bool& hasNewLook);

private:
    ~RenderList() override;

    friend class RenderListCache;
    friend class RenderTraversal;
    std::unique_ptr<Parts> m_parts;
    std::vector<Entry> m_entries;
    std::vector<Background> m_backgrounds;
    std::vector<FogMark> m_fogs;
    SbBox3f m_box;
    float m_pixelReach = 0; ///< the largest of all entries
    bool m_hasMarks = false;
    bool m_hasLights = false; ///< in it or in a list below
    bool m_hasFogs = false;   ///< in it or in a list below

    RenderListCache* m_cache = nullptr; ///< where the list is registered; outlives it
    const SoNode* m_node = nullptr;
    std::uint64_t m_stateKey = 0;
    std::uint64_t m_changeId = 0;
};

/// The box around a transformed box.
SbBox3f transformBox(const SbBox3f& box, const SbMatrix& matrix);

} // namespace kalmyr::detail
