// Parts asked for and set by names that may lead into lists and other kits.

#include <kalmyr/nodekits/SoBaseKit.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>

#include "PartName.h"

SoNode* SoBaseKit::partAt(const kalmyr::detail::PartName& name, bool makeIfNeeded)
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    const int part = catalog->getPartNumber(SbName::find(name.part));
    if (part <= 0 || !catalog->isPublic(part))
        return nullptr;
    SoNode* node = makeIfNeeded ? makePart(part) : getAnyPart(part);
    if (name.index < 0 || !node)
        return node;
    if (!catalog->isList(part))
        return nullptr;
    auto* list = static_cast<SoNodeKitListPart*>(node);
    if (makeIfNeeded && name.index == list->getNumChildren()) {
        const SoRef<SoNode> made(list->makeChild());
        if (made)
            list->addChild(made.get());
    }
    return name.index < list->getNumChildren() ? list->getChild(name.index) : nullptr;
}

SoBaseKit* SoBaseKit::kitAt(const kalmyr::detail::PartName& name, bool makeIfNeeded)
{
    SoNode* node = partAt(name, makeIfNeeded);
    return node && node->isOfType(SoBaseKit::getClassTypeId()) ? static_cast<SoBaseKit*>(node)
                                                               : nullptr;
}

SoNode* SoBaseKit::getPart(const SbString& name, bool makeIfNeeded)
{
    kalmyr::detail::PartName first;
    if (!first.parse(name.view()))
        return nullptr;
    const SoRef<SoBaseKit> self(getRefCount() > 0 ? this : nullptr); // listeners may let go of it
    if (first.rest.empty())
        return partAt(first, makeIfNeeded);
    const SoRef<SoBaseKit> kit(kitAt(first, makeIfNeeded));
    return kit ? kit->getPart(SbString(first.rest), makeIfNeeded) : nullptr;
}

bool SoBaseKit::setPart(const SbString& name, SoNode* node)
{
    kalmyr::detail::PartName first;
    if (!first.parse(name.view()))
        return false;
    const SoRef<SoBaseKit> self(getRefCount() > 0 ? this : nullptr); // listeners may let go of it
    if (!first.rest.empty()) {
        const SoRef<SoBaseKit> kit(kitAt(first, node != nullptr));
        return kit && kit->setPart(SbString(first.rest), node);
    }
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    const int part = catalog->getPartNumber(SbName::find(first.part));
    if (part <= 0 || !catalog->isPublic(part))
        return false;
    return first.index < 0 ? setPartNode(part, node) : setListEntry(part, first.index, node);
}

bool SoBaseKit::setListEntry(int part, int index, SoNode* node)
{
    if (!getNodekitCatalog()->isList(part))
        return false;
    auto* list = static_cast<SoNodeKitListPart*>(getAnyPart(part));
    const int num = list ? list->getNumChildren() : 0;
    if (!node)
        return index < num && list->removeChild(index);
    if (index > num || isAtOrBelow(node)
        || !getNodekitCatalog()->isListItem(part, node->getTypeId()))
        return false;
    list = static_cast<SoNodeKitListPart*>(makePart(part));
    return index == num ? list->addChild(node) : list->replaceChild(index, node);
}

bool SoBaseKit::setPartAsDefault(const SbString& name, SoNode* node)
{
    if (!setPart(name, node))
        return false;
    if (SoField* field = getField(SbName::find(name.view())))
        field->setDefault(true);
    return true;
}

namespace {

bool setPartFields(SoBaseKit& kit, const SbString& part, const SbString& fields)
{
    SoNode* node = kit.getPart(part, true);
    if (!node)
        return false;
    return node->isOfType(SoBaseKit::getClassTypeId()) ? static_cast<SoBaseKit*>(node)->set(fields)
                                                       : node->set(fields);
}

bool setPartTexts(SoBaseKit& kit, std::string_view text)
{
    std::string_view part, fields;
    while (kalmyr::detail::takePartText(text, part, fields))
        if (!setPartFields(kit, SbString(part), SbString(fields)))
            return false;
    return text.empty();
}

} // namespace

// On a copy first, so that a fault leaves everything as it was.

bool SoBaseKit::set(const SbString& part, const char* fields)
{
    if (!kalmyr::holds(fields, "a text"))
        return false;
    const SoRef<SoNode> trial(copy());
    return trial && setPartFields(static_cast<SoBaseKit&>(*trial), part, fields)
           && setPartFields(*this, part, fields);
}

bool SoBaseKit::set(const char* text)
{
    return kalmyr::holds(text, "a text") && set(SbString(text));
}

bool SoBaseKit::set(const SbString& text)
{
    if (!kalmyr::detail::isPartText(text.view()))
        return SoNode::set(text);
    const SoRef<SoNode> trial(copy());
    return trial && setPartTexts(static_cast<SoBaseKit&>(*trial), text.view())
           && setPartTexts(*this, text.view());
}

SoPath* SoBaseKit::createPathToPart(const SbString& name, bool makeIfNeeded)
{
    SoRef<SoPath> path(new SoPath(this));
    return extendPath(*path, name.view(), makeIfNeeded) ? path.release() : nullptr;
}

bool SoBaseKit::extendPath(SoPath& path, std::string_view name, bool makeIfNeeded)
{
    kalmyr::detail::PartName first;
    if (!first.parse(name))
        return false;
    const int part = getNodekitCatalog()->getPartNumber(SbName::find(first.part));
    SoNode* node = partAt(first, makeIfNeeded);
    if ((!node && first.index >= 0) || !appendPart(path, part))
        return false;
    if (first.index >= 0) {
        path.append(0); // the group of the list
        path.append(first.index);
    }
    if (first.rest.empty())
        return true;
    SoNode* tail = path.getTail();
    return tail->isOfType(SoBaseKit::getClassTypeId())
           && static_cast<SoBaseKit*>(tail)->extendPath(path, first.rest, makeIfNeeded);
}

bool SoBaseKit::appendPart(SoPath& path, int part) const
{
    SoNode* node = getAnyPart(part);
    if (!node)
        return false;
    const int parent = getNodekitCatalog()->getParentPartNumber(part);
    if (parent > 0 && !appendPart(path, parent))
        return false;
    const SoChildList* list = path.getTail()->getInternalChildren();
    const int index = list ? list->find(node) : -1;
    if (index >= 0)
        path.append(index);
    return index >= 0;
}
