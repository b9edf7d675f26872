#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <array>
#include <memory>

class SoDetail;
class SoState;

namespace kalmyr {
struct ShapeSource;
}

/// Base of everything that can be seen.
///
/// A concrete shape says how its geometry is built from its fields and the state; the base keeps
/// the result until something it was built from changes, and renders, picks and measures it.
class KALMYR_API SoShape : public SoNode {
    SO_NODE_HEADER(SoShape)

public:
    static void initClass();

    /// The geometry under the present state; from the cache when node and state are unchanged.
    /// Null for a shape without any primitive.
    SoRef<SoGeometry> getGeometry(SoState* state);

    /// Box and centre in object space; by default of the geometry. A shape that knows better
    /// without building it overrides.
    virtual void computeBBox(SoState* state, SbBox3f& box, SbVec3f& center);

    bool affectsState() const override { return false; }

    enum class Primitive { TRIANGLE, LINE, POINT };
    /// Returns how the shape's fields number a primitive of its geometry, for picks. The geometry
    /// is that of the present state, and `point` lies on the primitive, in object space.
    virtual std::unique_ptr<SoDetail> createDetail(SoState* state, const SoGeometry& geometry,
                                                   Primitive primitive, std::size_t index,
                                                   const SbVec3f& point);

protected:
    SoShape();
    ~SoShape() override;

    /// Says what the faces, lines or points of the shape are: for its geometry, unless
    /// buildGeometry() is overridden, and for its details. Says nothing by default.
    virtual void fillSource(SoState* state, kalmyr::ShapeSource& source) const;
    /// Builds triangles, lines and points; by default what fillSource() says. Faults of the data
    /// (an index out of range) are posted once as read-time style warnings and the face is left
    /// out.
    virtual void buildGeometry(SoState* state, SoGeometry& geometry);
    /// Mixes the ids of the state values that buildGeometry() looks at; 0 when it looks at none.
    virtual std::uint64_t stateKey(SoState* state) const;
    /// A geometry that equal shapes share, or null to have one of its own built.
    virtual SoRef<SoGeometry> findShared(SoState* state);

private:
    struct Cached {
        std::uint64_t key = 0;
        bool filled = false;
        SoRef<SoGeometry> geometry;
    };
    /// A shape shared under different coordinates keeps a few more results.
    static constexpr int kMoreResults = 3;
    struct More {
        std::array<Cached, kMoreResults> results;
        int next = 0;
    };
    SoRef<SoGeometry> cached(std::uint64_t key, bool& found);
    Cached* findCached(std::uint64_t key);
    Cached& slotForNew();

    std::uint64_t m_builtFrom = 0; ///< node id that the results belong to
    Cached m_first;
    std::unique_ptr<More> m_more;
};
