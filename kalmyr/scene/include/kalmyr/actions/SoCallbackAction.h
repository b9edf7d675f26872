#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoPrimitiveVertex.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <deque>
#include <functional>
#include <vector>

/// Calls the host's functions at nodes of chosen types and with the triangles, line segments and
/// points of shapes. State at the call is that of the traversal: getState(), getModelMatrix().
class KALMYR_API SoCallbackAction : public SoAction {
    SO_ACTION_HEADER(SoCallbackAction)

public:
    enum Response {
        CONTINUE,
        ABORT, ///< ends the traversal
        PRUNE  ///< leaves out the node and what is below it (from a callback before the node)
    };
    using NodeCallback = std::function<Response(SoCallbackAction*, const SoNode*)>;
    using TriangleCallback =
        std::function<void(SoCallbackAction*, const SoNode*, const SoPrimitiveVertex&,
                           const SoPrimitiveVertex&, const SoPrimitiveVertex&)>;
    using LineCallback = std::function<void(SoCallbackAction*, const SoNode*,
                                            const SoPrimitiveVertex&, const SoPrimitiveVertex&)>;
    using PointCallback =
        std::function<void(SoCallbackAction*, const SoNode*, const SoPrimitiveVertex&)>;

    SoCallbackAction();
    explicit SoCallbackAction(const SbViewportRegion& region);

    void setViewportRegion(const SbViewportRegion& region) { m_region = region; }

    /// Called before or after nodes of a type and the types derived from it, in order of addition.
    void addPreCallback(SoType type, NodeCallback callback);
    void addPostCallback(SoType type, NodeCallback callback);
    /// Called for each primitive of shapes of a type and the types derived from it.
    void addTriangleCallback(SoType type, TriangleCallback callback);
    void addLineCallback(SoType type, LineCallback callback);
    void addPointCallback(SoType type, PointCallback callback);

    /// Object space of the present node to the space of the root.
    const SbMatrix& getModelMatrix() const;

    /// For shapes: which primitives somebody wants, and their delivery.
    bool wantsTriangles(const SoNode* shape) { return !callbacksOf(shape).triangles.empty(); }
    bool wantsLines(const SoNode* shape) { return !callbacksOf(shape).lines.empty(); }
    bool wantsPoints(const SoNode* shape) { return !callbacksOf(shape).points.empty(); }
    void invokeTriangle(const SoNode* shape, const SoPrimitiveVertex& v0,
                        const SoPrimitiveVertex& v1, const SoPrimitiveVertex& v2);
    void invokeLine(const SoNode* shape, const SoPrimitiveVertex& v0, const SoPrimitiveVertex& v1);
    void invokePoint(const SoNode* shape, const SoPrimitiveVertex& v);

protected:
    void beginTraversal(SoNode* root) override;
    bool beforeNode(SoNode* node) override;
    void afterNode(SoNode* node) override;

private:
    template <class F>
    struct Entry {
        SoType type;
        F function;
    };
    /// Indices into the lists of entries that apply to a type.
    struct OfType {
        bool known = false;
        std::vector<int> before, after, triangles, lines, points;
    };
    OfType& callbacksOf(const SoNode* node);
    template <class F>
    void add(std::deque<Entry<F>>& list, SoType type, F&& callback);
    template <class F, class Call>
    void callEach(const SoNode* node, std::deque<Entry<F>>& list, std::vector<int> OfType::*which,
                  Call call);

    SbViewportRegion m_region;
    // Queues, for they may grow while one of their functions runs.
    std::deque<Entry<NodeCallback>> m_before;
    std::deque<Entry<NodeCallback>> m_after;
    std::deque<Entry<TriangleCallback>> m_triangles;
    std::deque<Entry<LineCallback>> m_lines;
    std::deque<Entry<PointCallback>> m_points;
    std::vector<OfType> m_ofType; ///< by type index
};
