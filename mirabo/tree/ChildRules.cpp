#include "mirabo/tree/ChildRules.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extender/private/Observed.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/TreeContext.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/nodekits/SoBaseKit.h>

#include <algorithm>
#include <unordered_set>

namespace mirabo {

namespace {

bool s_vrmlScene = false;

/// The root that has not been searched yet. Not destroyed with the library: it may follow a node.
Observed<SoNode>& unsearched()
{
    static auto* const root = new Observed<SoNode>;
    return *root;
}

/// Of the scene itself: what files and inlines hold, which is another file's, says nothing.
bool hasVrmlGroup(const SoNode* root)
{
    std::unordered_set<const SoNode*> known{root};
    std::vector<const SoNode*> waiting{root};
    while (!waiting.empty()) {
        const SoNode* node = waiting.back();
        waiting.pop_back();
        const NodeTraits& traits = traitsOf(node->getTypeId());
        if (traits.isVrmlParent)
            return true;
        const SoChildList* children = node->getInternalChildren();
        if (!children || traits.isFile || traits.isInline)
            continue;
        for (const SoNode* child : children->getNodes())
            if (known.insert(child).second)
                waiting.push_back(child);
    }
    return false;
}

ShownChildren allOf(const SoChildList* list, int first = 0)
{
    return list ? ShownChildren{&list->getNodes(), first} : ShownChildren{};
}

/// Event-in and internal fields stand behind those that users see: the walk ends at the first.
bool endsWalk(const SoField* field)
{
    const SoField::FieldType type = field->getFieldType();
    return type == SoField::EVENT_IN || type == SoField::INTERNAL;
}

void appendNodes(SoField* field, std::vector<PlacedNode>& out)
{
    if (field->isOfType(SoSFNode::getClassTypeId())) {
        if (SoNode* node = static_cast<SoSFNode*>(field)->getValue())
            out.push_back({field, node});
        return;
    }
    const auto* list = static_cast<SoMNodeField*>(field);
    if (list->isBound())
        return; // stands for the child list, which is shown already
    for (SoNode* node : list->getValues())
        if (node)
            out.push_back({field, node});
}

/// A part that hangs below another part has its row there, and so have all that follow.
bool hangsBelowAPart(const SoBaseKit* kit, const SoNode* node)
{
    const SbString part = kit->getPartString(node);
    return part.getLength() > 0
           && kit->getNodekitCatalog()->getParentPartNumber(SbName(part.getString())) != 0;
}

bool endsWalkOfKit(const SoBaseKit* kit, SoField* field)
{
    if (endsWalk(field))
        return true;
    return field->isOfType(SoSFBufferObject::getClassTypeId())
           && static_cast<SoSFBufferObject*>(field)->getValue()
           && kit->getNodekitCatalog()->getParentPartNumber("SoBufferObject") != 0;
}

void appendNodesOfKit(const SoBaseKit* kit, const SoFieldData* data, std::vector<PlacedNode>& out)
{
    std::vector<PlacedNode> places;
    for (int i = 0; i < data->getNumFields(); ++i) {
        SoField* field = data->getField(kit, i);
        if (endsWalkOfKit(kit, field))
            return;
        if (!isNodeField(field))
            continue;
        places.clear();
        appendNodes(field, places);
        for (const PlacedNode& place : places) {
            if (hangsBelowAPart(kit, place.node))
                return;
            out.push_back(place);
        }
    }
}

} // namespace

int ShownChildren::count() const
{
    return nodes ? std::max(0, static_cast<int>(nodes->size()) - first) : 0;
}

bool isVrmlScene()
{
    if (!unsearched())
        return s_vrmlScene;
    const GraphReading graph;
    if (graph && unsearched())
        setVrmlScene(hasVrmlGroup(unsearched().get()));
    return s_vrmlScene;
}

void setVrmlScene(bool on)
{
    unsearched().reset();
    s_vrmlScene = on;
}

void setVrmlSceneBy(SoNode* root)
{
    setVrmlScene(root && traitsOf(root->getTypeId()).isVrmlParent);
    if (root && !s_vrmlScene)
        unsearched().reset(root);
}

ShownChildren shownChildren(const SoNode* node, const TreeContext& context)
{
    const NodeTraits& traits = traitsOf(node->getTypeId());
    if (traits.isGroup)
        return allOf(node->getChildren());
    if (traits.isFile)
        return isVrmlScene() ? ShownChildren{} : allOf(node->getChildren());
    // The first child of an inline stands for its box only.
    if (traits.isInline)
        return isVrmlScene() ? ShownChildren{} : allOf(node->getChildren(), 1);
    if (context.embeddedLaunch)
        return allOf(node->getChildren());
    if (context.showInternalChildren)
        return allOf(node->getInternalChildren());
    return {};
}

bool isNodeField(const SoField* field)
{
    const SoType type = field->getTypeId();
    return type == SoSFNode::getClassTypeId() || type == SoMFNode::getClassTypeId()
           || type == SoMFUniformShaderParameter::getClassTypeId();
}

const FieldNodes::Plan& FieldNodes::planOf(const SoNode* node, const SoFieldData* data)
{
    const auto index = static_cast<std::size_t>(node->getTypeId().getIndex());
    if (index >= m_plans.size())
        m_plans.resize(index + 1);
    Plan& plan = m_plans[index];
    // Nodes whose fields come from a file have a table each: the same table, the same fields.
    if (plan.data == data)
        return plan;
    plan.data = data;
    plan.fields.clear();
    for (int i = 0; i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(node, i);
        if (endsWalk(field))
            break;
        if (isNodeField(field))
            plan.fields.push_back(i);
    }
    return plan;
}

void FieldNodes::collect(const SoNode* node, std::vector<PlacedNode>& out)
{
    const NodeTraits& traits = traitsOf(node->getTypeId());
    const SoFieldData* data = traits.isVrmlParent ? nullptr : node->getFieldData();
    if (!data)
        return;
    if (traits.isKit) {
        appendNodesOfKit(static_cast<const SoBaseKit*>(node), data, out);
        return;
    }
    for (const int index : planOf(node, data).fields)
        appendNodes(data->getField(node, index), out);
}

} // namespace mirabo
