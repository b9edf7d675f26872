#include "mirabo/tree/NodeSlot.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/ChildRules.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreePatcher.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/nodekits/SoBaseKit.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodes/SoGroup.h>

#include <algorithm>

namespace mirabo {

namespace {

QString quoted(const SbName& name)
{
    return '"' + QString::fromUtf8(name.getString()) + '"';
}

QString typeText(const SoNode& node)
{
    return QString::fromUtf8(node.getTypeId().getName().getString());
}

const TreeContext& contextOf(const SoTreeViewItem* row)
{
    return row->context();
}

/// The list part that keeps its entries in the row's group, or null.
SoNodeKitListPart* listOfGroup(const SoTreeViewItem* row)
{
    SoNode* parent = row->getParentNode();
    if (!parent || !parent->isOfType(SoNodeKitListPart::getClassTypeId()))
        return nullptr;
    auto* list = static_cast<SoNodeKitListPart*>(parent);
    return row->getSourceField() == &list->containerNode ? list : nullptr;
}

/// Whether the row stands where its kit has the part. The same node may stand elsewhere as well.
bool isPlaceOfPart(const SoTreeViewItem* row)
{
    const int number = row->getPartNumber();
    if (number < 0)
        return false; // no part, or one of a part
    const auto* kit = static_cast<const SoBaseKit*>(row->getPartKit());
    const SoTreeViewItem* above = row->parentItem();
    const int parentPart = kit->getNodekitCatalog()->getParentPartNumber(number);
    if (parentPart == 0)
        return row->isDirectlyFromField() && above->getNode() == kit;
    return above->getPartKit() == kit && above->getPartNumber() == parentPart;
}

/// A group that a kit makes for its parts.
bool isOwnGroupOfKit(const SoTreeViewItem* row)
{
    const int number = row->getPartNumber();
    return number >= 0
           && !static_cast<const SoBaseKit*>(row->getPartKit())
                   ->getNodekitCatalog()
                   ->isLeaf(number);
}

/// Place of a child's row in the child list of its parent's node.
int entryOf(const SoTreeViewItem* row)
{
    const SoTreeViewItem* above = row->parentItem();
    const int at = above->indexOfRow(row);
    int entry = at;
    for (int i = 0; above->hasDisabledChildren() && i < at; ++i)
        entry -= above->rowAt(i)->isDisabledNode();
    return entry + shownChildren(above->getNode(), contextOf(row)).first;
}

/// Place of a row's node among the values of its field, which may hold nulls in between.
int valueOf(const SoTreeViewItem* row)
{
    if (row->getSourceField()->isOfType(SoSFNode::getClassTypeId()))
        return 0;
    const SoTreeViewItem* above = row->parentItem();
    int left = 0;
    for (int i = above->indexOfRow(row) - 1;
         i >= 0 && above->rowAt(i)->getSourceField() == row->getSourceField(); --i)
        ++left;
    const auto& values = static_cast<const SoMNodeField*>(row->getSourceField())->getValues();
    int index = 0;
    while (index < static_cast<int>(values.size())
           && (!values[static_cast<std::size_t>(index)] || left-- > 0))
        ++index;
    return index;
}

/// The field that stands for the node's child list, or null.
SoField* childrenField(const SoNode* node)
{
    const SoFieldData* data = node->getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        SoField* field = data->getField(node, i);
        if (field->isOfType(SoMFNode::getClassTypeId())
            && static_cast<const SoMFNode*>(field)->isBound())
            return field;
    }
    return nullptr;
}

template <class List>
int placeIn(const List& list, const SoNode* node, int expected)
{
    if (expected >= 0 && expected < static_cast<int>(list.size())
        && list[static_cast<std::size_t>(expected)] == node)
        return expected;
    const auto at = std::find(list.begin(), list.end(), node);
    return at == list.end() ? -1 : static_cast<int>(at - list.begin());
}

} // namespace

NodeSlot NodeSlot::inList(SoNode* container, int index)
{
    if (container->isOfType(SoNodeKitListPart::getClassTypeId()))
        return {Kind::ListEntry, container, index};
    const NodeTraits& traits = traitsOf(container->getTypeId());
    const bool isField = traits.isVrmlParent || (traits.isVrml && childrenField(container));
    return {isField ? Kind::FieldChild : Kind::Child, container, index};
}

NodeSlot NodeSlot::of(const SoTreeViewItem* row)
{
    const SoTreeViewItem* above = row->parentItem();
    if (!above) {
        const auto* view = static_cast<const SoMiraboTreeView*>(row->treeWidget());
        if (view && view->getContainer() && row != view->rootItem())
            return inList(view->getContainer(), row->rowInParent());
        NodeSlot root(Kind::Child, nullptr, 0);
        root.m_isRoot = true;
        return root;
    }
    if (SoNodeKitListPart* list = row->isDirectlyFromField() ? nullptr : listOfGroup(above))
        return {Kind::ListEntry, list, entryOf(row)};
    if (isPlaceOfPart(row)) {
        NodeSlot part(Kind::Part, row->getPartKit(), 0);
        part.m_name = row->getPartName();
        return part;
    }
    if (row->isDirectlyFromField()) {
        NodeSlot value(Kind::Field, above->getNode(), valueOf(row));
        value.m_name = above->getNode()->getFieldName(row->getSourceField());
        return value;
    }
    NodeSlot child = inList(above->getNode(), entryOf(row));
    child.m_isInternal = !above->getNode()->getChildren();
    return child;
}

std::optional<NodeSlot> NodeSlot::into(const SoTreeViewItem* row, int index)
{
    SoNode* node = row->getNode();
    SoNodeKitListPart* list = listOfGroup(row);
    if (!list && node->isOfType(SoNodeKitListPart::getClassTypeId()))
        list = static_cast<SoNodeKitListPart*>(node);
    if (!list && !node->getChildren())
        return std::nullopt;
    NodeSlot slot = inList(list ? list : node, index);
    slot.m_isInternal = !list && isOwnGroupOfKit(row);
    if (index < 0)
        slot.m_index = slot.count();
    return slot;
}

std::optional<NodeSlot> NodeSlot::behind(const SoTreeViewItem* row)
{
    const NodeSlot own = of(row);
    if (own.m_kind == Kind::Part) {
        // A child of a kit's own group that is no part belongs to nobody.
        std::optional<NodeSlot> slot = into(row->parentItem(), 0);
        if (slot)
            slot->m_isInternal = true;
        return slot;
    }
    if (!own.isInList())
        return std::nullopt;
    NodeSlot slot(own.m_kind, own.container(), own.m_index + 1);
    slot.m_name = own.m_name;
    const SoTreeViewItem* above = row->parentItem();
    slot.m_isInternal = own.m_isInternal || (above && isOwnGroupOfKit(above));
    return slot;
}

std::optional<NodeSlot> NodeSlot::behindAll(const SoMiraboTreeView& view)
{
    SoGroup* container = view.getContainer();
    if (!container)
        return std::nullopt;
    return inList(container, container->getNumChildren());
}

bool NodeSlot::isTopLevel(const SoMiraboTreeView& view) const
{
    return view.getContainer() && container() == view.getContainer() && m_kind != Kind::Field;
}

SoTreeViewItem* NodeSlot::topRow(const SoMiraboTreeView& view) const
{
    return isTopLevel(view) ? asItem(view.topLevelItem(m_index)) : nullptr;
}

bool NodeSlot::isInList() const
{
    switch (m_kind) {
    case Kind::Child:
        return !m_isRoot;
    case Kind::Field:
        return multiField();
    case Kind::Part:
        return false;
    default:
        return true;
    }
}

SoField* NodeSlot::field() const
{
    const SoNode* node = container();
    return node ? node->getField(m_name) : nullptr;
}

SoMNodeField* NodeSlot::multiField() const
{
    SoField* at = field();
    return at && !at->isOfType(SoSFNode::getClassTypeId()) ? static_cast<SoMNodeField*>(at)
                                                           : nullptr;
}

SoNodeKitListPart* NodeSlot::list() const
{
    return static_cast<SoNodeKitListPart*>(container());
}

int NodeSlot::count() const
{
    const SoNode* node = container();
    if (!node)
        return 0;
    switch (m_kind) {
    case Kind::Field:
        return multiField() ? multiField()->getNum() : 1;
    case Kind::Part:
        return 1;
    case Kind::ListEntry:
        return list()->getNumChildren();
    default:
        return node->getChildren() ? node->getChildren()->getLength() : 0;
    }
}

bool NodeSlot::isBeside(const NodeSlot& other) const
{
    return isInList() && m_kind == other.m_kind && container() == other.container()
           && m_name == other.m_name;
}

bool NodeSlot::isContentOfFile() const
{
    const SoNode* node = container();
    if (m_kind != Kind::Child || !node)
        return false;
    const NodeTraits& traits = traitsOf(node->getTypeId());
    return traits.isFile || traits.isInline;
}

bool NodeSlot::isGroupOfList() const
{
    const SoNode* node = container();
    return m_kind == Kind::Field && node && node->isOfType(SoNodeKitListPart::getClassTypeId());
}

QString NodeSlot::whyNotTake() const
{
    if (m_isRoot)
        return {};
    const SoNode* node = container();
    if (!node)
        return "The node that holds it is gone.";
    if (m_isInternal)
        return QString("It belongs to the %1.").arg(nodeText(*node));
    if (isContentOfFile())
        return QString("It comes from the file of the %1.").arg(nodeText(*node));
    if (isGroupOfList())
        return "The list keeps its entries in it.";
    if (m_kind != Kind::Field && m_kind != Kind::Part)
        return {};
    const SoField* at = field();
    if (!at)
        return QString("The field %1 is gone.").arg(quoted(m_name));
    if (at->getFieldType() == SoField::EVENT_OUT)
        return QString("The field %1 is read-only.").arg(quoted(m_name));
    if (at->isConnected())
        return QString("The field %1 is connected.").arg(quoted(m_name));
    return {};
}

QString NodeSlot::whyNotPut(const SoNode* node) const
{
    const SoNode* holding = container();
    if (!holding)
        return "The node that is to hold it is gone.";
    if (m_isInternal)
        return QString("The %1 of a node kit takes only the kit's own parts.")
            .arg(nodeText(*holding));
    if (holding->isAtOrBelow(node))
        return QString("The %1 would hold itself.").arg(nodeText(*node));
    if (m_kind == Kind::ListEntry && !list()->isChildPermitted(node))
        return QString("The list takes no %1.").arg(typeText(*node));
    if (m_kind != Kind::Field)
        return {};
    if (QString why = whyNotTake(); !why.isEmpty())
        return why;
    SbString why;
    return holding->acceptsValue(*field(), node, why) ? QString()
                                                      : QString::fromUtf8(why.getString()) + '.';
}

/// The field whose default flag goes with the edits.
SoField* NodeSlot::flaggedField() const
{
    switch (m_kind) {
    case Kind::Field:
    case Kind::Part:
        return field();
    case Kind::FieldChild:
        return childrenField(container());
    default:
        return nullptr;
    }
}

/// Makes an edit that goes from one state of the place to the other, and lets the field's default
/// flag go with it.
bool NodeSlot::change(std::optional<bool>& left, const std::optional<bool>& entered,
                      const std::function<bool()>& edit)
{
    if (!container())
        return false;
    const SoField* flagged = flaggedField();
    const bool wasDefault = flagged && flagged->isDefault();
    if (!edit())
        return false;
    left = wasDefault;
    if (SoField* now = flaggedField(); now && entered)
        now->setDefault(*entered);
    return true;
}

bool NodeSlot::take(const SoNode* node)
{
    return change(m_defaultWith, m_defaultWithout, [&] { return remove(node); });
}

bool NodeSlot::put(SoNode* node)
{
    return change(m_defaultWithout, m_defaultWith, [&] { return insert(node); });
}

bool NodeSlot::remove(const SoNode* node)
{
    switch (m_kind) {
    case Kind::Field: {
        SoField* at = field();
        if (!at)
            return false;
        if (SoMNodeField* values = multiField()) {
            const int index = placeIn(values->getValues(), node, m_index);
            return index >= 0 && values->removeNode(index);
        }
        auto* value = static_cast<SoSFNode*>(at);
        if (value->getValue() != node)
            return false;
        value->setValue(nullptr);
        return !value->getValue();
    }
    case Kind::Part: {
        const SoNode* group = holder();
        const SoChildList* children = group ? group->getChildren() : nullptr;
        m_partIndex = children ? children->find(node) : -1;
        return static_cast<SoBaseKit*>(container())->setPart(m_name, nullptr);
    }
    case Kind::ListEntry:
        return removeEntry(node);
    default: {
        SoChildList* children = container()->getChildren();
        const int index = children ? placeIn(children->getNodes(), node, m_index) : -1;
        if (index < 0)
            return false;
        return container()->isOfType(SoGroup::getClassTypeId())
                   ? static_cast<SoGroup*>(container())->removeChild(index)
                   : children->remove(index);
    }
    }
}

bool NodeSlot::removeEntry(const SoNode* node)
{
    SoNode* group = list()->containerNode.getValue();
    const int index = group && group->getChildren()
                          ? placeIn(group->getChildren()->getNodes(), node, m_index)
                          : -1;
    if (index < 0 || !list()->removeChild(index))
        return false;
    if (!m_madeGroup)
        return true;
    // It came with the entry, and goes with it. Later commands may want the same one back.
    m_group = KeptNode(group);
    m_group.hold();
    list()->containerNode.setValue(nullptr);
    list()->containerNode.setDefault(m_groupWasDefault);
    return true;
}

bool NodeSlot::insert(SoNode* node)
{
    switch (m_kind) {
    case Kind::Field: {
        SoField* at = field();
        if (!at)
            return false;
        if (SoMNodeField* values = multiField())
            return values->insertNode(node, std::min(m_index, values->getNum()));
        auto* value = static_cast<SoSFNode*>(at);
        value->setValue(node);
        return value->getValue() == node;
    }
    case Kind::Part:
        return static_cast<SoBaseKit*>(container())->setPart(m_name, node)
               && restorePartIndex(node);
    case Kind::ListEntry: {
        SoSFNode& group = list()->containerNode;
        const bool isNew = !group.getValue();
        const bool wasDefault = group.isDefault();
        if (isNew && m_group)
            group.setValue(m_group.get());
        m_group.settle();
        const int index = std::min(m_index, list()->getNumChildren());
        // Of the list's own types, or one that came in where the group stands in another place.
        SoNode* own = group.getValue();
        const bool isForeign = own && own->isOfType(SoGroup::getClassTypeId())
                               && !list()->isChildPermitted(node);
        if (isForeign ? !static_cast<SoGroup*>(own)->insertChild(node, index)
                      : !list()->insertChild(node, index))
            return false;
        if (isNew) {
            m_madeGroup = true;
            m_groupWasDefault = wasDefault;
        }
        return true;
    }
    default: {
        SoChildList* children = container()->getChildren();
        if (!children)
            return false;
        const int index = std::min(m_index, children->getLength());
        return container()->isOfType(SoGroup::getClassTypeId())
                   ? static_cast<SoGroup*>(container())->insertChild(node, index)
                   : children->insert(node, index);
    }
    }
}

/// The kit puts a part to its place among the others; it may have stood elsewhere.
bool NodeSlot::restorePartIndex(SoNode* node)
{
    SoNode* above = holder();
    if (m_partIndex < 0 || !above || !above->isOfType(SoGroup::getClassTypeId()))
        return true;
    auto* group = static_cast<SoGroup*>(above);
    const int index = group->findChild(node);
    const int wanted = std::min(m_partIndex, group->getNumChildren() - 1);
    if (index < 0 || index == wanted)
        return true;
    const SoRef<SoNode> kept(node); // the kit knows it when it comes back
    return group->removeChild(index) && group->insertChild(node, wanted);
}

SoNode* NodeSlot::holder() const
{
    SoNode* node = container();
    if (!node)
        return nullptr;
    if (m_kind == Kind::ListEntry) {
        SoNode* group = list()->containerNode.getValue();
        return group ? group : node;
    }
    if (m_kind != Kind::Part)
        return node;
    const SbName above = static_cast<SoBaseKit*>(node)->getNodekitCatalog()->getParentName(m_name);
    if (above == SoNodekitCatalog::thisName())
        return node;
    SoField* group = node->getField(above);
    return group && group->isOfType(SoSFNode::getClassTypeId())
               ? static_cast<SoSFNode*>(group)->getValue()
               : nullptr;
}

/// Values before the place that have rows.
int NodeSlot::valuesBefore() const
{
    const SoMNodeField* values = multiField();
    if (!values)
        return 0;
    const auto begin = values->getValues().begin();
    return static_cast<int>(std::count_if(begin, begin + std::min(m_index, values->getNum()),
                                          [](const SoNode* node) { return node != nullptr; }));
}

SoTreeViewItem* NodeSlot::rowBelow(const SoTreeViewItem* holderRow) const
{
    const int rows = holderRow->rowCount();
    if (m_kind == Kind::Field) {
        const SoField* at = field();
        int left = valuesBefore();
        for (int row = childRowCount(holderRow); row < rows; ++row)
            if (holderRow->rowAt(row)->getSourceField() == at && left-- == 0)
                return holderRow->rowAt(row);
        return nullptr;
    }
    if (m_kind == Kind::Part) {
        const SoField* at = field();
        const SoNode* part = at ? static_cast<const SoSFNode*>(at)->getValue() : nullptr;
        for (int row = 0; row < rows; ++row)
            if (holderRow->rowAt(row)->getNode() == part)
                return holderRow->rowAt(row);
        return nullptr;
    }
    int entry = m_index - shownChildren(holderRow->getNode(), contextOf(holderRow)).first;
    if (!holderRow->hasDisabledChildren())
        return entry >= 0 && entry < childRowCount(holderRow) ? holderRow->rowAt(entry) : nullptr;
    for (int row = 0; row < childRowCount(holderRow); ++row)
        if (!holderRow->rowAt(row)->isDisabledNode() && entry-- == 0)
            return holderRow->rowAt(row);
    return nullptr;
}

} // namespace mirabo
