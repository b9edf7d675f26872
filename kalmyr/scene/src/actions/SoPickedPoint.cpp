#include <kalmyr/actions/SoPickedPoint.h>

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoNode.h>

#include <algorithm>

namespace {

/// Normals go with the transposed inverse, so that they stay square to their faces.
SbVec3f transformNormal(const SbVec3f& normal, const SbMatrix& inverse)
{
    SbVec3f result;
    for (int i = 0; i < 3; ++i)
        result[i] =
            inverse[i][0] * normal[0] + inverse[i][1] * normal[1] + inverse[i][2] * normal[2];
    return result.normalized();
}

} // namespace

SoPickedPoint::SoPickedPoint(SoPath* path, const SbMatrix& objectToWorld, float distance,
                             const SbVec3f& objectPoint, const SbVec3f& objectNormal)
    : m_path(path),
      m_objectToWorld(objectToWorld),
      m_distance(distance),
      m_objectPoint(objectPoint),
      m_objectNormal(objectNormal)
{
}

SoPickedPoint::SoPickedPoint(const SoPickedPoint& other)
    : m_path(other.m_path),
      m_objectToWorld(other.m_objectToWorld),
      m_distance(other.m_distance),
      m_objectPoint(other.m_objectPoint),
      m_objectNormal(other.m_objectNormal),
      m_texCoord(other.m_texCoord),
      m_detail(other.m_detail ? other.m_detail->clone() : nullptr)
{
    for (const OfNode& one : other.m_ofNodes)
        addDetail(one.node, one.detail->clone(), one.toWorld);
}

SoPickedPoint& SoPickedPoint::operator=(const SoPickedPoint& other)
{
    SoPickedPoint copy(other);
    return *this = std::move(copy);
}

SbVec3f SoPickedPoint::getNormal() const
{
    return transformNormal(m_objectNormal, m_objectToWorld.inverse());
}

SbVec3f SoPickedPoint::getObjectPoint(const SoNode* node) const
{
    return node ? getWorldToObject(node).point(getPoint()) : m_objectPoint;
}

SbVec3f SoPickedPoint::getObjectNormal(const SoNode* node) const
{
    return node ? transformNormal(getNormal(), getObjectToWorld(node)) : m_objectNormal;
}

const SoPickedPoint::OfNode* SoPickedPoint::findDetail(const SoNode* node) const
{
    const auto at = std::find_if(m_ofNodes.begin(), m_ofNodes.end(),
                                 [node](const OfNode& one) { return one.node == node; });
    return at == m_ofNodes.end() ? nullptr : &*at;
}

const SoDetail* SoPickedPoint::getDetail(const SoNode* node) const
{
    if (!node || node == m_path->getTail())
        return m_detail.get();
    const OfNode* found = findDetail(node);
    return found ? found->detail.get() : nullptr;
}

void SoPickedPoint::addDetail(const SoNode* node, std::unique_ptr<SoDetail> detail,
                              const SbMatrix& toWorld)
{
    m_ofNodes.push_back({node, std::move(detail), toWorld});
}

SbMatrix SoPickedPoint::getObjectToWorld(const SoNode* node) const
{
    if (!node || node == m_path->getTail())
        return m_objectToWorld;
    const int length = m_path->getLength();
    int at = 0;
    bool isInCopy = false;
    while (at < length && m_path->getNode(at) != node)
        isInCopy = findDetail(m_path->getNode(at++)) || isInCopy;
    if (!kalmyr::holds(at < length, "a node of the picked path"))
        return m_objectToWorld;
    if (const OfNode* own = findDetail(node))
        return own->toWorld;
    const auto matrixAt = [this](int i) {
        SoGetMatrixAction action;
        action.apply(m_path->copy(0, i + 1));
        return action.getMatrix();
    };
    if (!isInCopy)
        return matrixAt(at);
    // The path leads to the first of copies: what is known of the copy that was hit is the matrix
    // of something further down.
    int below = at + 1;
    while (below < length - 1 && !findDetail(m_path->getNode(below)))
        ++below;
    const OfNode* known = findDetail(m_path->getNode(below));
    return matrixAt(at) * matrixAt(below).inverse() * (known ? known->toWorld : m_objectToWorld);
}

SbMatrix SoPickedPoint::getWorldToObject(const SoNode* node) const
{
    return getObjectToWorld(node).inverse();
}
