#pragma once

#include "U3DAffine.h"
#include "U3DLooks.h"
#include "U3DNames.h"
#include "U3DScene.h"
#include "U3DWires.h"

#include <kalmyr/base/SbViewVolume.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class SoNode;
class SoShape;
class SoState;
class SoVRMLViewpoint;
struct SoLightRecord;

namespace kalmyr::detail {

/// Builds a scene from what a traversal meets, in its order.
///
/// Groups become nodes when something is met below them, and take the transformation that is in
/// force there, so that what is transformed once for all of a group stands still in it.
class U3DCollector {
public:
    explicit U3DCollector(U3DScene& scene) : m_scene(scene), m_looks(scene) {}

    void enter(const SoNode* group, const SbMatrix& toWorld);
    void leave();
    /// `named` is the node whose name the shape bears; its own node or one that stands for it.
    void shape(SoShape* shape, const SoNode* named, SoState* state);
    void light(const SoNode* node, const SoLightRecord& record);
    /// `volume` is in the world.
    void camera(const SoNode* node, const SbViewVolume& volume, const SbMatrix& toWorld);
    void viewpoint(const SoVRMLViewpoint* node, const SbMatrix& toWorld);
    /// Completes the resources that depend on the whole scene. Called once, after all nodes.
    void finish();

    /// Groups nested more deeply are left out: what is in them hangs at the last one.
    static constexpr std::size_t kMaxDepth = 1000;

private:
    /// A group on the way, and once it is a node its space.
    struct Open {
        const SoNode* group = nullptr; // Not owned; on the way.
        SbMatrix entered;              ///< model matrix where the group begins
        int node = -1;
        SbMatrix world; ///< model matrix that became the group's space
        U3DAffine frame;
        U3DAffine inverse;
    };
    std::string nameOf(const SoNode* node);
    int addNode(U3DNode::Kind kind, std::string name, const SbMatrix& toWorld);
    void makeGroups(const SbMatrix& toWorld);
    void makeGroup(Open& open, const Open& above, const SbMatrix& toWorld);
    const Open& innermost() const { return m_numMade > 0 ? m_open[m_numMade - 1] : m_world; }
    static SbMatrix relative(const SbMatrix& toWorld, const Open& above);

    /// A shape and the state in which it is seen.
    struct Seen {
        const SoNode* named;
        const SoShape* shape;
        SoRef<SoGeometry> geometry;
        SoState* state;
    };
    std::string nameOf(const Seen& seen);
    void addSurface(const Seen& seen);
    void addWires(const Seen& seen, U3DWireSource source);
    void addModel(const Seen& seen, int generator, std::vector<int> shaders, bool bothSides);
    int addGenerator(const Seen& seen, U3DGenerator generator);
    void addView(const SoNode* node, U3DView view, const SbVec3f& position,
                 const SbVec3f& direction, const SbVec3f& up, const SbMatrix& toWorld);

    U3DScene& m_scene;
    U3DLooks m_looks;
    U3DNames m_nodeNames;
    U3DNames m_generatorNames;
    /// Generators of one geometry, with how many of its primitives they do not have.
    struct Known {
        std::vector<int> generators;
        std::size_t numLeftOut = 0;
    };
    std::unordered_map<std::string, Known> m_known;
    std::vector<Open> m_open;
    std::size_t m_numMade = 0; ///< of the open groups, from the outermost, are nodes
    Open m_world;
};

} // namespace kalmyr::detail
