#include "mirabo/tree/ChildRules.h"

#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/TreeContext.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>

#include <algorithm>

namespace mirabo {

namespace {

bool s_vrmlScene = false;

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
    const auto* list = static_cast<SoMFNode*>(field);
    if (list->isBound())
        return; // stands for the child list, which is shown already
    for (SoNode* node : list->getValues())
        if (node)
            out.push_back({field, node});
}

} // namespace

int ShownChildren::count() const
{
    return nodes ? std::max(0, static_cast<int>(nodes->size()) - first) : 0;
}

bool isVrmlScene()
{
    return s_vrmlScene;
}

void setVrmlScene(bool on)
{
    s_vrmlScene = on;
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
    return type == SoSFNode::getClassTypeId() || type.isDerivedFrom(SoMFNode::getClassTypeId());
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
    if (traitsOf(node->getTypeId()).isVrmlParent)
        return;
    const SoFieldData* data = node->getFieldData();
    if (!data)
        return;
    for (const int index : planOf(node, data).fields)
        appendNodes(data->getField(node, index), out);
}

} // namespace mirabo
