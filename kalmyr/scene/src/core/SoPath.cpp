#include <kalmyr/core/SoPath.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>

#include <algorithm>

namespace {

SoType s_pathType;

} // namespace

SoType SoPath::getClassTypeId()
{
    return s_pathType;
}

void SoPath::initClass()
{
    s_pathType = SoType::createType(SoBase::getClassTypeId(), SbName("Path"));
}

SoType SoPath::getTypeId() const
{
    return s_pathType;
}

SoPath::SoPath(SoNode* head)
{
    setHead(head);
}

SoPath::~SoPath()
{
    truncate(0);
}

void SoPath::setHead(SoNode* head)
{
    if (head)
        head->ref(); // first: it may be on the path already
    truncate(0);
    if (!head)
        return;
    m_nodes.push_back(head);
    m_indices.push_back(-1);
}

void SoPath::append(SoNode* node, int index)
{
    node->ref();
    m_nodes.push_back(node);
    m_indices.push_back(m_nodes.size() == 1 ? -1 : index);
}

void SoPath::append(int childIndex)
{
    const SoNode* tail = getTail();
    const SoChildList* children = tail ? tail->getInternalChildren() : nullptr;
    if (children && childIndex >= 0 && childIndex < children->getLength())
        append((*children)[childIndex], childIndex);
}

void SoPath::truncate(int length)
{
    while (getLength() > std::max(length, 0)) {
        SoNode* node = m_nodes.back();
        m_nodes.pop_back();
        m_indices.pop_back();
        node->unref();
    }
}

bool SoPath::containsNode(const SoNode* node) const
{
    return std::find(m_nodes.begin(), m_nodes.end(), node) != m_nodes.end();
}

bool SoPath::containsPath(const SoPath* path) const
{
    if (path->isEmpty())
        return true;
    const auto first = std::find(m_nodes.begin(), m_nodes.end(), path->getHead());
    const auto offset = first - m_nodes.begin();
    if (getLength() - offset < path->getLength())
        return false;
    for (int i = 1; i < path->getLength(); ++i)
        if (getNode(static_cast<int>(offset) + i) != path->getNode(i)
            || getIndex(static_cast<int>(offset) + i) != path->getIndex(i))
            return false;
    return true;
}

SoPath* SoPath::copy(int startFromNodeIndex, int numNodes) const
{
    auto* result = new SoPath;
    const int end =
        numNodes > 0 ? std::min(startFromNodeIndex + numNodes, getLength()) : getLength();
    for (int i = startFromNodeIndex; i < end; ++i)
        result->append(getNode(i), getIndex(i));
    return result;
}
