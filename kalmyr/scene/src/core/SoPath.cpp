#include <kalmyr/core/SoPath.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>

#include "core/CacheLock.h"
#include "core/NodeFields.h"

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
    if (!kalmyr::holds(node && index >= -1, "a node, and an index from -1 on"))
        return;
    node->ref();
    m_nodes.push_back(node);
    m_indices.push_back(m_nodes.size() == 1 ? -1 : index);
    listen(true, getLength() - 1);
}

void SoPath::listen(bool on, int level)
{
    if (level == 0)
        return;
    const kalmyr::detail::CacheLock lock; // readers make paths
    SoNode* above = getNode(level - 1);
    if (getIndex(level) < 0) {
        on ? above->addAuditor(this, PATH) : above->removeAuditor(this);
    } else if (SoChildList* list = above->getInternalChildren()) {
        on ? list->addPath(this) : list->removePath(this);
    }
}

int SoPath::levelIn(const SoChildList& list) const
{
    const auto leads = [&](int i) {
        return m_indices[static_cast<std::size_t>(i)] >= 0
               && m_nodes[static_cast<std::size_t>(i) - 1]->getInternalChildren() == &list;
    };
    // Comparing addresses is much faster than asking each node; few lists are not their owner's.
    const auto parent = std::find(m_nodes.begin(), m_nodes.end(), list.getParent());
    const int level = static_cast<int>(parent - m_nodes.begin()) + 1;
    if (level < getLength() && leads(level))
        return level;
    for (int i = 1; i < getLength(); ++i)
        if (leads(i))
            return i;
    return 0;
}

void SoPath::childInserted(const SoChildList& list, int index)
{
    const int level = levelIn(list);
    if (level > 0 && getIndex(level) >= index)
        ++m_indices[static_cast<std::size_t>(level)];
}

void SoPath::childRemoved(const SoChildList& list, int index)
{
    const int level = levelIn(list);
    if (level == 0)
        return;
    if (getIndex(level) == index)
        truncate(level);
    else if (getIndex(level) > index)
        --m_indices[static_cast<std::size_t>(level)];
}

void SoPath::childReplaced(const SoChildList& list, int index)
{
    const int level = levelIn(list);
    if (level > 0 && getIndex(level) == index && list[index] != getNode(level))
        truncate(level);
}

void SoPath::childrenChanged(const SoChildList& list, int)
{
    const int level = levelIn(list);
    if (level == 0)
        return;
    const int index = getIndex(level);
    if (index < list.getLength() && list[index] == getNode(level))
        return;
    const int place = list.find(getNode(level));
    if (place < 0)
        truncate(level);
    else
        m_indices[static_cast<std::size_t>(level)] = place;
}

void SoPath::auditedChanged(SoNotification& notification)
{
    if (!notification.field)
        return;
    for (int i = 1; i < getLength(); ++i) {
        if (getIndex(i) < 0 && getNode(i - 1) == notification.container
            && !kalmyr::detail::findInNodeFields(getNode(i - 1), getNode(i))) {
            truncate(i);
            return;
        }
    }
}

void SoPath::append(int childIndex)
{
    const SoNode* tail = getTail();
    const SoChildList* children = tail ? tail->getInternalChildren() : nullptr;
    if (kalmyr::holds(children && childIndex >= 0 && childIndex < children->getLength(),
                      "a tail with children, and 0 <= childIndex < their number"))
        append((*children)[childIndex], childIndex);
}

void SoPath::truncate(int length)
{
    if (!kalmyr::holds(length >= 0 && length <= getLength(), "0 <= length <= getLength()"))
        return;
    while (getLength() > length) {
        listen(false, getLength() - 1);
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
    if (!kalmyr::holds(path, "a path"))
        return false;
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
    if (!kalmyr::holds(startFromNodeIndex >= 0 && startFromNodeIndex <= getLength()
                           && numNodes >= 0,
                       "0 <= startFromNodeIndex <= getLength(), and a number of nodes"))
        return result;
    const int rest = getLength() - startFromNodeIndex;
    const int end = startFromNodeIndex + (numNodes > 0 ? std::min(numNodes, rest) : rest);
    for (int i = startFromNodeIndex; i < end; ++i)
        result->append(getNode(i), getIndex(i));
    return result;
}
