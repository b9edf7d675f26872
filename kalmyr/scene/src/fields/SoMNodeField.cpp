#include <kalmyr/fields/SoMNodeField.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeCopier.h>

#include "core/LastRites.h"
#include "NodeHolding.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

SoType s_nodeFieldType;

} // namespace

SoType SoMNodeField::getClassTypeId()
{
    return s_nodeFieldType;
}

void SoMNodeField::initClass()
{
    s_nodeFieldType = SoType::createType(SoMField::getClassTypeId(), SbName("MNodeField"));
}

namespace {

auto at(std::vector<SoNode*>& nodes, int index)
{
    return nodes.begin() + index;
}

} // namespace

SoMNodeField::~SoMNodeField()
{
    for (SoNode* node : m_nodes) {
        letGo(node);
    }
}

void SoMNodeField::bindTo(SoChildList* list)
{
    if (!kalmyr::holds(list && m_nodes.empty() && !m_list, "a list, once, before any value"))
        return;
    m_list = list;
    list->setField(this);
}

const std::vector<SoNode*>& SoMNodeField::getValues() const
{
    evaluate();
    return m_list ? m_list->getNodes() : m_nodes;
}

int SoMNodeField::find(const SoNode* node) const
{
    const auto& nodes = getValues();
    if (m_list) {
        return m_list->find(node);
    }
    const auto place = std::find(nodes.begin(), nodes.end(), node);
    return place == nodes.end() ? -1 : static_cast<int>(place - nodes.begin());
}

bool SoMNodeField::acceptsAll(std::span<SoNode* const> nodes) const
{
    return kalmyr::detail::mayHoldAll(*this, nodes);
}

void SoMNodeField::hold(SoNode* node)
{
    if (node) {
        node->ref();
        node->addAuditor(this, SoAuditor::FIELD);
        node->joinHolder(getContainer(), this);
    }
}

void SoMNodeField::letGo(SoNode* node)
{
    if (node) {
        node->removeAuditor(this);
        kalmyr::detail::releaseInTurn(node);
    }
}

/// The same as valueChanged(), but that an edit of one place is told as that.
void SoMNodeField::tell(SoNotification::Kind kind, SoNode* node, int index)
{
    if (flags() & kPulling || kind == SoNotification::UNSPECIFIED) {
        valueChanged();
        return;
    }
    changeFlags(kDefault | kDirty, 0);
    if (!isNotifyEnabled()) {
        return;
    }
    SoNotification notification;
    notification.kind = kind;
    notification.child = node;
    notification.index = index;
    notifyChange(notification);
}

/// Every edit of an unbound field ends here: one notification, and nodes that go live until
/// everybody has heard of it.
bool SoMNodeField::exchange(int start, int count, std::span<SoNode* const> nodes)
{
    if (!acceptsAll(nodes)) {
        return false;
    }
    if (!(flags() & kPulling))
        kalmyr::detail::expectWalk(*this);
    for (SoNode* node : nodes) {
        hold(node);
    }
    const std::vector<SoNode*> gone(at(m_nodes, start), at(m_nodes, start + count));
    const auto num = static_cast<int>(nodes.size());
    const int same = std::min(num, count);
    std::copy_n(nodes.begin(), same, at(m_nodes, start));
    m_nodes.erase(at(m_nodes, start + same), at(m_nodes, start + count));
    m_nodes.insert(at(m_nodes, start + same), nodes.begin() + same, nodes.end());

    if (count == 0 && num == 1) {
        const bool isLast = start + 1 == static_cast<int>(m_nodes.size());
        tell(isLast ? SoNotification::CHILD_ADDED : SoNotification::CHILD_INSERTED, nodes[0],
             start);
    } else if (count == 1 && num == 1) {
        tell(SoNotification::CHILD_REPLACED, nodes[0], start);
    } else if (count == 1 && num == 0) {
        tell(SoNotification::CHILD_REMOVED, gone[0], start);
    } else if (m_nodes.empty() && count > 0) {
        tell(SoNotification::ALL_REMOVED, nullptr, -1);
    } else {
        valueChanged();
    }
    for (SoNode* node : gone) {
        letGo(node);
    }
    return true;
}

bool SoMNodeField::assign(std::span<SoNode* const> nodes)
{
    if (!m_list) {
        return exchange(0, getNum(), nodes);
    }
    std::vector<SoNode*> children;
    std::copy_if(nodes.begin(), nodes.end(), std::back_inserter(children),
                 [](const SoNode* node) { return node; });
    return m_list->assign(children);
}

bool SoMNodeField::insertNode(SoNode* node, int index)
{
    evaluate();
    if (m_list) {
        return m_list->insert(node, index);
    }
    return isIndex(index, std::min(getNum() + 1, kMaxNum)) && exchange(index, 0, {&node, 1});
}

bool SoMNodeField::removeNode(int index)
{
    evaluate();
    if (m_list) {
        return m_list->remove(index);
    }
    return isIndex(index, getNum()) && exchange(index, 1, {});
}

bool SoMNodeField::removeAllNodes()
{
    return getNum() == 0 || assign({});
}

bool SoMNodeField::replaceNode(const SoNode* old, SoNode* node)
{
    const int index = find(old);
    return kalmyr::holds(index >= 0, "a node of the field") && set1Value(index, node);
}

bool SoMNodeField::setValue(SoNode* node)
{
    return assign({&node, 1});
}

bool SoMNodeField::set1Value(int index, SoNode* node)
{
    evaluate();
    if (m_list) {
        return index == m_list->getLength() ? m_list->append(node) : m_list->set(index, node);
    }
    return isIndex(index, kMaxNum) && setValues(index, {&node, 1});
}

bool SoMNodeField::setValues(std::span<SoNode* const> nodes)
{
    return assign(nodes);
}

bool SoMNodeField::setValues(int start, std::span<SoNode* const> nodes)
{
    if (!kalmyr::holds(start >= 0 && start <= kMaxNum
                           && nodes.size() <= static_cast<std::size_t>(kMaxNum - start),
                       "0 <= start, and at most kMaxNum nodes in all"))
        return false;
    const int num = getNum();
    if (m_list && nodes.size() == 1 && nodes[0] && start <= num) {
        return set1Value(start, nodes[0]);
    }
    if (m_list) {
        std::vector<SoNode*> all = getValues();
        all.resize(std::max(all.size(), static_cast<std::size_t>(start) + nodes.size()));
        std::copy(nodes.begin(), nodes.end(), at(all, start));
        return assign(all);
    }
    if (start <= num) {
        return exchange(start, std::min(num - start, static_cast<int>(nodes.size())), nodes);
    }
    std::vector<SoNode*> added(static_cast<std::size_t>(start - num));
    added.insert(added.end(), nodes.begin(), nodes.end());
    return exchange(num, 0, added);
}

void SoMNodeField::setNum(int num)
{
    if (!kalmyr::holds(num >= 0 && num <= kMaxNum, "0 <= num <= kMaxNum"))
        return;
    const int before = getNum();
    if (num < before)
        deleteValues(num);
    else if (!m_list)
        exchange(before, 0, std::vector<SoNode*>(static_cast<std::size_t>(num - before)));
}

bool SoMNodeField::replaceValues(int start, int removed, const SoMField& source, int from,
                                 int count)
{
    if (!canReplace(start, removed, source, from, count, kMaxNum))
        return false;
    const std::span<SoNode* const> nodes(static_cast<const SoMNodeField&>(source).getValues());
    const auto added =
        nodes.subspan(static_cast<std::size_t>(from), static_cast<std::size_t>(count));
    if (!m_list)
        return exchange(start, removed, added);
    std::vector<SoNode*> all = getValues();
    all.erase(at(all, start), at(all, start + removed));
    all.insert(at(all, start), added.begin(), added.end());
    return assign(all);
}

void SoMNodeField::deleteValues(int start, int count)
{
    const int n = countToDelete(getNum(), start, count);
    if (n == 0)
        return;
    if (!m_list) {
        exchange(start, n, {});
    } else if (n == 1) {
        m_list->remove(start);
    } else {
        std::vector<SoNode*> all = getValues();
        all.erase(at(all, start), at(all, start + n));
        assign(all);
    }
}

void SoMNodeField::insertSpace(int start, int count)
{
    if (!canInsert(getNum(), start, count, kMaxNum) || m_list)
        return;
    const int place = std::min(start, getNum());
    exchange(place, 0, std::vector<SoNode*>(static_cast<std::size_t>(start - place + count)));
}

bool SoMNodeField::isSame(const SoField& other) const
{
    return other.getTypeId() == getTypeId()
           && static_cast<const SoMNodeField&>(other).getValues() == getValues();
}

void SoMNodeField::copyFrom(const SoField& other)
{
    if (&other != this && canCopy(other)) {
        assign(static_cast<const SoMNodeField&>(other).getValues());
    }
}

void SoMNodeField::copyWith(SoNodeCopier& copier, const SoField& other)
{
    if (!canCopy(other))
        return;
    std::vector<SoNode*> copies;
    for (SoNode* node : static_cast<const SoMNodeField&>(other).getValues()) {
        copies.push_back(copier.copyOf(node));
    }
    assign(copies);
}

bool SoMNodeField::readValue(SoFieldReader& in)
{
    if (in.text.accept('[')) {
        return readList(in);
    }
    SoNode* node = nullptr;
    if (!in.readNode(node)) {
        return false;
    }
    const SoRef<SoNode> keep(node);
    // A lone NULL is the empty list.
    return assign({&node, node ? std::size_t{1} : std::size_t{0}})
           || in.text.fail(kalmyr::detail::kHoldsThis);
}

bool SoMNodeField::readList(SoFieldReader& in)
{
    std::vector<SoRef<SoNode>> read;
    while (!in.text.accept(']')) {
        SoNode* node = nullptr;
        if (!in.readNode(node)) {
            return false;
        }
        read.emplace_back(node);
    }
    std::vector<SoNode*> nodes;
    std::transform(read.begin(), read.end(), std::back_inserter(nodes),
                   [](const SoRef<SoNode>& r) { return r.get(); });
    return assign(nodes) || in.text.fail(kalmyr::detail::kHoldsThis);
}

bool SoMNodeField::read1Value(int index, SoFieldReader& in)
{
    SoNode* node = nullptr;
    if (!isIndex(index, kMaxNum) || !in.readNode(node)) {
        return false;
    }
    const SoRef<SoNode> keep(node);
    return set1Value(index, node) || in.text.fail(kalmyr::detail::kHoldsThis);
}

void SoMNodeField::writeValue(SoFieldWriter& out) const
{
    if (getNum() == 1 && !(*this)[0])
        out.text += "[ NULL ]";
    else
        SoMField::writeValue(out);
}

void SoMNodeField::write1Value(int index, SoFieldWriter& out) const
{
    if (isIndex(index, getNum()))
        out.writeNode((*this)[index]);
}
