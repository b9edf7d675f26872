#include "SceneNodes.h"

#include "FieldText.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoReadLock.h>
#include <mirabo/extender/MrbServices.h>

#include <algorithm>
#include <unordered_set>

namespace {

constexpr double kPatience = 0.05; // seconds

/// Visits every node of the scene once, until the visitor returns false.
void visitScene(const std::function<bool(SoNode*)>& visit)
{
    MrbServices* services = MrbServices::getInstance();
    SoNode* root = services ? services->getSceneGraph() : nullptr;
    const SoReadLock lock{SbTime(kPatience)};
    if (!root || !lock)
        return;
    std::unordered_set<const SoNode*> seen{root};
    std::vector<SoNode*> open{root};
    while (!open.empty()) {
        SoNode* node = open.back();
        open.pop_back();
        if (!visit(node))
            return;
        const SoChildList* children = node->getChildren();
        if (!children)
            continue;
        const std::vector<SoNode*>& nodes = children->getNodes();
        for (auto child = nodes.rbegin(); child != nodes.rend(); ++child)
            if (*child && seen.insert(*child).second)
                open.push_back(*child);
    }
}

} // namespace

QString describe(const SoFieldContainer& container)
{
    const QString type = toText(container.getTypeId().getName());
    const QString name = toText(container.getName());
    return name.isEmpty() ? type : type + " \"" + name + '"';
}

std::vector<SceneNode> findSceneNodes(const QString& filter, int limit, bool& isCut)
{
    std::vector<SceneNode> named;
    std::vector<SceneNode> others;
    isCut = false;
    visitScene([&](SoNode* node) {
        const QString text = describe(*node);
        if (!text.contains(filter, Qt::CaseInsensitive))
            return true;
        auto& list = node->getName().isEmpty() ? others : named;
        if (static_cast<int>(list.size()) < limit)
            list.push_back({node, text});
        else
            isCut = true;
        return static_cast<int>(named.size()) < limit;
    });
    named.insert(named.end(), others.begin(), others.end());
    if (static_cast<int>(named.size()) > limit) {
        named.resize(static_cast<std::size_t>(limit));
        isCut = true;
    }
    return named;
}

SoRef<SoNode> resolveSceneNode(const SoNode* node)
{
    SoRef<SoNode> found;
    visitScene([&](SoNode* candidate) {
        if (candidate == node)
            found = candidate;
        return !found;
    });
    return found;
}
