#include <kalmyr/core/SoPlaces.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include "core/StackSwitch.h"

#include <unordered_set>

namespace kalmyr {

namespace {

/// The node that holds what the auditor watches, as a child or in a field; null for others.
SoNode* holderOf(const SoAuditorList::Entry& entry)
{
    if (entry.type == SoAuditor::PARENT) {
        return static_cast<SoChildList*>(entry.auditor)->getParent();
    }
    if (entry.type != SoAuditor::FIELD) {
        return nullptr;
    }
    SoFieldContainer* container = static_cast<SoField*>(entry.auditor)->getContainer();
    return container && container->isOfType(SoNode::getClassTypeId())
               ? static_cast<SoNode*>(container)
               : nullptr;
}

/// Goes up from a node, all ways, to one root.
class Ascent {
public:
    Ascent(const SoNode* root, std::size_t limit) : m_root(root), m_limit(limit) {}

    std::vector<SoRef<SoPath>> run(SoNode* node)
    {
        m_stackLimit = detail::stackLimit();
        visit(node);
        return std::move(m_found);
    }

private:
    struct Step {
        SoNode* node;
        int index; ///< in the node above it
    };
    void visit(SoNode* node);
    void visitOnSomeStack(SoNode* node);
    void visitHolder(SoNode* node, SoNode* holder, const SoAuditorList::Entry& entry);
    void addPath(SoNode* root);
    bool isOver() const { return m_found.size() >= m_limit || m_numVisits > kMaxVisits; }

    /// Nodes that hold others several times over, level upon level, have ways without end.
    static constexpr int kMaxVisits = 100'000;

    const SoNode* m_root;
    const std::size_t m_limit;
    const char* m_stackLimit = nullptr;
    int m_numVisits = 0;
    std::vector<Step> m_way; ///< from the node up to what is below the present one
    std::vector<SoRef<SoPath>> m_found;
};

void Ascent::addPath(SoNode* root)
{
    SoRef<SoPath> path(new SoPath(root));
    for (auto step = m_way.rbegin(); step != m_way.rend(); ++step) {
        path->append(step->node, step->index);
    }
    m_found.push_back(std::move(path));
}

void Ascent::visit(SoNode* node)
{
    if (++m_numVisits > kMaxVisits) {
        return;
    }
    if (node == m_root) {
        addPath(node);
        return;
    }
    const SoAuditorList& auditors = node->getAuditors();
    for (int i = 0; i < auditors.getLength() && !isOver(); ++i) {
        if (SoNode* holder = holderOf(auditors[i])) {
            visitHolder(node, holder, auditors[i]);
        }
    }
}

/// Graphs may be deeper than a thread's stack.
void Ascent::visitOnSomeStack(SoNode* node)
{
    if (!detail::isStackLow(m_stackLimit)) {
        visit(node);
        return;
    }
    const char* limitBefore = m_stackLimit;
    detail::callOnNewStack([&](const char* limit) {
        m_stackLimit = limit;
        visit(node);
    });
    m_stackLimit = limitBefore;
}

void Ascent::visitHolder(SoNode* node, SoNode* holder, const SoAuditorList::Entry& entry)
{
    const auto visitFrom = [&](int index) {
        m_way.push_back({node, index});
        visitOnSomeStack(holder);
        m_way.pop_back();
    };
    if (entry.type == SoAuditor::FIELD) {
        visitFrom(-1);
        return;
    }
    const auto& children = *static_cast<SoChildList*>(entry.auditor);
    int left = entry.multiplicity;
    for (int i = children.find(node); left > 0 && i < children.getLength() && !isOver(); ++i) {
        if (children[i] == node) {
            visitFrom(i);
            --left;
        }
    }
}

} // namespace

SoNode* findAbove(SoNode* node, const SoNode* root)
{
    std::unordered_set<const SoNode*> known{node};
    std::vector<SoNode*> waiting{node};
    while (!waiting.empty()) {
        SoNode* present = waiting.back();
        if (present == root) {
            return present;
        }
        waiting.pop_back();
        const SoAuditorList& auditors = present->getAuditors();
        for (int i = 0; i < auditors.getLength(); ++i) {
            SoNode* holder = holderOf(auditors[i]);
            if (holder && known.insert(holder).second) {
                waiting.push_back(holder);
            }
        }
    }
    return nullptr;
}

bool isBelow(const SoNode* root, const SoNode* node)
{
    return findAbove(const_cast<SoNode*>(node), root) != nullptr;
}

std::vector<SoRef<SoPath>> findPlaces(SoNode* root, SoNode* node, std::size_t limit)
{
    return Ascent(root, limit).run(node);
}

} // namespace kalmyr
