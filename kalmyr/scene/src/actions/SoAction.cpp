#include <kalmyr/actions/SoAction.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoErrorStack.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include "core/StackSwitch.h"

#include <algorithm>

namespace {

SoType s_actionType;

/// How many children ahead of the one that is visited are fetched from memory: large graphs do not
/// fit into caches, and a node takes less time than a fetch.
constexpr int kFetchAhead = 4;
constexpr int kFetchedBytes = 192;
constexpr int kCacheLine = 64;

/// Graphs whose nodes hold others several times over, level upon level, have no end in practice.
constexpr std::uint64_t kMaxVisits = 500'000'000;

inline void fetch(const SoNode* node)
{
    for (int at = 0; at < kFetchedBytes; at += kCacheLine)
        __builtin_prefetch(reinterpret_cast<const char*>(node) + at);
}

} // namespace

SoType SoAction::getClassTypeId()
{
    return s_actionType;
}

void SoAction::initClass()
{
    s_actionType = SoType::createType(SoType::badType(), SbName("Action"));
}

SoAction::SoAction() : m_state(std::make_unique<SoState>(this)) {}

SoAction::~SoAction() = default;

void SoAction::apply(SoNode* root)
{
    run(root, nullptr);
}

void SoAction::apply(SoPath* path)
{
    const SoRef<SoPath> held(path); // a path made for the call dies with it
    run(path ? path->getHead() : nullptr, path);
}

void SoAction::run(SoNode* root, const SoPath* path)
{
    if (!kalmyr::holds(root, "something to apply the action to")
        || !kalmyr::holds(!m_methods, "an action that is not being applied already"))
        return;
    root->ref();
    m_state->reset();
    m_methods = &methods();
    m_methods->prepare();
    m_path = path;
    m_pathMode = !path ? NO_PATH : (path->getLength() == 1 ? BELOW_PATH : IN_PATH);
    m_terminated = false;
    m_tailReported = false;
    m_numVisits = 0;
    m_lowest = 0;
    m_listed.clear();
    m_onWay.clear();
    m_stackLimit = kalmyr::detail::stackLimit();
    beginTraversal(root);
    if (!m_terminated)
        isSpecial() ? visitCarefully(root, -1) : visit(root, -1);
    endTraversal(root);
    if (m_state->getDepth() != 0)
        SoErrorStack::post("%s: nodes left %d pushes of the state without their pop",
                           getTypeId().getName().getString(), m_state->getDepth());
    m_methods = nullptr;
    m_path = nullptr;
    m_pathMode = NO_PATH;
    root->unrefNoDelete();
}

void SoAction::traverse(SoNode* node, int index)
{
    if (!node || m_terminated)
        return;
    if (isSpecial() || kalmyr::detail::isStackLow(m_stackLimit)) [[unlikely]]
        visitCarefully(node, index);
    else
        visit(node, index);
}

void SoAction::visit(SoNode* node, int index)
{
    if (++m_numVisits >= kMaxVisits) [[unlikely]]
        return giveUp();
    m_stack.push_back({node, index});
    m_methods->get(node->getTypeId())(this, node);
    leave();
}

void SoAction::giveUp()
{
    m_terminated = true;
    SoDebugError::post(
        "SoAction::apply", "%s: stopped after %llu visits of nodes: they occur too often",
        getTypeId().getName().getString(), static_cast<unsigned long long>(kMaxVisits));
}

void SoAction::visitCarefully(SoNode* node, int index)
{
    if (!kalmyr::detail::isStackLow(m_stackLimit)) {
        visitWithMode(node, index);
        return;
    }
    const char* limitBefore = m_stackLimit;
    kalmyr::detail::callOnNewStack([&](const char* limit) {
        m_stackLimit = limit;
        visitWithMode(node, index);
    });
    m_stackLimit = limitBefore;
}

SoAction::PathMode SoAction::modeBelow(const SoNode* node, int index) const
{
    const int depth = static_cast<int>(m_stack.size());
    if (depth == 0 || m_pathMode != IN_PATH)
        return m_pathMode;
    // The path may have become shorter: a callback took a node of it out of the graph.
    if (depth >= m_path->getLength() || m_path->getNode(depth) != node
        || m_path->getIndex(depth) != index)
        return OFF_PATH;
    return depth + 1 == m_path->getLength() ? BELOW_PATH : IN_PATH;
}

void SoAction::visitWithMode(SoNode* node, int index)
{
    const PathMode modeBefore = m_pathMode;
    const PathMode mode = modeBelow(node, index);
    if (mode == OFF_PATH && !node->affectsState())
        return;
    const bool isTail = mode == BELOW_PATH && (modeBefore != BELOW_PATH || m_stack.empty());
    if (mode == BELOW_PATH && !isTail && m_pathUse == TO_TAIL) {
        reportTail();
        return;
    }
    if (++m_numVisits >= kMaxVisits)
        return giveUp();
    m_stack.push_back({node, index});
    m_pathMode = mode;
    if (!m_hooked || beforeNode(node)) {
        if (!m_terminated)
            act(node);
        if (m_hooked)
            afterNode(node);
    }
    if (isTail)
        reportTail();
    m_pathMode = modeBefore;
    leave();
}

void SoAction::act(SoNode* node)
{
    const bool stateOnly =
        m_pathUse == STATE_ABOVE_TAIL && (m_pathMode == IN_PATH || m_pathMode == OFF_PATH);
    if (stateOnly)
        node->doAction(this);
    else
        m_methods->get(node->getTypeId())(this, node);
}

void SoAction::reportTail()
{
    if (m_pathUse != TO_TAIL || m_tailReported)
        return;
    m_tailReported = true;
    tailReached();
}

void SoAction::traverseChildren(const SoChildList& children)
{
    int last = children.getLength();
    if (m_path) [[unlikely]] {
        if (m_pathMode == BELOW_PATH && m_pathUse == TO_TAIL) {
            reportTail();
            return;
        }
        // Children after the path's next node have no effect on it.
        int next;
        if (isOnPath(next) && next >= 0)
            last = next + 1;
    }
    for (int i = 1; i < kFetchAhead && i < last; ++i)
        fetch(children[i]);
    // The length is asked for anew: a callback may have removed children.
    for (int i = 0; i < last && i < children.getLength() && !m_terminated; ++i) {
        if (i + kFetchAhead < children.getLength())
            fetch(children[i + kFetchAhead]);
        traverse(children[i], i);
    }
}

bool SoAction::isOnPath(int& nextChild) const
{
    const int depth = static_cast<int>(m_stack.size());
    if (m_pathMode != IN_PATH || depth >= m_path->getLength())
        return false;
    nextChild = m_path->getIndex(depth);
    return true;
}

bool SoAction::isOnWay(const SoNode* node)
{
    constexpr std::size_t kShort = 32;
    if (m_stack.size() <= kShort)
        return std::any_of(m_stack.begin(), m_stack.end(),
                           [node](const Place& place) { return place.node == node; });
    for (; m_listed.size() > m_lowest; m_listed.pop_back()) {
        const auto at = m_onWay.find(m_listed.back());
        if (--at->second == 0)
            m_onWay.erase(at);
    }
    for (std::size_t i = m_listed.size(); i < m_stack.size(); ++i) {
        m_listed.push_back(m_stack[i].node);
        ++m_onWay[m_stack[i].node];
    }
    m_lowest = m_stack.size();
    return m_onWay.count(node) > 0;
}

SoPath* SoAction::getCurPath() const
{
    auto* path = new SoPath;
    for (const Place& place : m_stack)
        path->append(place.node, place.index);
    return path;
}

void SoAction::beginTraversal(SoNode*) {}

void SoAction::endTraversal(SoNode*) {}

void SoAction::callDoAction(SoAction* action, SoNode* node)
{
    node->doAction(action);
}
