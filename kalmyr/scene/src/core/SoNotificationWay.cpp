#include <kalmyr/core/SoNotificationWay.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNotification.h>

#include <algorithm>
#include <cstddef>

namespace {

/// The parent of a container that one child list holds, and nobody else audits; else null. Only
/// above such ones are others left out.
SoFieldContainer* onlyParentOf(const SoFieldContainer* container)
{
    const SoAuditorList::Entry* only = container->getAuditors().getOnly();
    return only && only->type == SoAuditor::PARENT
               ? static_cast<const SoChildList*>(only->auditor)->getParent()
               : nullptr;
}

} // namespace

void kalmyr::getWay(const SoNotification& notification, std::vector<SoFieldContainer*>& way)
{
    way.clear();
    for (const auto* link = notification.chain; link; link = link->below) {
        way.push_back(link->container);
        if (!link->below)
            continue;
        const auto first = static_cast<std::ptrdiff_t>(way.size());
        SoFieldContainer* at = onlyParentOf(link->below->container);
        for (; at && at != link->container; at = onlyParentOf(at))
            way.push_back(at);
        std::reverse(way.begin() + first, way.end());
    }
}
