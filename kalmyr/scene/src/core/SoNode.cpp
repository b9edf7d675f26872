#include <kalmyr/core/SoNode.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/core/SoNodeCopier.h>

#include "core/CacheLock.h"
#include "core/ChildChanges.h"
#include "core/NodeFields.h"
#include "core/WalkMarks.h"
#include "core/WalkShortcuts.h"

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

SoType s_nodeType;

std::unordered_map<const SoNode*, SbName>& netNames()
{
    static auto* names = new std::unordered_map<const SoNode*, SbName>;
    return *names;
}

/// The container that holds an object through this auditor, or null.
const SoFieldContainer* holderOf(const SoAuditorList::Entry& entry)
{
    if (entry.type == SoAuditor::PARENT)
        return static_cast<const SoChildList*>(entry.auditor)->getParent();
    if (entry.type == SoAuditor::FIELD)
        return static_cast<const SoField*>(entry.auditor)->getContainer();
    return nullptr;
}

/// A step up costs less than one down.
constexpr int kUpPerDown = 8;

/// All that is above a container, one by one and each once.
class Upwards {
public:
    explicit Upwards(const SoFieldContainer* bottom) { m_open.push_back({bottom, 0}); }

    const SoFieldContainer* next()
    {
        while (!m_open.empty()) {
            Place& at = m_open.back();
            const SoAuditorList& auditors = at.container->getAuditors();
            if (at.entry >= auditors.getLength()) {
                m_open.pop_back();
                continue;
            }
            const SoFieldContainer* holder = holderOf(auditors[at.entry++]);
            // Lines that have parted may meet again.
            const bool maySee = auditors.getLength() > 1 || !m_seen.empty();
            if (!holder || (maySee && !m_seen.insert(holder).second))
                continue;
            m_open.push_back({holder, 0});
            return holder;
        }
        return nullptr;
    }

private:
    struct Place {
        const SoFieldContainer* container;
        int entry;
    };
    std::vector<Place> m_open;
    std::unordered_set<const SoFieldContainer*> m_seen;
};

/// All that is below a node, one by one and each once.
class Downwards {
public:
    explicit Downwards(const SoNode* top) { m_open.push_back({top}); }

    const SoFieldContainer* next()
    {
        while (!m_open.empty()) {
            const SoFieldContainer* held = kalmyr::detail::nextHeld(m_open.back());
            if (!held) {
                m_open.pop_back();
                continue;
            }
            if (held->getAuditors().getLength() > 1 && !m_seen.insert(held).second)
                continue;
            m_open.push_back({held});
            return held;
        }
        return nullptr;
    }

private:
    std::vector<kalmyr::detail::HeldPlace> m_open;
    std::unordered_set<const SoFieldContainer*> m_seen;
};

} // namespace

SoType SoNode::getClassTypeId()
{
    return s_nodeType;
}

void SoNode::initClass()
{
    s_nodeType = SoType::createType(SoFieldContainer::getClassTypeId(), SbName("Node"));
}

SoNode::~SoNode()
{
    if (kalmyr::detail::WalkMarks::has(*this, kalmyr::detail::WalkMarks::kWatchesChildren))
        kalmyr::detail::ChildChanges::forget(*this);
    if (m_nodeFlags & kHasNetName) {
        const kalmyr::detail::CacheLock lock;
        netNames().erase(this);
    }
    SoForeignFields::forget(this);
}

namespace {

using kalmyr::detail::WalkMarks;
using kalmyr::detail::WalkShortcuts;

struct WalkLink : SoNotification::Link {
    bool mustHear;    ///< the node returned true from noteChange()
    bool hasShortcut; ///< the walk went on from the node by one
};

/// The links of a walk. Most are short; those of a deep graph are taken from the heap, since there
/// is no end to how many there are.
class Links {
public:
    const WalkLink* add(const WalkLink& link)
    {
        if (m_next == m_end) [[unlikely]]
            reserve();
        *m_next = link;
        return m_next++;
    }
    /// Whether there are more than a walk of usual length has.
    bool areMany() const { return !m_more.empty() || m_next > m_few + kUsual; }

private:
    static constexpr std::size_t kUsual = 12;
    static constexpr std::size_t kFew = 24;
    static constexpr std::size_t kMany = 2048;

    void reserve()
    {
        m_more.push_back(std::make_unique_for_overwrite<WalkLink[]>(kMany));
        m_next = m_more.back().get();
        m_end = m_next + kMany;
    }

    WalkLink m_few[kFew];
    WalkLink* m_next = m_few;
    WalkLink* m_end = m_few + kFew;
    std::vector<std::unique_ptr<WalkLink[]>> m_more;
};

/// Tells the auditors of a node. Where that is one child list and nobody else, only returns the
/// parent, which is to be told next: most graphs are trees, and may be of any depth.
SoNode* tellHolders(const SoAuditorList& auditors, SoNotification& notification)
{
    const SoAuditorList::Entry* only = auditors.getOnly();
    if (only && only->type == SoAuditor::PARENT) {
        const auto* list = static_cast<const SoChildList*>(only->auditor);
        if (!list->isFieldWatched())
            return list->getParent();
    }
    const bool anyListens = auditors.notify(notification);
    notification.heard = notification.heard || anyListens;
    return nullptr;
}

/// Remembers, on the way back down, where later walks may take shortcuts: up to the uppermost one
/// of those that a walk passes without telling anybody.
class ShortcutKeeper {
public:
    ShortcutKeeper(const SoNotification::Link* start, std::uint64_t stamp)
        : m_start(start), m_stamp(stamp)
    {
    }
    /// `isPassed`: somebody listens above, and only the parent, or those that it tells, at the
    /// node.
    void pass(const WalkLink& link, bool isPassed)
    {
        auto* node = static_cast<SoNode*>(link.container);
        if (isPassed) {
            WalkMarks::set(*node, WalkMarks::kPassed);
            if (!m_top)
                m_top = node;
            else if (link.hasShortcut || isAtTheBottom(link))
                WalkShortcuts::put(node, m_stamp, m_top);
        }
        if (!isPassed || link.mustHear)
            m_top = nullptr;
    }

private:
    /// The next change mostly happens where the last one did, or beside or below it.
    bool isAtTheBottom(const WalkLink& link) const
    {
        return link.below == m_start || link.below->below == m_start;
    }

    const SoNotification::Link* m_start;
    std::uint64_t m_stamp;
    SoNode* m_top = nullptr;
};

} // namespace

constinit thread_local std::array<WalkShortcuts::Shortcut, std::size_t{1} << WalkShortcuts::kBits>
    WalkShortcuts::t_shortcuts{};

SoFieldContainer& WalkShortcuts::asContainer(SoNode* node)
{
    return *node;
}

void SoNode::notify(SoNotification& notification)
{
    Links links;
    const SoNotification::Link* const start = notification.chain;
    const bool heardElsewhere = std::exchange(notification.heard, false);
    SoNode* shortcut = nullptr; // the node was reached by one
    bool anyShortcut = false;
    SoNode* node = this;
    while (node) {
        // One that a shortcut leads to has heard already of a change that came by the same child.
        const bool mustHear = !shortcut && node->noteChange(notification);
        if (WalkMarks::has(*node, WalkMarks::kWatchesChildren) && !shortcut) [[unlikely]]
            kalmyr::detail::ChildChanges::note(*node, notification);
        if (node->m_changeId == notification.stamp) {
            notification.heard = mustHear || !node->m_unheard; // it came by another way
            break;
        }
        WalkMarks::set(*node, WalkMarks::kAsked);
        if (mustHear && node->m_unheard)
            SoNotification::repeatWalks(); // the first time: those below take it for any other
        const bool isFresh = !SoNotification::isRepeated(node->m_changeId);
        if (!isFresh)
            WalkMarks::set(*node, WalkMarks::kPassed, false); // what relied on it is out of use
        const bool endsHere = !mustHear && isFresh && node->m_unheard;
        if (!endsHere && !node->isNotifyEnabled()) {
            node->SoFieldContainer::notify(notification); // keeps it to itself
            node->m_unheard = !mustHear;
            notification.heard = mustHear;
            break;
        }
        const std::uint64_t before = std::exchange(node->m_changeId, notification.stamp);
        if (endsHere)
            break;
        node->m_unheard = false; // until it is known
        shortcut = isFresh ? WalkShortcuts::find(node, before) : nullptr;
        anyShortcut = anyShortcut || shortcut;
        notification.chain = links.add({{node, notification.chain}, mustHear, shortcut != nullptr});
        node = shortcut ? shortcut : tellHolders(node->getAuditors(), notification);
    }
    const bool isLong = anyShortcut || links.areMany();
    bool isOnly = node; // the last one has nobody but its parent to tell
    ShortcutKeeper keeper(start, notification.stamp);
    for (; notification.chain != start; notification.chain = notification.chain->below) {
        const auto& link = static_cast<const WalkLink&>(*notification.chain);
        notification.heard = notification.heard || link.mustHear;
        static_cast<SoNode*>(link.container)->m_unheard = !notification.heard;
        if (isLong)
            keeper.pass(link, notification.heard && isOnly);
        isOnly = true;
    }
    notification.heard = notification.heard || heardElsewhere;
}

void SoNode::setOverride(bool on)
{
    if (on == isOverride())
        return;
    m_nodeFlags =
        static_cast<std::uint8_t>(on ? m_nodeFlags | kOverride : m_nodeFlags & ~kOverride);
    touch();
}

bool SoNode::isAtOrBelow(const SoNode* ancestor) const
{
    if (ancestor == this)
        return true;
    const kalmyr::detail::CacheLock lock; // paths of other readers come and go
    Upwards up(this);
    Downwards down(ancestor);
    // From both ends, so that neither a long way up nor much below costs more than the other.
    for (;;) {
        for (int i = 0; i < kUpPerDown; ++i)
            if (const SoFieldContainer* above = up.next(); !above)
                return false;
            else if (above == ancestor)
                return true;
        if (const SoFieldContainer* below = down.next(); !below)
            return false;
        else if (below == this)
            return true;
    }
}

std::unordered_set<const SoFieldContainer*> SoNode::getAllAtOrAbove() const
{
    const kalmyr::detail::CacheLock lock;
    std::unordered_set<const SoFieldContainer*> found{this};
    std::vector<const SoFieldContainer*> open{this};
    while (!open.empty()) {
        const SoAuditorList& auditors = open.back()->getAuditors();
        open.pop_back();
        for (int i = 0; i < auditors.getLength(); ++i) {
            const SoFieldContainer* holder = holderOf(auditors[i]);
            if (holder && found.insert(holder).second)
                open.push_back(holder);
        }
    }
    return found;
}

bool SoNode::acceptsValue(const SoField&, const SoNode*, SbString&) const
{
    return true;
}

SoFieldContainer* SoNode::createTwin() const
{
    return create(getTypeId());
}

SoNode* SoNode::copy(bool copyConnections) const
{
    SoNodeCopier copier(copyConnections);
    return copier.copyOf(this);
}

namespace {

/// A field that is bound to the list may have filled it already; what else stands there was made by
/// the constructor of the copy.
void copyChildren(SoChildList& children, const SoChildList& sources, SoNodeCopier& copier)
{
    std::vector<SoNode*> copies;
    copies.reserve(sources.getNodes().size());
    std::vector<SoRef<SoNode>> held;
    for (const SoNode* child : sources.getNodes()) {
        SoNode* copy = copier.copyOf(child);
        if (copy)
            held.emplace_back(copies.emplace_back(copy));
        else
            SoDebugError::post("SoNode::copy", "a %s cannot be copied and is left out",
                               child->getTypeId().getName().getString());
    }
    if (copies != children.getNodes())
        children.assign(copies);
}

} // namespace

void SoNode::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    const bool ownsNoParts = getInternalChildren() == getChildren();
    const SoFieldData* data = getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        SoField* to = data->getField(this, i);
        const SoField* source = data->getField(from, i);
        // A default node may have been edited, and the constructor of the copy made one, too.
        const bool holdsOthers =
            ownsNoParts && kalmyr::detail::isNodeField(source->getTypeId()) && !to->isSame(*source);
        if (!source->isDefault() || source->isIgnored() || holdsOthers)
            to->copyWith(copier, *source);
        to->setDefault(source->isDefault());
        to->setIgnored(source->isIgnored());
    }
    if (!from->getName().isEmpty())
        setName(from->getName());
    m_nodeFlags =
        static_cast<std::uint8_t>((m_nodeFlags & ~kOverride) | (from->m_nodeFlags & kOverride));
    SoForeignFields::copy(from, this, copier);
    if (SoChildList* children = getChildren(); children && from->getChildren())
        copyChildren(*children, *from->getChildren(), copier);
}

const SbName& SoNode::getNetName() const
{
    static const SbName none;
    if (!(m_nodeFlags & kHasNetName))
        return none;
    const kalmyr::detail::CacheLock lock; // the name itself stays in its place
    return netNames().at(this);
}

void SoNode::setNetName(const SbName& name)
{
    const kalmyr::detail::CacheLock lock; // threads name what they read or make
    if (name.isEmpty()) {
        netNames().erase(this);
        m_nodeFlags = static_cast<std::uint8_t>(m_nodeFlags & ~kHasNetName);
        return;
    }
    netNames()[this] = name;
    m_nodeFlags |= kHasNetName;
}

SoNode* SoNode::create(SoType type)
{
    if (!type.isDerivedFrom(getClassTypeId()))
        return nullptr;
    return static_cast<SoNode*>(type.createInstance());
}

SoNode* SoNode::getByName(const SbName& name)
{
    return static_cast<SoNode*>(getNamedBase(name, getClassTypeId()));
}
