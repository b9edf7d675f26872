#include <kalmyr/nodes/SoSelection.h>

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/events/SoMouseButtonEvent.h>

#include <algorithm>

namespace {

constexpr SoEnumEntry kPolicies[] = {
    {"SINGLE", SoSelection::SINGLE},
    {"TOGGLE", SoSelection::TOGGLE},
    {"SHIFT", SoSelection::SHIFT},
};

template <class List, class Function>
void removeCallback(List& list, Function* function, void* userData)
{
    const typename List::value_type entry{function, userData};
    const auto at = std::find(list.begin(), list.end(), entry);
    if (at != list.end())
        list.erase(at);
}

/// Calls a copy of the list, since callbacks may add and remove callbacks.
template <class List, class Argument>
void callAll(const List& list, Argument* argument)
{
    for (const auto& callback : List(list))
        callback.function(callback.userData, argument);
}

} // namespace

SO_NODE_SOURCE(SoSelection)

SoSelection::SoSelection()
{
    SO_NODE_CONSTRUCTOR(SoSeparator);
    SO_ADD_FIELD(policy, (SHIFT));
    policy.setEnums(kPolicies);
}

SoSelection::~SoSelection() = default;

// A path holds every node on it, and those of the list begin at the selection node: it would keep
// itself alive. So that reference is given back while a path is in the list.

/// Keeps the node, which may have no reference yet, alive while callbacks run.
class SoSelection::Guard {
public:
    explicit Guard(const SoSelection* node) : m_node(node), m_isHeld(node->getRefCount() > 0)
    {
        m_node->ref();
    }
    ~Guard() { m_isHeld ? m_node->unref() : m_node->unrefNoDelete(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    const SoSelection* m_node;
    bool m_isHeld;
};

void SoSelection::destroy()
{
    ref();
    for (Selected& selected : m_paths) {
        ref();
        selected.path->truncate(0); // somebody else may hold the path
    }
    m_paths.clear();
    unrefNoDelete();
    SoSeparator::destroy();
}

bool SoSelection::noteChange(const SoNotification& notification)
{
    if (notification.kind != SoNotification::UNSPECIFIED) {
        const auto isCut = [](const Selected& s) { return s.path->getLength() != s.length; };
        const auto cut = std::stable_partition(m_paths.begin(), m_paths.end(), std::not_fn(isCut));
        for (auto at = cut; at != m_paths.end(); ++at)
            ref();
        m_selectionId += static_cast<std::uint64_t>(m_paths.end() - cut);
        m_paths.erase(cut, m_paths.end());
    }
    SoSeparator::noteChange(notification);
    return true;
}

void SoSelection::initClass()
{
    SO_NODE_INIT_CLASS(SoSelection, SoSeparator, "Selection");
    SoHandleEventAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoSelection*>(node)->handleEvent(static_cast<SoHandleEventAction*>(action));
    });
}

SoRef<SoPath> SoSelection::ownPath(const SoPath* path, const char*) const
{
    for (int i = 0; path && i < path->getLength(); ++i) {
        if (path->getNode(i) == this)
            return path->copy(i);
    }
    static_cast<void>(kalmyr::holds(false, "a path that leads through the selection node"));
    return nullptr;
}

SoRef<SoPath> SoSelection::pathTo(SoNode* node)
{
    if (!kalmyr::holds(node, "a node"))
        return nullptr;
    SoSearchAction search;
    search.setNode(node);
    search.setSearchingAll(true);
    search.apply(this);
    return search.getPath();
}

int SoSelection::find(const SoPath* path) const
{
    const auto at = std::find_if(m_paths.begin(), m_paths.end(),
                                 [path](const Selected& s) { return *s.path == *path; });
    return at == m_paths.end() ? -1 : static_cast<int>(at - m_paths.begin());
}

void SoSelection::add(SoRef<SoPath> path)
{
    m_paths.push_back({path, path->getLength()});
    unrefNoDelete();
    ++m_selectionId;
    callAll(m_onSelect, path.get());
}

void SoSelection::removeAt(int index)
{
    const SoRef<SoPath> path = m_paths[static_cast<std::size_t>(index)].path;
    ref();
    m_paths.erase(m_paths.begin() + index);
    ++m_selectionId;
    callAll(m_onDeselect, path.get());
}

void SoSelection::clear()
{
    // Taken out first: a callback that selects something starts with an empty list.
    std::vector<Selected> old;
    old.swap(m_paths);
    m_selectionId += old.size();
    for (std::size_t i = 0; i < old.size(); ++i)
        ref();
    for (const Selected& selected : old)
        callAll(m_onDeselect, selected.path.get());
}

void SoSelection::announceChange(std::uint64_t before)
{
    if (before != m_selectionId)
        callAll(m_onChange, this);
}

void SoSelection::select(const SoPath* path)
{
    const Guard self(this); // a callback may let go of the node
    const SoRef<SoPath> own = ownPath(path, "SoSelection::select");
    if (!own || find(own.get()) >= 0)
        return;
    const std::uint64_t before = m_selectionId;
    add(own);
    announceChange(before);
}

void SoSelection::select(SoNode* node)
{
    const Guard self(this);
    if (const SoRef<SoPath> path = pathTo(node))
        select(path.get());
}

void SoSelection::deselect(const SoPath* path)
{
    const Guard self(this);
    const SoRef<SoPath> own = ownPath(path, "SoSelection::deselect");
    const int index = own ? find(own.get()) : -1;
    if (index >= 0)
        deselect(index);
}

void SoSelection::deselect(int index)
{
    if (!kalmyr::holds(index >= 0 && index < getNumSelected(), "0 <= index < getNumSelected()"))
        return;
    const Guard self(this);
    const std::uint64_t before = m_selectionId;
    removeAt(index);
    announceChange(before);
}

void SoSelection::deselect(SoNode* node)
{
    const auto at = std::find_if(m_paths.begin(), m_paths.end(),
                                 [node](const Selected& s) { return s.path->getTail() == node; });
    if (at != m_paths.end())
        deselect(static_cast<int>(at - m_paths.begin()));
}

void SoSelection::toggle(const SoPath* path)
{
    const Guard self(this);
    const SoRef<SoPath> own = ownPath(path, "SoSelection::toggle");
    if (!own)
        return;
    const int index = find(own.get());
    if (index >= 0)
        deselect(index);
    else
        select(own.get());
}

void SoSelection::toggle(SoNode* node)
{
    const Guard self(this);
    if (const SoRef<SoPath> path = pathTo(node))
        toggle(path.get());
}

void SoSelection::deselectAll()
{
    const Guard self(this);
    const std::uint64_t before = m_selectionId;
    clear();
    announceChange(before);
}

bool SoSelection::isSelected(const SoPath* path) const
{
    const Guard self(this);
    const SoRef<SoPath> own = ownPath(path, "SoSelection::isSelected");
    return own && find(own.get()) >= 0;
}

bool SoSelection::isSelected(const SoNode* node) const
{
    return std::any_of(m_paths.begin(), m_paths.end(),
                       [node](const Selected& s) { return s.path->getTail() == node; });
}

SoPath* SoSelection::getPath(int index) const
{
    if (!kalmyr::holds(index >= 0 && index < getNumSelected(), "0 <= index < getNumSelected()"))
        return nullptr;
    return m_paths[static_cast<std::size_t>(index)].path.get();
}

void SoSelection::addSelectionCallback(PathFunction* function, void* userData)
{
    if (function)
        m_onSelect.push_back({function, userData});
}

void SoSelection::removeSelectionCallback(PathFunction* function, void* userData)
{
    removeCallback(m_onSelect, function, userData);
}

void SoSelection::addDeselectionCallback(PathFunction* function, void* userData)
{
    if (function)
        m_onDeselect.push_back({function, userData});
}

void SoSelection::removeDeselectionCallback(PathFunction* function, void* userData)
{
    removeCallback(m_onDeselect, function, userData);
}

void SoSelection::addChangeCallback(ChangeFunction* function, void* userData)
{
    if (function)
        m_onChange.push_back({function, userData});
}

void SoSelection::removeChangeCallback(ChangeFunction* function, void* userData)
{
    removeCallback(m_onChange, function, userData);
}

void SoSelection::setPickFilterCallback(PickFilter* function, void* userData)
{
    m_filter = function;
    m_filterData = userData;
}

void SoSelection::applyPick(const SoPath* picked, bool shiftDown)
{
    const Guard self(this);
    SoRef<SoPath> own = picked ? ownPath(picked, "SoSelection::applyPick") : SoRef<SoPath>();
    if (own && m_filter) {
        own = m_filter(m_filterData, own.get());
        if (own)
            own = ownPath(own.get(), "SoSelection::applyPick");
        if (!own)
            return; // the filter wants this pick to change nothing
    }
    const bool toggling = policy.getValue() == TOGGLE || (policy.getValue() == SHIFT && shiftDown);
    if (toggling) {
        if (own)
            toggle(own.get());
        return;
    }
    if (own && getNumSelected() == 1 && find(own.get()) == 0)
        return;
    const std::uint64_t before = m_selectionId;
    clear();
    if (own && find(own.get()) < 0)
        add(own);
    announceChange(before);
}

void SoSelection::handleEvent(SoHandleEventAction* action)
{
    doAction(action);
    const SoEvent* event = action->getEvent();
    if (action->isHandled()
        || !SoMouseButtonEvent::isPressEvent(event, SoMouseButtonEvent::BUTTON1))
        return;
    const SoPickedPoint* point = action->getPickedPoint();
    const SoPath* picked =
        point && point->getPath()->containsNode(this) ? point->getPath() : nullptr;
    applyPick(picked, event->wasShiftDown());
    if (picked)
        action->setHandled();
}
