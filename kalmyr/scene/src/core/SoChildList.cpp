#include <kalmyr/core/SoChildList.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include "core/CacheLock.h"
#include "core/ChildIndex.h"
#include "core/LastRites.h"
#include "core/NodeFields.h"
#include "core/WalkMarks.h"
#include "core/WalkStack.h"

#include <algorithm>
#include <optional>

struct SoChildList::Beside {
    std::unique_ptr<SoAuditorList> paths; ///< null when there is none
    std::optional<kalmyr::detail::ChildIndex> index;
    std::size_t numPassed = 0; ///< children that searches passed without an index
};

namespace {

/// Shorter lists are searched one by one.
constexpr std::size_t kLong = 256;
/// An index is made when searches have passed so many times the number of children: making it takes
/// about that time.
constexpr std::size_t kPassedPerChild = 32;

/// The reference stays for the moment.
void part(SoChildList* list, SoNode* child)
{
    child->removeAuditor(list);
    kalmyr::detail::endShortcuts(*child);
}

int findFirst(const std::vector<SoNode*>& nodes, const SoNode* child)
{
    const auto at = std::find(nodes.begin(), nodes.end(), child);
    return at == nodes.end() ? -1 : static_cast<int>(at - nodes.begin());
}

} // namespace

SoChildList::SoChildList(SoNode* parent) : m_parent(parent) {}

SoChildList::~SoChildList()
{
    if (m_nodes.empty())
        return;
    for (SoNode* node : m_nodes)
        part(this, node);
    kalmyr::detail::releaseInTurn(m_nodes);
}

SoChildList::Beside& SoChildList::beside() const
{
    if (!m_beside)
        m_beside = std::make_unique<Beside>();
    return *m_beside;
}

void SoChildList::addPath(SoPath* path)
{
    const kalmyr::detail::CacheLock lock; // readers make paths
    std::unique_ptr<SoAuditorList>& paths = beside().paths;
    if (!paths)
        paths = std::make_unique<SoAuditorList>();
    paths->append(path, SoAuditor::PATH);
}

void SoChildList::removePath(SoPath* path)
{
    const kalmyr::detail::CacheLock lock;
    if (!m_beside || !m_beside->paths)
        return;
    m_beside->paths->remove(path);
    if (m_beside->paths->getLength() > 0)
        return;
    m_beside->paths.reset();
    if (!m_beside->index && m_beside->numPassed == 0)
        m_beside.reset();
}

void SoChildList::tellPaths(PathMethod method, int index)
{
    const auto paths = [this] { return m_beside ? m_beside->paths.get() : nullptr; };
    // From the back: a path that ends here leaves the list, and the last entry takes its place.
    for (int i = paths() ? paths()->getLength() - 1 : -1; paths() && i >= 0; --i)
        (static_cast<SoPath*>(paths()->getObject(i))->*method)(*this, index);
}

int SoChildList::find(const SoNode* child) const
{
    return m_nodes.size() < kLong ? findFirst(m_nodes, child) : findInLong(child);
}

int SoChildList::findInLong(const SoNode* child) const
{
    const kalmyr::detail::CacheLock lock; // threads that read the graph ask
    Beside& known = beside();
    if (known.index && known.index->isWorn(m_nodes.size()))
        known.index.reset();
    if (!known.index) {
        if (known.numPassed < kPassedPerChild * m_nodes.size()) {
            const int at = findFirst(m_nodes, child);
            known.numPassed += at < 0 ? m_nodes.size() : static_cast<std::size_t>(at);
            return at;
        }
        known.index.emplace(m_nodes);
    }
    return known.index->find(child, m_nodes);
}

void SoChildList::dropIndex()
{
    if (!m_beside)
        return;
    m_beside->index.reset();
    m_beside->numPassed = 0;
}

bool SoChildList::isFieldWatched() const
{
    return m_field && m_field->getAuditors().getLength() > 0;
}

bool SoChildList::accepts(const SoNode* child) const
{
    if (!kalmyr::holds(child, "a child"))
        return false;
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
    child->joinHolder(m_parent, isFieldWatched() ? m_field : nullptr); // all are told in any case
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
    if (m_beside && m_beside->index)
        m_beside->index->inserted(child, getLength() - 1, getLength());
    tell(SoNotification::CHILD_ADDED, child, getLength() - 1);
    return true;
}

bool SoChildList::insert(SoNode* child, int index)
{
    if (!kalmyr::holds(index >= 0 && index <= getLength(), "0 <= index <= getLength()"))
        return false;
    if (index == getLength())
        return append(child);
    if (!accepts(child))
        return false;
    adopt(child);
    m_nodes.insert(m_nodes.begin() + index, child);
    if (m_beside && m_beside->index)
        m_beside->index->inserted(child, index, getLength());
    tellPaths(&SoPath::childInserted, index);
    tell(SoNotification::CHILD_INSERTED, child, index);
    return true;
}

bool SoChildList::remove(int index)
{
    if (!kalmyr::holds(index >= 0 && index < getLength(), "0 <= index < getLength()"))
        return false;
    SoNode* child = m_nodes[static_cast<std::size_t>(index)];
    m_nodes.erase(m_nodes.begin() + index);
    if (m_beside && m_beside->index)
        m_beside->index->removed(child, index, getLength());
    part(this, child);
    tellPaths(&SoPath::childRemoved, index);
    tell(SoNotification::CHILD_REMOVED, child, index);
    child->unref(); // after everybody heard of it
    return true;
}

bool SoChildList::set(int index, SoNode* child)
{
    if (!kalmyr::holds(index >= 0 && index < getLength(), "0 <= index < getLength()"))
        return false;
    if (!accepts(child))
        return false;
    SoNode* old = m_nodes[static_cast<std::size_t>(index)];
    adopt(child);
    m_nodes[static_cast<std::size_t>(index)] = child;
    if (m_beside && m_beside->index)
        m_beside->index->replaced(old, child, index);
    part(this, old);
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
    // Equal children at the front and the back of both lists stay as they are.
    const auto front =
        std::mismatch(children.begin(), children.end(), m_nodes.begin(), m_nodes.end());
    const auto numFront = front.first - children.begin();
    const auto back = std::mismatch(children.rbegin(), children.rend() - numFront, m_nodes.rbegin(),
                                    m_nodes.rend() - numFront);
    for (auto at = front.first; at != back.first.base(); ++at)
        adopt(*at);
    const std::vector<SoNode*> gone(front.second, back.second.base());
    m_nodes = children;
    dropIndex();
    for (SoNode* node : gone)
        part(this, node);
    tellPaths(&SoPath::childrenChanged, -1);
    tell(SoNotification::ALL_REMOVED, nullptr, -1);
    for (SoNode* node : gone)
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
