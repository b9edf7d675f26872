#include "PathCut.h"

#include "WrittenText.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

namespace kalmyr::detail {

void PathCut::keepOnly(const SoPath& path)
{
    for (int i = 1; i < path.getLength(); ++i)
        m_onPath[path.getNode(i - 1)] = path.getIndex(i);
}

bool PathCut::isKept(const SoNode* parent, const SoNode* child, int index) const
{
    const auto onPath = m_onPath.find(parent);
    if (onPath == m_onPath.end())
        return true;
    return index == onPath->second || (index < onPath->second && child->affectsState());
}

void PathCut::begin(WrittenText& text)
{
    text << "Path {\n  head ";
    text.indent();
}

void PathCut::end(WrittenText& text, const SoPath& path) const
{
    text << "\n  indices [";
    for (int i = 1; i < path.getLength(); ++i) {
        const SoNode* parent = path.getNode(i - 1);
        const SoChildList* list = parent->getChildren();
        int index = 0;
        for (int k = 0; k < path.getIndex(i); ++k)
            index += isKept(parent, (*list)[k], k);
        text << (i > 1 ? ", " : " ") << index;
    }
    text << " ]\n}";
    text.outdent();
}

} // namespace kalmyr::detail
