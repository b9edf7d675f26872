#include <kalmyr/core/SoLightPath.h>

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>

#include "core/NodeFields.h"

SoLightPath::SoLightPath(const SoPath& path, bool keepHead)
    : m_head(keepHead ? path.getHead() : nullptr)
{
    for (int i = 1; i < path.getLength(); ++i)
        m_steps.push_back({path.getNode(i), path.getIndex(i)});
}

SoRef<SoPath> SoLightPath::resolveFrom(SoNode* head) const
{
    if (!head)
        return nullptr;
    SoRef<SoPath> path(new SoPath(head));
    for (const Step& step : m_steps) {
        const SoNode* above = path->getTail();
        if (step.index < 0) {
            SoNode* node = kalmyr::detail::findInNodeFields(above, step.node);
            if (!node)
                return nullptr;
            path->append(node, -1);
            continue;
        }
        const SoChildList* list = above->getInternalChildren();
        if (!list)
            return nullptr;
        const bool kept = step.index < list->getLength() && (*list)[step.index] == step.node;
        const int index = kept ? step.index : list->find(step.node);
        if (index < 0)
            return nullptr;
        path->append((*list)[index], index);
    }
    return path;
}
