#include "io/CameraReach.h"

#include "core/StackSwitch.h"

#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/nodes/SoInlineNode.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>

#include <unordered_map>

namespace kalmyr::detail {

namespace {

bool isKnownAs(const SoNode& node, SoType type)
{
    return !type.isBad() && node.isOfType(type);
}

bool isInline(const SoNode& node)
{
    return node.isOfType(SoWWWInline::getClassTypeId())
           || isKnownAs(node, SoVRMLInline::getClassTypeId());
}

bool isShape(const SoNode& node)
{
    return node.isOfType(SoShape::getClassTypeId())
           || isKnownAs(node, SoVRMLShape::getClassTypeId());
}

/// Which shapes at and below a node are seen through which camera.
struct Reach {
    bool isBare = false;        ///< some through the camera that stood in front of the node
    bool isViewSeeing = false;  ///< some through the one that counts
    bool isOtherSeeing = false; ///< some through another one below the node
    const SoNode* behind =
        nullptr; ///< the camera that what follows is seen through; null: as before

    void append(const Reach& next, const SoNode* view)
    {
        isBare |= next.isBare && !behind;
        isViewSeeing |= next.isViewSeeing || (next.isBare && behind == view && behind);
        isOtherSeeing |= next.isOtherSeeing || (next.isBare && behind && behind != view);
        if (next.behind)
            behind = next.behind;
    }
};

class Walk {
public:
    explicit Walk(const SoNode* view) : m_view(view) {}

    Reach reachOf(const SoNode& node, const char* limit)
    {
        if (isStackLow(limit)) {
            Reach reach;
            callOnNewStack([&](const char* newLimit) { reach = reachOf(node, newLimit); });
            return reach;
        }
        const bool isShared = node.getAuditors().getLength() > 1;
        if (isShared)
            if (const auto known = m_known.find(&node); known != m_known.end())
                return known->second;
        const Reach reach = visit(node, limit);
        if (isShared)
            m_known.emplace(&node, reach);
        return reach;
    }

    /// Nothing that was visited is foreign to VRML 1.0.
    bool isVrml1() const { return m_isVrml1; }
    bool isViewMet() const { return m_isViewMet; }

private:
    Reach visit(const SoNode& node, const char* limit)
    {
        Reach reach;
        if (m_numInlines == 0)
            m_isVrml1 = m_isVrml1 && isVrml1Type(node.getTypeId());
        if (isShape(node)) {
            reach.isBare = true;
        } else if (node.isOfType(SoCamera::getClassTypeId())) {
            reach.behind = &node;
            m_isViewMet |= &node == m_view;
        } else {
            m_numInlines += isInline(node) ? 1 : 0;
            visitChildren(node, reach, limit);
            m_numInlines -= isInline(node) ? 1 : 0;
            if (!node.affectsState())
                reach.behind = nullptr;
        }
        return reach;
    }

    void visitChildren(const SoNode& node, Reach& reach, const char* limit)
    {
        const SoChildList* children = node.getInternalChildren();
        if (!children)
            return;
        int first = isInline(node) ? 1 : 0; // the first one only stands for its box
        int last = children->getLength() - 1;
        if (const int chosen = choiceOf(node); chosen != SO_SWITCH_ALL)
            first = last = chosen;
        for (int i = first; i >= 0 && i <= last && i < children->getLength(); ++i)
            reach.append(reachOf(*(*children)[i], limit), m_view);
    }

    static int choiceOf(const SoNode& node)
    {
        int chosen = SO_SWITCH_ALL;
        if (node.isOfType(SoSwitch::getClassTypeId()))
            chosen = static_cast<const SoSwitch&>(node).whichChild.getValue();
        else if (isKnownAs(node, SoVRMLSwitch::getClassTypeId()))
            chosen = static_cast<const SoVRMLSwitch&>(node).whichChoice.getValue();
        return chosen == SO_SWITCH_INHERIT ? SO_SWITCH_ALL : chosen;
    }

    bool isVrml1Type(SoType type)
    {
        const auto [known, isNew] = m_vrml1Types.try_emplace(type.getIndex());
        if (isNew)
            known->second =
                SoToVRMLAction::isVrml1Type(type) || type == SoSelection::getClassTypeId();
        return known->second;
    }

    const SoNode* m_view;
    std::unordered_map<const SoNode*, Reach> m_known; ///< of nodes that may occur several times
    std::unordered_map<int, bool> m_vrml1Types;       ///< by index
    int m_numInlines = 0;                             ///< around the node that is visited
    bool m_isVrml1 = true;
    bool m_isViewMet = false;
};

} // namespace

bool reachesAll(SoNode* scene, const SoCamera* camera)
{
    Walk walk(camera);
    const Reach reach = walk.reachOf(*scene, stackLimit());
    if (reach.isBare || (reach.isOtherSeeing && walk.isVrml1()))
        return false;
    const bool isEmpty = !reach.isOtherSeeing && walk.isViewMet(); // shapes may come later
    return reach.isViewSeeing || isEmpty;
}

} // namespace kalmyr::detail
