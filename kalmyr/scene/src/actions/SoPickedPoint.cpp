#include <kalmyr/actions/SoPickedPoint.h>

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoNode.h>

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

SbMatrix SoPickedPoint::getObjectToWorld(const SoNode* node) const
{
    if (!node || node == m_path->getTail())
        return m_objectToWorld;
    for (int i = 0; i < m_path->getLength(); ++i) {
        if (m_path->getNode(i) != node)
            continue;
        SoGetMatrixAction action;
        action.apply(m_path->copy(0, i + 1));
        return action.getMatrix();
    }
    static_cast<void>(kalmyr::holds(false, "a node of the picked path"));
    return m_objectToWorld;
}

SbMatrix SoPickedPoint::getWorldToObject(const SoNode* node) const
{
    return getObjectToWorld(node).inverse();
}
