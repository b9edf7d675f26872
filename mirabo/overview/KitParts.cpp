#include "mirabo/overview/KitParts.h"

#include <kalmyr/nodekits/SoBaseKit.h>

namespace mirabo {

namespace {

bool isKit(const SoNode* node)
{
    // Node kits are a module that may not be there.
    return node && !SoBaseKit::getClassTypeId().isBad()
           && node->isOfType(SoBaseKit::getClassTypeId());
}

} // namespace

PartKind partKind(const SoNode* node, const SbName& fieldName)
{
    if (!isKit(node))
        return PartKind::None;
    const SoNodekitCatalog* catalog = static_cast<const SoBaseKit*>(node)->getNodekitCatalog();
    const int part = catalog ? catalog->getPartNumber(fieldName) : -1;
    if (part < 0)
        return PartKind::None;
    return catalog->isPublic(part) ? PartKind::Public : PartKind::Private;
}

QString partName(const SoNode* kit, const SoNode* node)
{
    if (!isKit(kit))
        return {};
    const SbString name = static_cast<const SoBaseKit*>(kit)->getPartString(node);
    return QString::fromUtf8(name.getString(), static_cast<int>(name.getLength()));
}

} // namespace mirabo
