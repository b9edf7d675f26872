#include <kalmyr/fields/SoMNodeField.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeCopier.h>

#include "NodeHolding.h"
#include "core/LastRites.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <limits>
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

bool isInRange(const char* function, int index, int num)
{
    if (index >= 0 && index < num) {
        return true;
    }
    SoDebugError::post(function, "index %d is out of the range 0 to %d", index, num - 1);
    return false;
}

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
    assert(m_nodes.empty() && !m_list);
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
    const auto place = std::find(nodes.begin(), nodes.end(), node);
    return place == nodes.end() ? -1 : static_cast<int>(place - nodes.begin());
}

bool SoMNodeField::accepts(const SoNode* node) const
{
    return kalmyr::detail::mayHold(*this, node);
}

bool SoMNodeField::acceptsAll(std::span<SoNode* const> nodes) const
{
    return std::all_of(nodes.begin(), nodes.end(), [this](SoNode* n) { return accepts(n); });
}

void SoMNodeField::hold(SoNode* node)
{
    if (node) {
        node->ref();
        node->addAuditor(this, SoAuditor::FIELD);
    }
}

void SoMNodeField::letGo(SoNode* node)
{
    if (node) {
        node->removeAuditor(this);
        kalmyr::detail::releaseInTurn(node);
    }
}

/// Everything else than single edits of bound fields ends here: one notification, and nodes that
/// go live until everybody has heard of it.
bool SoMNodeField::assign(std::vector<SoNode*> nodes)
{
    if (m_list) {
        nodes.erase(std::remove(nodes.begin(), nodes.end(), nullptr), nodes.end());
        return m_list->assign(nodes);
    }
    if (!acceptsAll(nodes)) {
        return false;
    }
    for (SoNode* node : nodes) {
        hold(node);
    }
    nodes.swap(m_nodes);
    valueChanged();
    for (SoNode* node : nodes) {
        letGo(node);
    }
    return true;
}

bool SoMNodeField::insertNode(SoNode* node, int index)
{
    evaluate();
    if (m_list) {
        return m_list->insert(node, index);
    }
    if (!isInRange("SoMNodeField::insertNode", index, getNum() + 1) || !accepts(node)) {
        return false;
    }
    hold(node);
    m_nodes.insert(at(m_nodes, index), node);
    valueChanged();
    return true;
}

bool SoMNodeField::removeNode(int index)
{
    evaluate();
    if (m_list) {
        return m_list->remove(index);
    }
    if (!isInRange("SoMNodeField::removeNode", index, getNum())) {
        return false;
    }
    SoNode* node = m_nodes[static_cast<std::size_t>(index)];
    m_nodes.erase(at(m_nodes, index));
    valueChanged();
    letGo(node);
    return true;
}

bool SoMNodeField::removeAllNodes()
{
    return getNum() == 0 || assign({});
}

bool SoMNodeField::replaceNode(const SoNode* old, SoNode* node)
{
    const int index = find(old);
    return isInRange("SoMNodeField::replaceNode", index, getNum()) && set1Value(index, node);
}

bool SoMNodeField::setValue(SoNode* node)
{
    return assign({node});
}

bool SoMNodeField::set1Value(int index, SoNode* node)
{
    evaluate();
    if (m_list) {
        return index == m_list->getLength() ? m_list->append(node) : m_list->set(index, node);
    }
    if (!isInRange("SoMNodeField::set1Value", index, std::numeric_limits<int>::max())
        || !accepts(node)) {
        return false;
    }
    if (index >= getNum()) {
        m_nodes.resize(static_cast<std::size_t>(index) + 1);
    }
    hold(node);
    SoNode* old = std::exchange(m_nodes[static_cast<std::size_t>(index)], node);
    valueChanged();
    letGo(old);
    return true;
}

bool SoMNodeField::setValues(std::span<SoNode* const> nodes)
{
    return assign({nodes.begin(), nodes.end()});
}

bool SoMNodeField::setValues(int start, std::span<SoNode* const> nodes)
{
    if (!isInRange("SoMNodeField::setValues", start, std::numeric_limits<int>::max())) {
        return false;
    }
    std::vector<SoNode*> all = getValues();
    all.resize(std::max(all.size(), static_cast<std::size_t>(start) + nodes.size()));
    std::copy(nodes.begin(), nodes.end(), at(all, start));
    return assign(std::move(all));
}

void SoMNodeField::setNum(int num)
{
    if (m_list && num >= getNum()) {
        return;
    }
    std::vector<SoNode*> all = getValues();
    all.resize(static_cast<std::size_t>(std::max(num, 0)));
    assign(std::move(all));
}

void SoMNodeField::deleteValues(int start, int count)
{
    const int num = getNum();
    if (start < 0 || start >= num || count == 0) {
        return;
    }
    const int n = count < 0 ? num - start : std::min(count, num - start);
    if (n == 1) {
        removeNode(start);
        return;
    }
    std::vector<SoNode*> all = getValues();
    all.erase(at(all, start), at(all, start + n));
    assign(std::move(all));
}

void SoMNodeField::insertSpace(int start, int count)
{
    if (m_list || start < 0 || count <= 0) {
        return;
    }
    std::vector<SoNode*> all = getValues();
    all.resize(std::max(all.size(), static_cast<std::size_t>(start)));
    all.insert(at(all, start), static_cast<std::size_t>(count), nullptr);
    assign(std::move(all));
}

bool SoMNodeField::isSame(const SoField& other) const
{
    return other.getTypeId() == getTypeId()
           && static_cast<const SoMNodeField&>(other).getValues() == getValues();
}

void SoMNodeField::copyFrom(const SoField& other)
{
    if (&other != this) {
        assign(static_cast<const SoMNodeField&>(other).getValues());
    }
}

void SoMNodeField::copyWith(SoNodeCopier& copier, const SoField& other)
{
    std::vector<SoNode*> copies;
    for (SoNode* node : static_cast<const SoMNodeField&>(other).getValues()) {
        copies.push_back(copier.copyOf(node));
    }
    assign(std::move(copies));
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
    return assign(node ? std::vector<SoNode*>{node} : std::vector<SoNode*>())
           || in.text.fail("expected a node that does not hold this one");
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
    return assign(std::move(nodes)) || in.text.fail("expected nodes that do not hold this one");
}

bool SoMNodeField::read1Value(int index, SoFieldReader& in)
{
    SoNode* node = nullptr;
    if (!in.readNode(node)) {
        return false;
    }
    const SoRef<SoNode> keep(node);
    return set1Value(index, node) || in.text.fail("expected a node that does not hold this one");
}

void SoMNodeField::write1Value(int index, SoFieldWriter& out) const
{
    out.writeNode((*this)[index]);
}
