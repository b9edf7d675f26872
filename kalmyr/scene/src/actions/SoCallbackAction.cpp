#include <kalmyr/actions/SoCallbackAction.h>

#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

SO_ACTION_SOURCE(SoCallbackAction, SoAction, "CallbackAction")

void SoCallbackAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
}

SoCallbackAction::SoCallbackAction() : SoCallbackAction(SbViewportRegion()) {}

SoCallbackAction::SoCallbackAction(const SbViewportRegion& region) : m_region(region) {}

template <class F>
void SoCallbackAction::add(std::deque<Entry<F>>& list, SoType type, F&& callback)
{
    list.push_back({type, std::move(callback)});
    for (OfType& known : m_ofType)
        known.known = false;
}

void SoCallbackAction::addPreCallback(SoType type, NodeCallback callback)
{
    add(m_before, type, std::move(callback));
    setHooked(true);
}

void SoCallbackAction::addPostCallback(SoType type, NodeCallback callback)
{
    add(m_after, type, std::move(callback));
    setHooked(true);
}

void SoCallbackAction::addTriangleCallback(SoType type, TriangleCallback callback)
{
    add(m_triangles, type, std::move(callback));
}

void SoCallbackAction::addLineCallback(SoType type, LineCallback callback)
{
    add(m_lines, type, std::move(callback));
}

void SoCallbackAction::addPointCallback(SoType type, PointCallback callback)
{
    add(m_points, type, std::move(callback));
}

const SbMatrix& SoCallbackAction::getModelMatrix() const
{
    return SoModelMatrixElement::get(getState());
}

void SoCallbackAction::beginTraversal(SoNode*)
{
    getState()->write<SoViewportRegionElement>().set(nullptr, m_region);
}

namespace {

template <class List>
std::vector<int> indicesOf(const List& list, SoType type)
{
    std::vector<int> indices;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (type.isDerivedFrom(list[i].type))
            indices.push_back(static_cast<int>(i));
    }
    return indices;
}

} // namespace

SoCallbackAction::OfType& SoCallbackAction::callbacksOf(const SoNode* node)
{
    const SoType type = node->getTypeId();
    const auto i = static_cast<std::size_t>(type.getIndex());
    if (i >= m_ofType.size())
        m_ofType.resize(i + 1);
    OfType& result = m_ofType[i];
    if (!result.known) {
        result = {true,
                  indicesOf(m_before, type),
                  indicesOf(m_after, type),
                  indicesOf(m_triangles, type),
                  indicesOf(m_lines, type),
                  indicesOf(m_points, type)};
    }
    return result;
}

/// Calls functions one by one. The list is asked for anew each time: a callback may add others.
template <class F, class Call>
void SoCallbackAction::callEach(const SoNode* node, std::deque<Entry<F>>& list,
                                std::vector<int> OfType::*which, Call call)
{
    for (std::size_t i = 0; i < (callbacksOf(node).*which).size() && !hasTerminated(); ++i)
        call(list[static_cast<std::size_t>((callbacksOf(node).*which)[i])].function);
}

bool SoCallbackAction::beforeNode(SoNode* node)
{
    bool prune = false;
    callEach(node, m_before, &OfType::before, [&](NodeCallback& callback) {
        const Response response = callback(this, node);
        prune |= response == PRUNE;
        if (response == ABORT)
            setTerminated(true);
    });
    return !prune;
}

void SoCallbackAction::afterNode(SoNode* node)
{
    callEach(node, m_after, &OfType::after, [&](NodeCallback& callback) {
        if (callback(this, node) == ABORT)
            setTerminated(true);
    });
}

void SoCallbackAction::invokeTriangle(const SoNode* shape, const SoPrimitiveVertex& v0,
                                      const SoPrimitiveVertex& v1, const SoPrimitiveVertex& v2)
{
    callEach(shape, m_triangles, &OfType::triangles,
             [&](TriangleCallback& callback) { callback(this, shape, v0, v1, v2); });
}

void SoCallbackAction::invokeLine(const SoNode* shape, const SoPrimitiveVertex& v0,
                                  const SoPrimitiveVertex& v1)
{
    callEach(shape, m_lines, &OfType::lines,
             [&](LineCallback& callback) { callback(this, shape, v0, v1); });
}

void SoCallbackAction::invokePoint(const SoNode* shape, const SoPrimitiveVertex& v)
{
    callEach(shape, m_points, &OfType::points,
             [&](PointCallback& callback) { callback(this, shape, v); });
}
