// How the traversal records the list of a node, and brings it up to date by its children.
#include "core/ChildChanges.h"
#include "rendering/ClipPlaneElement.h"
#include "rendering/RenderTraversal.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <algorithm>
#include <unordered_set>

namespace kalmyr::detail {

namespace {

/// Lists of nodes with fewer children are made as a whole.
constexpr int kMinParts = 16;
/// Children with effects on the others are visited for each patch; no more than so many.
constexpr int kMaxPrefix = 32;

/// Adds where those children stand, in order; those that left are ignored. False when one of them
/// has an effect on others.
bool findPlaces(const SoChildList& children, int firstFree,
                const std::unordered_set<const SoNode*>& below, std::vector<int>& places)
{
    for (const SoNode* child : below) {
        const int first = children.find(child);
        if (first < 0) {
            continue;
        }
        if (first < firstFree) {
            return false;
        }
        places.push_back(first);
        // Whoever holds it may hold it twice.
        if (child->getAuditors().getLength() > 1) {
            for (int i = first + 1; i < children.getLength(); ++i) {
                if (children[i] == child) {
                    places.push_back(i);
                }
            }
        }
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return true;
}

} // namespace

bool RenderTraversal::hasParts(const SoNode* node)
{
    const SoType type = node->getTypeId();
    return (type == SoSeparator::getClassTypeId() || type == SoSelection::getClassTypeId())
           && node->getChildren()->getLength() >= kMinParts;
}

bool RenderTraversal::hasFewChanges(const SoNode* node, std::uint64_t changeId)
{
    constexpr std::size_t kChildrenPerChange = 8;
    std::vector<ChildChanges::Change> changes;
    return hasParts(node) && ChildChanges::since(*node, changeId, changes)
           && changes.size() * kChildrenPerChange
                  <= static_cast<std::size_t>(node->getChildren()->getLength());
}

/// Visits the node's content as it stands in a list of its own: in the node's space, without lights
/// and planes from outside.
template <class Visit>
void RenderTraversal::visitApart(SoNode* node, RenderList& into, const Visit& visitContent)
{
    RenderList* const outerList = std::exchange(m_list, &into);
    const std::uint8_t outerLayer = std::exchange(m_layer, 0);
    ++m_nesting;
    m_state->push();
    SoModelMatrixElement::makeIdentity(m_state, node);
    m_state->write<SoLightElement>().set(node, nullptr);
    m_state->write<ClipPlaneElement>().set(node, nullptr);
    visitContent();
    m_state->pop();
    --m_nesting;
    m_layer = outerLayer;
    m_list = outerList;
}

void RenderTraversal::record(SoNode* node, std::uint64_t changeId, std::uint64_t stateKey)
{
    const SoRef<RenderList> fresh(new RenderList);
    const bool outer = std::exchange(m_viewDependent, false);
    visitApart(node, *fresh, [&] {
        if (hasParts(node)) {
            visitInParts(node, *fresh);
        } else {
            visit(node);
        }
    });
    fresh->finish();
    ++statistics.listsBuilt;
    const bool unchanged = node->getChangeId() == changeId && !m_action.hasTerminated();
    if (unchanged && !m_viewDependent) {
        m_cache.add(*fresh, node, changeId, stateKey);
    }
    m_cache.note(node, node->getChangeId(), m_frame, m_viewDependent);
    appendList(*fresh);
    m_viewDependent |= outer;
}

/// As the node does it itself.
void RenderTraversal::visitInParts(SoNode* node, RenderList& list)
{
    ChildChanges::watch(*node);
    auto parts = std::make_unique<RenderList::Parts>();
    const SoChildList& children = *node->getChildren();
    m_state->push();
    for (int i = 0; i < children.getLength() && !m_action.hasTerminated(); ++i) {
        const std::size_t before = list.m_entries.size();
        SoNode* const child = children[i];
        m_action.traverse(child, i);
        parts->counts.push_back(static_cast<std::uint32_t>(list.m_entries.size() - before));
        if (child->affectsState()) {
            parts->firstFree = i + 1;
        }
    }
    m_state->pop();
    if (parts->firstFree <= kMaxPrefix) {
        list.m_parts = std::move(parts);
    }
}

/// Makes the changes of the list of children to the parts, and returns in `changed` which children
/// are to be visited, in order. False when a child has an effect on others.
bool RenderTraversal::findChanged(const SoNode& node, RenderList& list, std::vector<int>& changed)
{
    std::vector<ChildChanges::Change> changes;
    if (!ChildChanges::since(node, list.m_changeId, changes)) {
        return false;
    }
    const SoChildList& children = *node.getChildren();
    RenderList::Parts& parts = *list.m_parts;
    std::unordered_set<const SoNode*> below;
    std::vector<char> isNew;
    for (const ChildChanges::Change& change : changes) {
        if (change.kind == ChildChanges::CHANGED) {
            below.insert(change.child);
            continue;
        }
        isNew.resize(parts.counts.size());
        const auto at = static_cast<std::ptrdiff_t>(change.index);
        if (change.index < parts.firstFree) {
            return false;
        }
        if (change.kind == ChildChanges::INSERTED) {
            parts.counts.insert(parts.counts.begin() + at, 0);
            isNew.insert(isNew.begin() + at, 1);
        } else if (change.kind == ChildChanges::REPLACED) {
            isNew[static_cast<std::size_t>(at)] = 1;
        } else {
            clearPart(list, change.index);
            parts.counts.erase(parts.counts.begin() + at);
            isNew.erase(isNew.begin() + at);
        }
    }
    if (children.getLength() != static_cast<int>(parts.counts.size())) {
        return false;
    }
    for (std::size_t i = 0; i < isNew.size(); ++i) {
        if (isNew[i]) {
            changed.push_back(static_cast<int>(i));
        }
    }
    return findPlaces(children, parts.firstFree, below, changed);
}

/// Brings the node's list up to date by visiting only the children that changed.
bool RenderTraversal::patch(SoNode* node, std::uint64_t changeId, std::uint64_t stateKey)
{
    RenderList* const list = m_cache.findOld(node, stateKey);
    if (!list || !list->m_parts || m_nesting >= kMaxNesting) {
        return false;
    }
    const SoRef<RenderList> held(list);
    const bool outer = std::exchange(m_viewDependent, false);
    std::vector<int> changed;
    bool isDone = findChanged(*node, *list, changed);
    if (isDone) {
        const SoRef<RenderList> beside(new RenderList);
        visitApart(node, *beside, [&] { isDone = replaceParts(node, *list, changed); });
    }
    isDone =
        isDone && node->getChangeId() == changeId && !m_action.hasTerminated() && !m_viewDependent;
    m_viewDependent |= outer;
    if (!isDone) {
        m_cache.forget(*list);
        m_patches.push_back({list, 0, 0, false, false});
        return false;
    }
    list->m_changeId = changeId;
    ++statistics.listsPatched;
    m_cache.note(node, changeId, m_frame, false);
    appendList(*list);
    return true;
}

bool RenderTraversal::replaceParts(SoNode* node, RenderList& list, const std::vector<int>& changed)
{
    const SoChildList& children = *node->getChildren();
    m_state->push();
    // What the first children set is seen by the others.
    for (int i = 0; i < list.m_parts->firstFree && !m_action.hasTerminated(); ++i) {
        m_action.traverse(children[i], i);
    }
    const bool isDone = std::all_of(changed.begin(), changed.end(),
                                    [&](int index) { return replacePart(node, list, index); });
    m_state->pop();
    return isDone;
}

bool RenderTraversal::replacePart(SoNode* node, RenderList& list, int index)
{
    SoNode* const child = (*node->getChildren())[index];
    const SoRef<RenderList> fresh(new RenderList);
    RenderList* const outer = std::exchange(m_list, fresh.get());
    m_action.traverse(child, index);
    m_list = outer;
    if (child->affectsState() || !list.canTake(*fresh)) {
        return false;
    }
    const std::size_t first = list.m_parts->firstEntry(index);
    std::uint32_t& count = list.m_parts->counts[static_cast<std::size_t>(index)];
    const auto old = list.m_entries.begin() + static_cast<std::ptrdiff_t>(first);
    bool hasNewLook = false;
    const bool isSameKind =
        std::equal(old, old + count, fresh->m_entries.begin(), fresh->m_entries.end(),
                   [&hasNewLook](const RenderList::Entry& a, const RenderList::Entry& b) {
                       return RenderList::areOfOneKind(a, b, hasNewLook);
                   });
    const std::size_t numNew = fresh->m_entries.size();
    list.replace(first, count, *fresh);
    count = static_cast<std::uint32_t>(numNew);
    m_patches.push_back({&list, first, numNew, isSameKind, hasNewLook});
    return true;
}

void RenderTraversal::clearPart(RenderList& list, int index)
{
    const SoRef<RenderList> nothing(new RenderList);
    std::uint32_t& count = list.m_parts->counts[static_cast<std::size_t>(index)];
    list.replace(list.m_parts->firstEntry(index), count, *nothing);
    count = 0;
    m_patches.push_back({&list, 0, 0, false, false});
}

} // namespace kalmyr::detail
