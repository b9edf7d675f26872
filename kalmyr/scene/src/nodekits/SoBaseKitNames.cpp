// Finds the name of a node as a part: the way up from the node.

#include <kalmyr/nodekits/SoBaseKit.h>

#include <kalmyr/nodekits/SoNodeKitListPart.h>

#include <algorithm>

namespace {

/// The container that holds a node through that auditor, if it is of the type; else null.
template <class Holder>
Holder* holderOf(const SoAuditorList::Entry& entry)
{
    if (entry.type != SoAuditor::FIELD)
        return nullptr;
    SoFieldContainer* container = static_cast<SoField*>(entry.auditor)->getContainer();
    return container && container->isOfType(Holder::getClassTypeId())
               ? static_cast<Holder*>(container)
               : nullptr;
}

/// Calls the function with every kit that has the node as a part or in a list, until it is true.
template <class Function>
bool anyHoldingKit(const SoNode* node, Function function)
{
    const SoAuditorList& auditors = node->getAuditors();
    for (int i = 0; i < auditors.getLength(); ++i) {
        if (const SoBaseKit* kit = holderOf<SoBaseKit>(auditors[i])) {
            if (function(kit))
                return true;
        } else if (auditors[i].type == SoAuditor::PARENT) {
            const SoNode* group = static_cast<SoChildList*>(auditors[i].auditor)->getParent();
            const SoAuditorList& above = group->getAuditors();
            for (int k = 0; k < above.getLength(); ++k) {
                const auto* list = holderOf<SoNodeKitListPart>(above[k]);
                if (list && anyHoldingKit(list, function))
                    return true;
            }
        }
    }
    return false;
}

} // namespace

std::string SoBaseKit::ownPartName(const SoNode* node) const
{
    const SoNodekitCatalog* catalog = getNodekitCatalog();
    for (int part = 1; part < catalog->getNumEntries(); ++part)
        if (getAnyPart(part) == node)
            return std::string(catalog->getName(part).view());
    for (int part = 1; part < catalog->getNumEntries(); ++part) {
        const SoNode* list = catalog->isList(part) ? getAnyPart(part) : nullptr;
        const int index = list ? static_cast<const SoNodeKitListPart*>(list)->findChild(node) : -1;
        if (index >= 0)
            return std::string(catalog->getName(part).view()) + '[' + std::to_string(index) + ']';
    }
    return {};
}

std::string SoBaseKit::nestedPartName(const SoNode* node, Seen& seen) const
{
    std::string name = ownPartName(node);
    if (!name.empty())
        return name;
    anyHoldingKit(node, [&](const SoBaseKit* kit) {
        if (kit == this || !seen.insert(kit).second)
            return false;
        const std::string above = nestedPartName(kit, seen);
        if (!above.empty())
            name = above + '.' + kit->ownPartName(node);
        return !name.empty();
    });
    return name;
}

SbString SoBaseKit::getPartString(const SoNode* node) const
{
    if (!node || node == this)
        return {};
    Seen seen;
    return SbString(nestedPartName(node, seen));
}
