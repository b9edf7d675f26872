#pragma once

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLProto.h>

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <unordered_map>

/// Nodes that hold others many times over multiply: some small files have no end. Scenes of more
/// occurrences are neither measured nor drawn.
constexpr std::uint64_t kMaxOccurrences = 20'000'000;

/// Distinct nodes by type, and the places where they stand. Parts of nodes are nodes, too.
class GraphCounter {
public:
    void add(const SoNode* node) { m_occurrences = sum(m_occurrences, visit(node)); }

    const std::map<std::string, std::uint64_t>& types() const { return m_types; }
    std::uint64_t instances() const { return m_known.size(); }
    std::uint64_t occurrences() const { return m_occurrences; }

private:
    static std::uint64_t sum(std::uint64_t a, std::uint64_t b)
    {
        return a > std::numeric_limits<std::uint64_t>::max() - b
                   ? std::numeric_limits<std::uint64_t>::max()
                   : a + b;
    }

    static bool isInline(const SoNode* node)
    {
        return node->isOfType(SoVRMLInline::getClassTypeId())
               || node->isOfType(SoWWWInline::getClassTypeId());
    }

    /// Of an instance of a prototype: what its body takes from the field occurs in the body.
    static bool isDrawnInBody(const SoNode* node, const SoField& field)
    {
        return node->isOfType(SoVRMLProtoInstance::getClassTypeId())
               && static_cast<const SoVRMLProtoInstance*>(node)->isPassedOn(field);
    }

    /// Occurrences of the node and what is below it, seen from one place of it.
    std::uint64_t visit(const SoNode* node)
    {
        if (const auto found = m_known.find(node); found != m_known.end())
            return found->second;
        m_known.emplace(node, 1);
        ++m_types[node->getTypeId().getName().getString()];
        std::uint64_t result = 1;
        const SoChildList* children = node->getInternalChildren();
        // The first child of an inline only stands for its box.
        for (int i = isInline(node) ? 1 : 0; children && i < children->getLength(); ++i)
            result = sum(result, visitChild(node, (*children)[i]));
        const SoFieldData* data = node->getFieldData();
        for (int i = 0; data && i < data->getNumFields(); ++i) {
            const SoField& field = *data->getField(node, i);
            const std::uint64_t held = visitField(field);
            result = sum(result, isDrawnInBody(node, field) ? 0 : held);
        }
        m_known[node] = result;
        return result;
    }

    std::uint64_t visitChild(const SoNode* node, const SoNode* child)
    {
        if (isInline(node))
            return visitContent(child);
        // A level of detail of the earth shows its files by inlines that no file has.
        if (!node->isOfType(SoVRMLGeoLOD::getClassTypeId()))
            return visit(child);
        const SoNode* content = static_cast<const SoVRMLInline*>(child)->getChildData();
        return content ? visitContent(content) : 0;
    }

    /// What an inline shows: the group around the nodes of a VRML97 file is no node of the file.
    std::uint64_t visitContent(const SoNode* node)
    {
        if (node->getTypeId() != SoVRMLGroup::getClassTypeId())
            return visit(node);
        std::uint64_t result = 0;
        for (const SoNode* child : node->getChildren()->getNodes())
            result = sum(result, visit(child));
        return result;
    }

    std::uint64_t visitField(const SoField& field)
    {
        if (field.isOfType(SoSFNode::getClassTypeId())) {
            const SoNode* node = static_cast<const SoSFNode&>(field).getValue();
            return node ? visit(node) : 0;
        }
        std::uint64_t result = 0;
        if (!field.isOfType(SoMNodeField::getClassTypeId()))
            return result;
        const auto& list = static_cast<const SoMNodeField&>(field);
        if (list.isBound())
            return result; // the children
        for (const SoNode* node : list.getValues())
            result = sum(result, node ? visit(node) : 0);
        return result;
    }

    std::unordered_map<const SoNode*, std::uint64_t> m_known;
    std::map<std::string, std::uint64_t> m_types;
    std::uint64_t m_occurrences = 0;
};
