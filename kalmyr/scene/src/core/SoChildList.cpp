#include <kalmyr/core/SoChildList.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include "core/CacheLock.h"
#include "core/LastRites.h"
#include "core/NodeFields.h"
#include "core/WalkStack.h"

#include <algorithm>

SoChildList::~SoChildList()
{
    if (m_nodes.empty())
        return;
    for (SoNode* node : m_nodes)
        node->removeAuditor(this);
    kalmyr::detail::releaseInTurn(m_nodes);
}

void SoChildList::addPath(SoPath* path)
{
    const kalmyr::detail::CacheLock lock; // readers make paths
    if (!m_paths)
        m_paths = std::make_unique<SoAuditorList>();
    m_paths->append(path, SoAuditor::PATH);
}

void SoChildList::removePath(SoPath* path)
{
    const kalmyr::detail::CacheLock lock;
    if (!m_paths)
        return;
    m_paths->remove(path);
    if (m_paths->getLength() == 0)
        m_paths.reset();
}

void SoChildList::tellPaths(PathMethod method, int index)
{
    // From the back: a path that ends here leaves the list, and the last entry takes its place.
    for (int i = m_paths ? m_paths->getLength() - 1 : -1; m_paths && i >= 0; --i)
        (static_cast<SoPath*>(m_paths->getObject(i))->*method)(*this, index);
}

int SoChildList::find(const SoNode* child) const
{
    const auto at = std::find(m_nodes.begin(), m_nodes.end(), child);
    return at == m_nodes.end() ? -1 : static_cast<int>(at - m_nodes.begin());
}

bool SoChildList::accepts(const SoNode* child) const
{
    if (!child) {
        SoDebugError::post("SoChildList", "a null child is refused");
        return false;
    }
    if (!kalmyr::detail::mayBeAtOrAbove(child, m_parent) || !m_parent->isAtOrBelow(child))
        return true;
    return refuse(child);
}

bool SoChildList::acceptsAll(const std::vector<SoNode*>& children) const
{
    if (children.size() < 2)
        return children.empty() || accepts(children.front());
    const auto above = m_parent->getAllAtOrAbove();
    return std::all_of(children.begin(), children.end(), [&](const SoNode* child) {
        return child ? !above.count(child) || refuse(child) : accepts(child);
    });
}

bool SoChildList::refuse(const SoNode* child) const
{
    SoDebugError::post("SoChildList", "%s \"%s\" cannot be a child of %s \"%s\": it holds it",
                       child->getTypeId().getName().getString(), child->getName().getString(),
                       m_parent->getTypeId().getName().getString(),
                       m_parent->getName().getString());
    return false;
}

void SoChildList::adopt(SoNode* child)
{
    child->ref();
    child->addAuditor(this, SoAuditor::PARENT);
}

void SoChildList::tell(SoNotification::Kind kind, SoNode* child, int index)
{
    SoNotification notification;
    notification.kind = kind;
    notification.container = m_parent;
    notification.child = child;
    notification.index = index;
    if (!m_field) {
        notification.send(m_parent);
        return;
    }
    m_field->setDefault(false);
    notification.field = m_field;
    notification.sendFrom(m_field);
}

bool SoChildList::append(SoNode* child)
{
    if (!accepts(child))
        return false;
    adopt(child);
    m_nodes.push_back(child);
    tell(SoNotification::CHILD_ADDED, child, getLength() - 1);
    return true;
}

bool SoChildList::insert(SoNode* child, int index)
{
    if (index < 0 || index > getLength()) {
        SoDebugError::post("SoChildList::insert", "index %d is out of the range 0 to %d", index,
                           getLength());
        return false;
    }
    if (index == getLength())
        return append(child);
    if (!accepts(child))
        return false;
    adopt(child);
    m_nodes.insert(m_nodes.begin() + index, child);
    tellPaths(&SoPath::childInserted, index);
    tell(SoNotification::CHILD_INSERTED, child, index);
    return true;
}

bool SoChildList::remove(int index)
{
    if (index < 0 || index >= getLength()) {
        SoDebugError::post("SoChildList::remove", "index %d is out of the range 0 to %d", index,
                           getLength() - 1);
        return false;
    }
    SoNode* child = m_nodes[static_cast<std::size_t>(index)];
    m_nodes.erase(m_nodes.begin() + index);
    child->removeAuditor(this);
    tellPaths(&SoPath::childRemoved, index);
    tell(SoNotification::CHILD_REMOVED, child, index);
    child->unref(); // after everybody heard of it
    return true;
}

bool SoChildList::set(int index, SoNode* child)
{
    if (index < 0 || index >= getLength()) {
        SoDebugError::post("SoChildList::set", "index %d is out of the range 0 to %d", index,
                           getLength() - 1);
        return false;
    }
    if (!accepts(child))
        return false;
    SoNode* old = m_nodes[static_cast<std::size_t>(index)];
    adopt(child);
    m_nodes[static_cast<std::size_t>(index)] = child;
    old->removeAuditor(this);
    tellPaths(&SoPath::childReplaced, index);
    tell(SoNotification::CHILD_REPLACED, child, index);
    old->unref();
    return true;
}

void SoChildList::truncate()
{
    if (!m_nodes.empty())
        assign({});
}

bool SoChildList::assign(const std::vector<SoNode*>& children)
{
    if (!acceptsAll(children))
        return false;
    for (SoNode* child : children)
        adopt(child);
    std::vector<SoNode*> old = children;
    old.swap(m_nodes);
    for (SoNode* node : old)
        node->removeAuditor(this);
    tellPaths(&SoPath::childrenChanged, -1);
    tell(SoNotification::ALL_REMOVED, nullptr, -1);
    for (SoNode* node : old)
        node->unref();
    return true;
}

void SoChildList::auditedChanged(SoNotification& notification)
{
    kalmyr::detail::passUp(notification, [&] {
        if (m_field)
            m_field->auditedChanged(notification);
        else
            m_parent->notify(notification);
    });
}
