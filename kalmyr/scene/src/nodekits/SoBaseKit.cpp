#include <kalmyr/nodekits/SoBaseKit.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodes/SoCallback.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/nodes/SoSeparator.h>

#include "KitSearch.h"
#include "PartName.h"

#include <algorithm>
#include <utility>

SO_NODE_SOURCE(SoBaseKit)
SoNodekitCatalog* SoBaseKit::s_catalog = nullptr;

namespace {

constinit thread_local bool t_searchingChildren = false;

int placeFrom(const SoChildList& list, int start, const SoNode* node)
{
    const auto& nodes = list.getNodes();
    const auto at = std::find(nodes.begin() + start, nodes.end(), node);
    return at == nodes.end() ? -1 : static_cast<int>(at - nodes.begin());
}

} // namespace

SoBaseKit::SoBaseKit() : m_children(this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_KIT_PART(callbackList);
    SO_KIT_MAKE_PARTS();
}

SoBaseKit::~SoBaseKit() = default;

void SoBaseKit::initClass()
{
    SO_NODE_INIT_CLASS(SoBaseKit, SoNode, "BaseKit");
    delete s_catalog;
    s_catalog = new SoNodekitCatalog(s_classTypeId);
    s_catalog->addListPart("callbackList", SoNodeKitListPart::getClassTypeId(),
                           SoSeparator::getClassTypeId(),
                           {SoCallback::getClassTypeId(), SoEventCallback::getClassTypeId()},
                           {SoNodekitCatalog::thisName(), ""});
    SoSearchAction::addMethod(getClassTypeId(), kalmyr::detail::searchParts);
}

const SoNodekitCatalog* SoBaseKit::getNodekitCatalog() const
{
    return s_catalog;
}

SoSFNode* SoBaseKit::fieldOf(int part) const
{
    return static_cast<SoSFNode*>(getField(getNodekitCatalog()->getName(part)));
}

SoNode* SoBaseKit::getAnyPart(int part) const
{
    const auto i = static_cast<std::size_t>(part);
    return part > 0 && i < m_placed.size() ? m_placed[i] : nullptr;
}

// Arranging: the kit's graph follows its part fields.

void SoBaseKit::makeDefaultParts(const SoNodekitCatalog& catalog)
{
    m_placed.resize(static_cast<std::size_t>(catalog.getNumEntries()));
    for (int part = 1; part < catalog.getNumEntries(); ++part) {
        const SoNode* present = getAnyPart(part);
        const bool wanted = !catalog.isNullByDefault(part);
        // Parts that the parent class made may not be of the type that this class wants.
        if (present && catalog.isLeaf(part)
            && (!wanted || present->getTypeId() != catalog.getDefaultType(part))) {
            arrange(part, nullptr);
            fieldOf(part)->initValue(nullptr);
        }
        if (wanted && makePart(part))
            fieldOf(part)->setDefault(true);
    }
}

SoNode* SoBaseKit::makePart(int part)
{
    if (SoNode* present = getAnyPart(part))
        return present;
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    const SoRef<SoNode> made(SoNode::create(catalog->getDefaultType(part)));
    if (!made)
        return nullptr;
    if (catalog->isLeaf(part))
        return setPartNode(part, made.get()) ? getAnyPart(part) : nullptr;
    // A group of the kit's own is no news to those who watch the field.
    if (!arrange(part, made.get()))
        return nullptr;
    // An immediate sensor may have taken it out again: only what is placed is held.
    if (getAnyPart(part) != made.get())
        return getAnyPart(part);
    fieldOf(part)->initValue(made.get());
    return made.get();
}

SoChildList* SoBaseKit::listAbove(int part)
{
    const int parent = getNodekitCatalog()->getParentPartNumber(part);
    if (parent == 0)
        return &m_children;
    SoNode* group = makePart(parent);
    return group ? group->getChildren() : nullptr;
}

int SoBaseKit::indexAt(int part, const SoChildList& list) const
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    int index = 0;
    for (const int sibling : catalog->getPartsBelow(catalog->getParentPartNumber(part))) {
        if (sibling == part)
            break;
        const SoNode* node = getAnyPart(sibling);
        const int at = node ? placeFrom(list, index, node) : -1;
        if (at >= 0)
            index = at + 1;
    }
    return index;
}

bool SoBaseKit::arrange(int part, SoNode* node)
{
    SoNode* old = getAnyPart(part);
    SoChildList* list = node || old ? listAbove(part) : nullptr;
    if (!list)
        return !node;
    const SoRef<SoNode> group(getAnyPart(getNodekitCatalog()->getParentPartNumber(part)));
    const int index = indexAt(part, *list);
    int oldIndex = old ? placeFrom(*list, index, old) : -1;
    if (old && oldIndex < 0)
        oldIndex = list->find(old); // somebody has moved it in front of its place
    // First, for those who hear of the edit ask for part names.
    m_placed[static_cast<std::size_t>(part)] = node;
    bool done = true;
    if (node)
        done = oldIndex >= 0 ? list->set(oldIndex, node) : list->insert(node, index);
    else if (oldIndex >= 0)
        list->remove(oldIndex);
    if (!done)
        m_placed[static_cast<std::size_t>(part)] = old;
    else
        std::erase_if(m_lost, [part](const auto& lost) { return lost.first == part; });
    return done;
}

bool SoBaseKit::mayStandAt(int part, const SoNode* node) const
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    if (!catalog->isLeaf(part))
        return false;
    if (!node)
        return true;
    if (!node->isOfType(catalog->getType(part)) || isAtOrBelow(node) || !acceptsPart(part, node))
        return false;
    if (!catalog->isList(part))
        return true;
    const auto* list = static_cast<const SoNodeKitListPart*>(node);
    const SoNode* group = list->containerNode.getValue();
    if (group && !group->isOfType(catalog->getListContainerType(part)))
        return false;
    for (int i = 0; i < list->getNumChildren(); ++i)
        if (!catalog->isListItem(part, list->getChild(i)->getTypeId()))
            return false;
    return true;
}

SbString SoBaseKit::whyNot(int part, const SoNode* node) const
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    const auto nameOf = [](SoType type) { return std::string(type.getName().view()); };
    std::string wanted = "a " + nameOf(catalog->getType(part));
    if (!catalog->isLeaf(part)) {
        wanted = "nothing: the kit makes it itself";
    } else if (catalog->isList(part)) {
        wanted = "a list in a " + nameOf(catalog->getListContainerType(part)) + " of";
        for (const SoType type : catalog->getListItemTypes(part))
            wanted += ' ' + nameOf(type);
    }
    return SbString((node ? nameOf(node->getTypeId()) : "NULL") + " cannot be the part \""
                    + catalog->getName(part).getString() + "\" of a " + nameOf(getTypeId())
                    + ", which takes " + wanted);
}

bool SoBaseKit::acceptsValue(const SoField& field, const SoNode* value, SbString& why) const
{
    const int part = getNodekitCatalog()->getPartNumber(getFieldName(&field));
    if (part <= 0 || getAnyPart(part) == value || mayStandAt(part, value))
        return true;
    why = whyNot(part, value);
    return false;
}

void SoBaseKit::equipList(int part, SoNodeKitListPart* list) const
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    std::vector<SbName> names;
    for (const SoType type : catalog->getListItemTypes(part))
        names.push_back(type.getName());
    list->containerTypeName.setValue(catalog->getListContainerType(part).getName());
    list->childTypeNames.setValues(0, static_cast<int>(names.size()), names.data());
    list->childTypeNames.setNum(static_cast<int>(names.size()));
    // They come with the kit.
    list->containerTypeName.setDefault(true);
    list->childTypeNames.setDefault(true);
    list->lockTypes();
}

bool SoBaseKit::setPartNode(int part, SoNode* node)
{
    const SoRef<SoNode> old(getAnyPart(part));
    if (old.get() == node)
        return true;
    if (!mayStandAt(part, node))
        return false;
    if (node && getNodekitCatalog()->isList(part))
        equipList(part, static_cast<SoNodeKitListPart*>(node));
    if (!arrange(part, node))
        return false;
    fieldOf(part)->setValue(node);
    return true;
}

void SoBaseKit::followField(const SoField* field)
{
    const int part = getNodekitCatalog()->getPartNumber(getFieldName(field));
    if (part <= 0 || static_cast<std::size_t>(part) >= m_placed.size())
        return;
    SoSFNode* own = fieldOf(part);
    const SoRef<SoNode> node(own->getValue());
    SoNode* present = getAnyPart(part);
    if (node.get() == present)
        return;
    if (mayStandAt(part, node.get())) {
        if (node && getNodekitCatalog()->isList(part))
            equipList(part, static_cast<SoNodeKitListPart*>(node.get()));
        if (arrange(part, node.get()))
            return;
    }
    own->initValue(present);
    SoDebugError::post("SoBaseKit", "%s", whyNot(part, node.get()).getString());
}

void SoBaseKit::losePart(int part)
{
    m_lost.emplace_back(part, getAnyPart(part));
    m_placed[static_cast<std::size_t>(part)] = nullptr;
    fieldOf(part)->initValue(nullptr);
    fieldOf(part)->touch();
}

void SoBaseKit::regainPart(int part, SoNode* node)
{
    m_placed[static_cast<std::size_t>(part)] = node;
    fieldOf(part)->initValue(node);
    fieldOf(part)->touch();
}

void SoBaseKit::followEdit(const SoNotification& notification)
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    const auto* above = static_cast<const SoNode*>(notification.container);
    const auto group = std::find(m_placed.begin(), m_placed.end(), above);
    if (group == m_placed.end())
        return;
    const auto& below = catalog->getPartsBelow(static_cast<int>(group - m_placed.begin()));
    if (below.empty())
        return; // a part with children of its own
    const SoChildList& list = *above->getChildren();
    for (const int part : below) {
        SoNode* node = getAnyPart(part);
        if (node && list.find(node) < 0)
            losePart(part);
    }
    const auto isBack = [&](const std::pair<int, const SoNode*>& lost) {
        return lost.second == notification.child && !getAnyPart(lost.first)
               && std::find(below.begin(), below.end(), lost.first) != below.end()
               && list.find(lost.second) >= 0;
    };
    const auto back = std::find_if(m_lost.begin(), m_lost.end(), isBack);
    if (back == m_lost.end())
        return;
    const int part = back->first;
    m_lost.erase(back);
    regainPart(part, notification.child);
}

bool SoBaseKit::noteChange(const SoNotification& notification)
{
    // Also while it arranges itself: immediate sensors edit meanwhile.
    if (notification.kind != SoNotification::UNSPECIFIED)
        followEdit(notification);
    if (notification.container == this && notification.field)
        followField(notification.field);
    return true;
}

// Traversal, copies and files.

bool SoBaseKit::affectsState() const
{
    const auto& nodes = m_children.getNodes();
    return std::any_of(nodes.begin(), nodes.end(), [](SoNode* n) { return n->affectsState(); });
}

void SoBaseKit::doAction(SoAction* action)
{
    action->traverseChildren(m_children);
}

void SoBaseKit::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    // The fields only bring what is not as the kit made it.
    const auto* source = static_cast<const SoBaseKit*>(from);
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    for (int part = 1; part < catalog->getNumEntries(); ++part) {
        SoNode* original = source->getAnyPart(part);
        if (catalog->isLeaf(part)) {
            const bool wasDefault = fieldOf(part)->isDefault();
            setPartNode(part, copier.copyOf(original));
            fieldOf(part)->setDefault(wasDefault);
        } else if (original && makePart(part)) {
            getAnyPart(part)->copyFieldValues(original);
        }
    }
}

void SoBaseKit::setToDefaults()
{
    const SoRef<SoNode> pristine(SoNode::create(getTypeId()));
    if (!pristine)
        return;
    const auto* model = static_cast<const SoBaseKit*>(pristine.get());
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    const SoFieldData* data = getFieldData();
    for (int i = 0; i < data->getNumFields(); ++i) {
        SoField* field = data->getField(this, i);
        const int part = catalog->getPartNumber(data->getFieldName(i));
        if (part <= 0) {
            field->resetTo(*data->getField(model, i));
        } else if (catalog->isLeaf(part)) {
            setPartNode(part, model->getAnyPart(part));
            field->setDefault(true);
        }
    }
}

bool SoBaseKit::isFieldWritten(const SoField& field) const
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    const int part = catalog->getPartNumber(getFieldName(&field));
    if (part <= 0)
        return SoNode::isFieldWritten(field);
    if (!catalog->isLeaf(part) || !catalog->isPublic(part))
        return false;
    if (!getAnyPart(part))
        return !catalog->isNullByDefault(part);
    if (field.isIgnored() || field.isConnected())
        return true;
    const bool mayBeUntouched = field.isDefault() || catalog->isList(part);
    return !mayBeUntouched || !kalmyr::detail::isUntouchedPart(getAnyPart(part));
}

void SoBaseKit::setSearchingChildren(bool on)
{
    t_searchingChildren = on;
}

bool SoBaseKit::isSearchingChildren()
{
    return t_searchingChildren;
}
