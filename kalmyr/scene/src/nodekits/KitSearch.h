#pragma once

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/nodekits/SoBaseKit.h>

namespace kalmyr::detail {

/// The search method of kits and of lists in kits: the node itself, and its parts when asked to.
inline void searchParts(SoAction* action, SoNode* node)
{
    auto* search = static_cast<SoSearchAction*>(action);
    search->check(node);
    const bool entersKits =
        search->isSearchingAll() || search->isSearchingKits() || SoBaseKit::isSearchingChildren();
    if (!search->hasTerminated() && entersKits)
        search->traverseChildren(*node->getInternalChildren());
}

} // namespace kalmyr::detail
