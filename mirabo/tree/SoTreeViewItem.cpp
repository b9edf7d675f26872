#include "mirabo/tree/SoTreeViewItem.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/RowPool.h"
#include "mirabo/tree/TreeContext.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/nodekits/SoBaseKit.h>

#include <QBrush>
#include <QTreeWidget>

#include <algorithm>
#include <vector>

namespace {

const QColor kNameColor(0, 128, 0);

// Sanitizers watch over each row only when it has an allocation of its own.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kPoolsRows = false;
#else
constexpr bool kPoolsRows = true;
#endif

mirabo::RowPool& rowPool()
{
    static mirabo::RowPool pool;
    return pool;
}

QString toQString(SbName name)
{
    return QString::fromUtf8(name.getString(), static_cast<int>(name.getLength()));
}

/// The kit against which a row below `parent` names itself, or null.
SoBaseKit* kitFor(const SoTreeViewItem* parent)
{
    if (!parent)
        return nullptr;
    if (mirabo::traitsOf(parent->getNodeType()).isKit)
        return static_cast<SoBaseKit*>(parent->getNode());
    return static_cast<SoBaseKit*>(parent->getPartKit());
}

int countHolders(const SoNode* node)
{
    int count = 0;
    const SoAuditorList& auditors = node->getAuditors();
    for (int i = 0; i < auditors.getLength(); ++i)
        if (auditors[i].type == SoAuditor::PARENT || auditors[i].type == SoAuditor::FIELD)
            count += auditors[i].multiplicity;
    return count;
}

} // namespace

SoTreeViewItem::SoTreeViewItem(SoNode* node, SoField* source, const SoTreeViewItem* parent,
                               mirabo::TreeContext& context)
    : QTreeWidgetItem(0),
      m_node(node),
      m_sourceField(source),
      m_context(&context),
      m_type(node->getTypeId()),
      m_dead(false),
      m_fromField(source || (parent && parent->m_fromField)),
      m_directlyFromField(source),
      m_disabled(false),
      m_hasDisabledChildren(false),
      m_putAside(false),
      m_bookmarked(false),
      m_fresh(true),
      m_shown(true),
      m_referenceMark(false),
      m_indexed(true),
      m_filteredOut(context.filter.hides(m_type)),
      m_revealed(false),
      m_hasHiddenRows(false)
{
    m_shown = !m_filteredOut;
    if (SoBaseKit* kit = kitFor(parent)) {
        m_partInfo = std::make_unique<PartInfo>();
        m_partInfo->kit = kit;
    }
    node->tellOfDeath();
    context.index.add(this);
}

SoTreeViewItem::~SoTreeViewItem()
{
    leave();
}

/// Everything that knows the row forgets it.
void SoTreeViewItem::leave()
{
    m_disabled = true;
    if (m_hasHiddenRows)
        dropHiddenRows();
    for (SoTreeViewItem** kept : m_context->remembered())
        if (*kept == this)
            *kept = nullptr;
    if (m_putAside)
        m_context->putAside.erase(this);
    if (m_dead)
        m_context->dead.erase(this);
    if (m_indexed)
        m_context->index.remove(this);
    if (m_bookmarked)
        m_context->bookmarks.rowDies(this, m_node, !m_context->index.contains(m_node));
    m_putAside = m_indexed = m_bookmarked = false;
}

void SoTreeViewItem::leaveTree()
{
    std::vector<SoTreeViewItem*> open{this};
    while (!open.empty()) {
        SoTreeViewItem* item = open.back();
        open.pop_back();
        item->leave();
        item->m_dead = true;
        item->m_sourceField = nullptr;
        item->m_partInfo.reset();
        for (int i = 0; i < item->childCount(); ++i)
            open.push_back(item->childItem(i));
    }
}

mirabo::RowKeeper* SoTreeViewItem::keeper() const
{
    return m_context->keeper;
}

void* SoTreeViewItem::operator new(std::size_t size)
{
    return kPoolsRows ? rowPool().allocate(size) : ::operator new(size);
}

void SoTreeViewItem::operator delete(void* row)
{
    kPoolsRows ? rowPool().release(row) : ::operator delete(row);
}

void SoTreeViewItem::nodeDied()
{
    m_dead = true;
    m_indexed = false;
    m_context->dead.insert(this);
    for (int i = rowCount(); i-- > 0 && rowAt(i)->isDirectlyFromField();)
        rowAt(i)->m_sourceField = nullptr;
    if (!mirabo::traitsOf(m_type).isKit)
        return;
    std::vector<const SoTreeViewItem*> open{this};
    while (!open.empty()) {
        const SoTreeViewItem* item = open.back();
        open.pop_back();
        for (int i = 0; i < item->rowCount(); ++i) {
            const SoTreeViewItem* child = item->rowAt(i);
            if (!child->m_partInfo || child->m_partInfo->kit != m_node)
                continue;
            child->m_partInfo->kit = nullptr;
            open.push_back(child);
        }
    }
}

void SoTreeViewItem::setIndexed(bool on)
{
    std::vector<SoTreeViewItem*> open{this};
    while (!open.empty()) {
        SoTreeViewItem* item = open.back();
        open.pop_back();
        if (item->m_indexed != on && !item->m_dead) {
            on ? m_context->index.add(item) : m_context->index.remove(item);
            item->m_indexed = on;
        }
        for (int i = 0; i < item->rowCount(); ++i)
            open.push_back(item->rowAt(i));
    }
}

void SoTreeViewItem::removeChildItem(SoTreeViewItem* item)
{
    const int row = indexOfRow(item);
    if (row < 0)
        return;
    takeRow(row);
    item->setIndexed(false);
    childrenChanged(row);
}

void SoTreeViewItem::addChildItem(SoTreeViewItem* item)
{
    item->setIndexed(true);
    insertRow(rowCount(), item);
    childrenChanged(rowCount() - 1);
}

SoTreeViewItem* SoTreeViewItem::parentOfHidden() const
{
    const QTreeWidgetItem* above = parent(); // none: the root, or in no tree
    return above ? static_cast<const mirabo::HiddenRows*>(above)->parentRow() : nullptr;
}

mirabo::HiddenRows& SoTreeViewItem::hiddenRows() const
{
    return *m_context->hidden.find(this)->second;
}

mirabo::HiddenRows& SoTreeViewItem::makeHiddenRows()
{
    if (m_hasHiddenRows)
        return hiddenRows();
    m_hasHiddenRows = true;
    return *(m_context->hidden[this] = std::make_unique<mirabo::HiddenRows>(this));
}

void SoTreeViewItem::dropHiddenRows()
{
    // Rows that it deletes may come here as well.
    const std::unique_ptr<mirabo::HiddenRows> gone =
        std::move(m_context->hidden.find(this)->second);
    m_context->hidden.erase(this);
    m_hasHiddenRows = false;
}

int SoTreeViewItem::countWithHidden() const
{
    return hiddenRows().count();
}

SoTreeViewItem* SoTreeViewItem::atWithHidden(int row) const
{
    return hiddenRows().at(row);
}

int SoTreeViewItem::shownBefore(int row) const
{
    return hiddenRows().shownBefore(std::min(row, countWithHidden()));
}

int SoTreeViewItem::indexOfRow(const SoTreeViewItem* row) const
{
    if (row->m_filteredOut)
        return row->parentItem() == this ? hiddenRows().placeOf(row) : -1;
    const bool isKnown = child(row->m_row) == row;
    const int at = isKnown ? row->m_row : indexOfChild(const_cast<SoTreeViewItem*>(row));
    return m_hasHiddenRows && at >= 0 ? hiddenRows().placeOfShown(at) : at;
}

void SoTreeViewItem::insertRow(int at, QTreeWidgetItem* row)
{
    if (!m_hasHiddenRows && !static_cast<const SoTreeViewItem*>(row)->m_filteredOut)
        insertChild(at, row);
    else
        makeHiddenRows().insert(at, row);
}

void SoTreeViewItem::insertRows(int at, const QList<QTreeWidgetItem*>& rows)
{
    const auto isHidden = [](const QTreeWidgetItem* row) {
        return static_cast<const SoTreeViewItem*>(row)->m_filteredOut;
    };
    if (m_hasHiddenRows
        || (m_context->filter.isOn() && std::any_of(rows.begin(), rows.end(), isHidden)))
        makeHiddenRows().insert(at, rows);
    else
        insertChildren(at, rows);
}

SoTreeViewItem* SoTreeViewItem::takeRow(int at)
{
    if (!m_hasHiddenRows)
        return static_cast<SoTreeViewItem*>(takeChild(at));
    SoTreeViewItem* row = hiddenRows().take(at);
    if (hiddenRows().hiddenCount() == 0)
        dropHiddenRows();
    return row;
}

QList<QTreeWidgetItem*> SoTreeViewItem::takeRows()
{
    if (!m_hasHiddenRows)
        return takeChildren();
    const QList<QTreeWidgetItem*> rows = hiddenRows().takeAll();
    dropHiddenRows();
    return rows;
}

void SoTreeViewItem::setFilteredOut(bool on, bool revealed)
{
    m_filteredOut = on;
    m_revealed = revealed;
    m_shown = !on && !m_disabled;
}

bool SoTreeViewItem::isInSight() const
{
    const SoTreeViewItem* at = this;
    while (at && !at->m_filteredOut)
        at = at->parentItem();
    return !at;
}

SoNode* SoTreeViewItem::getParentNode() const
{
    const SoTreeViewItem* above = parentItem();
    return above ? above->getNode() : nullptr;
}

const PartInfo& SoTreeViewItem::partInfo() const
{
    static const PartInfo kNone;
    if (!m_partInfo)
        return kNone;
    PartInfo& info = *m_partInfo;
    if (info.asOf == m_context->changes)
        return info;
    const mirabo::GraphReading graph;
    if (!graph || !mayReadNode() || !info.kit)
        return info; // what is known
    info.asOf = m_context->changes;
    info.partName = SbName(info.kit->getPartString(m_node).getString());
    info.partKind = PartInfo::NotAPart;
    info.partNumber = -1;
    if (info.isNamedPart()) {
        info.partKind = info.partName == "topSeparator" ? PartInfo::TopSeparator : PartInfo::Part;
        info.partNumber = info.kit->getNodekitCatalog()->getPartNumber(info.partName);
    }
    return info;
}

SbName SoTreeViewItem::getPartParentName() const
{
    return isNamedPart() && m_partInfo->kit
               ? m_partInfo->kit->getNodekitCatalog()->getParentName(getPartNumber())
               : SbName::empty();
}

bool SoTreeViewItem::isPublicPart() const
{
    return isNamedPart() && m_partInfo->kit
           && m_partInfo->kit->getNodekitCatalog()->isPublic(getPartNumber());
}

SoNode* SoTreeViewItem::getPartKit() const
{
    return m_partInfo ? m_partInfo->kit : nullptr;
}

void SoTreeViewItem::setDisabledNode(bool on)
{
    m_disabled = on;
    setShown(!on && !m_filteredOut);
}

void SoTreeViewItem::setShown(bool on)
{
    if (m_shown == on)
        return;
    m_shown = on;
    if (SoTreeViewItem* above = parentItem())
        above->childrenChanged();
}

void SoTreeViewItem::updateReferenceMark(bool allowed)
{
    bool isShared = false;
    {
        const auto alive = m_context->news.keepAlive();
        isShared = !m_dead && m_node->getRefCount() >= 2;
    }
    if (!allowed || !isShared)
        m_referenceMark = false;
    else if (!hasNameIcon())
        m_referenceMark = true;
}

void SoTreeViewItem::setBookmarked(bool on)
{
    if (m_bookmarked == on)
        return;
    m_bookmarked = on;
    on ? m_context->bookmarks.add(this) : m_context->bookmarks.remove(this);
}

int SoTreeViewItem::childIndexValue() const
{
    if (!m_shown)
        return -1;
    const SoTreeViewItem* above = parentItem();
    if (!above)
        return numberAtTop();
    numberIn(above);
    return m_childIndex;
}

int SoTreeViewItem::numberAtTop() const
{
    int number = 0;
    for (int row = rowInParent(); row-- > 0;)
        if (static_cast<const SoTreeViewItem*>(treeWidget()->topLevelItem(row))->m_shown
            || m_context->showAll)
            ++number;
    return number;
}

int SoTreeViewItem::rowInParent() const
{
    const SoTreeViewItem* above = parentItem();
    if (!above)
        return treeWidget() ? treeWidget()->indexOfTopLevelItem(const_cast<SoTreeViewItem*>(this))
                            : 0;
    if (m_filteredOut)
        return above->hiddenRows().placeOf(this);
    numberIn(above);
    return above->m_hasHiddenRows ? above->hiddenRows().placeOfShown(m_row) : m_row;
}

void SoTreeViewItem::numberIn(const SoTreeViewItem* above) const
{
    if (!isNumberedIn(above))
        above->numberChildrenUpTo(this);
}

bool SoTreeViewItem::isNumberedIn(const SoTreeViewItem* above) const
{
    return m_row < above->m_numbered && above->childItem(m_row) == this;
}

void SoTreeViewItem::numberChildrenUpTo(const SoTreeViewItem* item) const
{
    // The row before tells the next number; one that is not shown keeps what the next will get.
    int number = 0;
    if (m_numbered > 0) {
        const SoTreeViewItem* last = childItem(m_numbered - 1);
        number = last->m_childIndex + (last->m_shown || m_context->showAll ? 1 : 0);
    }
    const SoTreeViewItem* at = nullptr;
    while (at != item && m_numbered < childCount()) {
        at = childItem(m_numbered);
        at->m_row = m_numbered++;
        at->m_childIndex = number;
        if (at->m_shown || m_context->showAll)
            ++number;
    }
}

/// Whether the row's node, if it lives, is in the graph that a GraphReading protects.
bool SoTreeViewItem::mayReadNode() const
{
    m_context->news.deliver();
    return !m_dead && !m_context->changedElsewhere;
}

int SoTreeViewItem::shownReferenceCount() const
{
    const mirabo::NodeTraits& traits = mirabo::traitsOf(m_type);
    if ((traits.isKit && !m_context->realKitCounter)
        || (traits.isVrml && !m_context->realVrmlCounter)) {
        const mirabo::GraphReading graph;
        return graph && mayReadNode() ? countHolders(m_node) : -1;
    }
    const auto alive = m_context->news.keepAlive();
    return m_dead ? -1 : m_node->getRefCount();
}

QString SoTreeViewItem::name() const
{
    if (isNamedPart())
        return toQString(getPartName());
    const mirabo::GraphReading graph;
    if (!graph || m_context->changedElsewhere)
        return {};
    SoRef<SoNode> node;
    {
        const auto alive = m_context->news.keepAlive();
        if (!m_dead && m_node->refIfAlive())
            node = SoRef<SoNode>::adopt(m_node);
    }
    return node ? toQString(node->getName()) : QString();
}

QString SoTreeViewItem::referenceCount() const
{
    const int count = shownReferenceCount();
    return count >= 0 ? QString::number(count) : QString();
}

QVariant SoTreeViewItem::text(int column) const
{
    switch (column) {
    case Type:
        return m_dead ? toQString(m_type.getName()) + " (deleted)" : toQString(m_type.getName());
    case Name:
        return name();
    case ReferenceCount:
        return referenceCount();
    default:
        return QTreeWidgetItem::data(column, Qt::DisplayRole);
    }
}

QVariant SoTreeViewItem::decoration(int column) const
{
    switch (column) {
    case Type: {
        const QIcon icon = mirabo::nodeIcon(m_type);
        return icon.isNull() ? QVariant() : icon;
    }
    case ReferenceMark:
        return m_referenceMark ? mirabo::namedIcon("ArrowShort") : QVariant();
    case Bookmark:
        return m_bookmarked ? mirabo::namedIcon("bookmark") : QIcon();
    default:
        return QTreeWidgetItem::data(column, Qt::DecorationRole);
    }
}

QVariant SoTreeViewItem::foreground(int column) const
{
    switch (column) {
    case Type:
        return QBrush(isGrey() ? Qt::darkGray : Qt::black);
    case Name:
        return QBrush(kNameColor);
    case ReferenceCount:
        return QBrush(Qt::blue);
    default:
        return QBrush(Qt::black);
    }
}

bool SoTreeViewItem::hasFieldNodeFont() const
{
    if (!m_context->styles.fieldNode.show)
        return false;
    return isPart() ? !isNamedPart() && isDirectlyFromField() : isFromField();
}

const mirabo::TextStyle* SoTreeViewItem::styleOf(int column) const
{
    const mirabo::TreeContext::Styles& styles = m_context->styles;
    switch (column) {
    case Type:
        return hasFieldNodeFont() ? &styles.fieldNode : &styles.type;
    case Name:
        return &styles.name;
    case ReferenceCount:
        return &styles.count;
    default:
        return nullptr;
    }
}

QVariant SoTreeViewItem::data(int column, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
        return text(column);
    case Qt::DecorationRole:
        return decoration(column);
    case Qt::ForegroundRole:
        return foreground(column);
    case Qt::FontRole:
        return styleOf(Type)->font;
    case Qt::UserRole:
        if (column == Type)
            return childIndexValue();
        break;
    default:
        break;
    }
    return QTreeWidgetItem::data(column, role);
}
