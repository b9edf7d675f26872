#include "vrml/PathRank.h"

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoLevelOfDetail.h>
#include <kalmyr/nodes/SoLOD.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLLOD.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>

namespace kalmyr::detail {

namespace {

bool isAny(const SoNode& node, std::initializer_list<SoType> types)
{
    for (const SoType type : types)
        if (!type.isBad() && node.isOfType(type))
            return true;
    return false;
}

/// Of levels of detail the finest counts.
bool isHidden(const SoNode& node, int child)
{
    if (node.isOfType(SoVRMLSwitch::getClassTypeId()))
        return static_cast<const SoVRMLSwitch&>(node).whichChoice.getValue() != child;
    if (node.isOfType(SoSwitch::getClassTypeId())) {
        const int chosen = static_cast<const SoSwitch&>(node).whichChild.getValue();
        return chosen != child && chosen != SO_SWITCH_ALL && chosen != SO_SWITCH_INHERIT;
    }
    return child > 0
           && isAny(node, {SoVRMLLOD::getClassTypeId(), SoLOD::getClassTypeId(),
                           SoLevelOfDetail::getClassTypeId()});
}

} // namespace

PathRank rankOf(const SoPath& path)
{
    PathRank rank = PathRank::SHOWN;
    for (int i = 0; i + 1 < path.getLength(); ++i) {
        const SoNode& node = *path.getNode(i);
        if (isHidden(node, path.getIndex(i + 1)))
            return PathRank::HIDDEN;
        if (isAny(node, {SoVRMLInline::getClassTypeId(), SoWWWInline::getClassTypeId(),
                         SoFile::getClassTypeId()}))
            rank = PathRank::INLINED;
    }
    return rank;
}

std::vector<const SoPath*> rankedPaths(const SoSearchAction& search)
{
    std::vector<const SoPath*> ranked;
    for (const PathRank rank : {PathRank::SHOWN, PathRank::INLINED, PathRank::HIDDEN})
        for (const SoRef<SoPath>& path : search.getPaths())
            if (rankOf(*path) == rank)
                ranked.push_back(path.get());
    return ranked;
}

} // namespace kalmyr::detail
