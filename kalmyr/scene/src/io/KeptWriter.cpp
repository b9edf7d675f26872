#include "KeptWriter.h"

#include "core/NodeFields.h"
#include "FieldDeclaring.h"
#include "PrototypeWriter.h"
#include "SoSceneWriter.h"
#include "WriteDialect.h"
#include "WrittenNames.h"
#include "WrittenText.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

namespace kalmyr::detail {

namespace {

const char* kindWord(SoField::FieldType kind)
{
    switch (kind) {
    case SoField::EVENT_IN:
        return "eventIn ";
    case SoField::EVENT_OUT:
        return "eventOut ";
    case SoField::EXPOSED:
        return "exposedField ";
    default:
        return "field ";
    }
}

bool hasValue(SoField::FieldType kind)
{
    return kind != SoField::EVENT_IN && kind != SoField::EVENT_OUT;
}

} // namespace

void KeptWriter::count(const SoNode* node)
{
    for (const SoForeignFields::Entry& entry : SoForeignFields::of(node))
        for (const SoRef<SoNode>& one : entry.nodes)
            m_nodes.writeNode(one.get());
    for (const SoForeignFields::Use& use : SoForeignFields::usesIn(node))
        if (m_names.contains(use.node))
            m_names[use.node].named = true;
}

void KeptWriter::fields(const SoNode* node)
{
    for (const SoForeignFields::Entry& entry : SoForeignFields::of(node)) {
        if (PrototypeWriter::isUnused(entry))
            continue;
        m_text.newLine();
        if (m_dialect.quotesKeptFields()) {
            m_text << "KEEP ";
            m_text.quoted(entry.name);
        } else {
            m_text << entry.name;
        }
        m_text << " ";
        if (!entry.nodes.empty())
            nodes(entry);
        else if (m_dialect.quotesKeptFields())
            m_text.quoted(entry.value);
        else
            m_text << entry.value;
    }
}

void KeptWriter::nodes(const SoForeignFields::Entry& entry)
{
    if (!entry.isList) {
        m_nodes.writeNode(entry.nodes.front().get());
        return;
    }
    m_text << "[";
    m_text.indent();
    for (const SoRef<SoNode>& node : entry.nodes) {
        m_text.newLine();
        m_nodes.writeNode(node.get());
    }
    m_text.outdent();
    m_text.newLine();
    m_text << "]";
}

std::vector<SoForeignFields::Use> KeptWriter::usesIn(const SoNode* node, const SoField& field)
{
    // Fields of classes hold no such thing: a file cannot mean it.
    std::vector<SoForeignFields::Use> uses;
    if (declaresFields(node) && isNodeField(field.getTypeId()))
        uses = SoForeignFields::usesIn(node);
    if (uses.empty())
        return uses;
    const SbName name = node->getFieldName(&field);
    std::erase_if(uses, [&](const SoForeignFields::Use& use) {
        return use.field != name || !m_names.contains(use.node) || !m_names[use.node].written;
    });
    return uses;
}

void KeptWriter::declaration(const SoNode* node, int first)
{
    const SoFieldData& data = *node->getFieldData();
    m_text.newLine();
    m_text << "fields [";
    for (int i = first; i < data.getNumFields(); ++i) {
        const SoField* field = data.getField(node, i);
        m_text << (i > first ? ", " : " ");
        if (field->getFieldType() != SoField::ORDINARY)
            m_text << kindWord(field->getFieldType());
        m_text << field->getTypeId().getName().view() << " " << data.getFieldName(i).view();
    }
    m_text << " ]";
}

void KeptWriter::script(SoVRMLScript* node)
{
    const SoFieldData* data = node->getFieldData();
    const int numOwn = data->getNumFields() - node->getDeclared().getNumDeclared();
    if (m_nodes.isCounting() || !m_dialect.isVrml97()) {
        if (!m_nodes.isCounting() && numOwn < data->getNumFields())
            declaration(node, numOwn);
        m_nodes.fields(node);
        return;
    }
    for (int i = 0; i < numOwn; ++i)
        m_nodes.field(node, data->getFieldName(i), data->getField(node, i));
    fields(node);
    for (int i = numOwn; i < data->getNumFields(); ++i)
        declaredField(node, i);
}

void KeptWriter::declaredField(SoNode* node, int index)
{
    const SoFieldData* data = node->getFieldData();
    SoField* field = data->getField(node, index);
    m_text.newLine();
    m_text << kindWord(field->getFieldType()) << field->getTypeId().getName().view() << " "
           << data->getFieldName(index).view();
    if (!hasValue(field->getFieldType()))
        return;
    m_text << " ";
    m_nodes.value(node, *field);
}

void KeptWriter::unknown(SoUnknownNode* node)
{
    const std::string& body = node->getBody();
    const bool fromVrml97 =
        node->getUnknownTypeName().view().starts_with(WriteDialect::kVrmlPrefix);
    if (m_nodes.isCounting() || body.empty()) {
        // Fields of VRML97 nodes need no declaration there, but here.
        const bool hasFields = node->getFieldData()->getNumFields() > 0;
        // Without a declaration the text of what it holds would be kept here.
        const bool isGroup = m_dialect.isKalmyr() && node->getNumChildren() > 0;
        const bool declares =
            fromVrml97 ? !m_dialect.isVrml97() && hasFields : node->hasDeclaration() || isGroup;
        if (!m_nodes.isCounting() && declares)
            declaration(node, 0);
        m_nodes.fields(node);
        m_nodes.children(node);
    } else if (m_dialect.quotesKeptFields() && fromVrml97) {
        m_text.newLine();
        m_text << "KEEP \"\" ";
        m_text.quoted(body);
    } else {
        m_text.body(body);
    }
}

} // namespace kalmyr::detail
