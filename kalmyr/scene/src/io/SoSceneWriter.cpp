#include "SoSceneWriter.h"

#include "core/NodeFields.h"

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLProto.h>

namespace kalmyr::detail {

namespace {

const SoVRMLProto* protoOf(const SoNode* node)
{
    return node->isOfType(SoVRMLProtoInstance::getClassTypeId())
               ? static_cast<const SoVRMLProtoInstance*>(node)->getProto()
               : nullptr;
}

std::string_view typeOf(const SoNode* node)
{
    return node->isOfType(SoUnknownNode::getClassTypeId())
               ? static_cast<const SoUnknownNode*>(node)->getUnknownTypeName().view()
               : node->getTypeId().getName().view();
}

/// The list of nodes that a field is, or null.
const SoMNodeField* nodeListOf(const SoField& field)
{
    return field.isOfType(SoMNodeField::getClassTypeId()) ? static_cast<const SoMNodeField*>(&field)
                                                          : nullptr;
}

/// Whether the field is the node's list of children.
bool isBound(const SoField& field)
{
    const SoMNodeField* list = nodeListOf(field);
    return list && list->isBound();
}

} // namespace

SceneWriter::SceneWriter(SoAction& action, SoOutput& out)
    : SoFieldWriter(m_buffer),
      m_action(action),
      m_dialect(out.getHeaderString()),
      m_interruption(action),
      m_text(m_buffer, action, out),
      m_names(m_dialect),
      m_prototypes(m_text, m_dialect, m_interruption),
      m_routes(m_text, m_dialect, m_names, m_interruption, *this),
      m_kept(*this, m_text, m_dialect, m_names),
      m_values(m_text, m_dialect, m_interruption, out, *this)
{
}

void SceneWriter::startWriting()
{
    m_counting = false;
    m_text.begin();
    m_routes.settle();
    m_prototypes.write(m_values.folder());
}

void SceneWriter::finish()
{
    m_routes.write();
    m_text.finish();
}

void SceneWriter::values(const WriteValue& write)
{
    const WriteInterruption::Value value(m_interruption);
    write(*this);
    if (m_counting)
        m_buffer.clear();
}

void SceneWriter::flushIfLarge()
{
    if (m_interruption.isInCopy())
        m_interruption.ask();
    m_text.flushIfLarge();
}

bool SceneWriter::enter(SoNode* node)
{
    m_interruption.ask();
    if (isInterrupted())
        return false;
    if (m_counting) {
        if (!m_root)
            m_root = node;
        if (!m_names.count(node))
            return false;
        m_routes.find(node);
        m_prototypes.collectUnused(node);
        return true;
    }
    if (isWrapper(node))
        return true;
    WrittenNames::Info& info = m_names[node];
    if (info.written) {
        writeUse(node);
        return false;
    }
    info.written = true;
    header(node, info);
    return true;
}

void SceneWriter::writeUse(const SoNode* node)
{
    m_text << "USE " << m_names.of(node);
}

void SceneWriter::leave(const SoNode* node)
{
    if (!m_counting && !isWrapper(node))
        m_text.closeBody();
}

void SceneWriter::header(SoNode* node, WrittenNames::Info& info)
{
    if (info.count > 1 || info.named || !node->getName().isEmpty())
        m_text << "DEF " << m_names.of(node, info) << " ";
    if (const SoVRMLProto* proto = protoOf(node))
        m_text << m_dialect.protoPrefix() << m_prototypes.nameOf(proto);
    else
        m_text << m_dialect.nameOfType(typeOf(node));
    m_text.openBody();
}

bool SceneWriter::isWrapper(const SoNode* node) const
{
    if (node != m_root || m_rootLeftOut)
        return node == m_root;
    return m_dialect.isVrml97() && node->getTypeId() == SoVRMLGroup::getClassTypeId()
           && node->getName().isEmpty()
           && static_cast<const SoVRMLGroup*>(node)->bboxSize.isDefault();
}

bool SceneWriter::hasChildrenField(const SoNode* node)
{
    const SoFieldData* data = node->getChildren() ? node->getFieldData() : nullptr;
    for (int i = 0; data && i < data->getNumFields(); ++i)
        if (isBound(*data->getField(node, i)))
            return true;
    return false;
}

void SceneWriter::fields(SoNode* node)
{
    const SoFieldData* data = node->getFieldData();
    for (int i = 0; data && !m_action.hasTerminated() && i < data->getNumFields(); ++i)
        field(node, data->getFieldName(i), data->getField(node, i));
    if (m_counting)
        m_kept.count(node);
    else if (!isWrapper(node))
        m_kept.fields(node);
}

void SceneWriter::children(SoNode* node)
{
    const SoChildList* list = node->getChildren();
    const bool onTop = isWrapper(node);
    for (int i = 0; list && !m_action.hasTerminated() && i < list->getLength(); ++i) {
        SoNode* child = (*list)[i];
        if (!m_cut.isKept(node, child, i))
            continue;
        if (!m_counting && !onTop)
            m_text.newLine();
        m_action.traverse(child, i);
        if (!m_counting && onTop)
            m_text << "\n";
    }
}

void SceneWriter::instance(SoVRMLProtoInstance* node)
{
    if (m_counting && node->getProto())
        m_prototypes.collect(node->getProto());
    fields(node);
}

bool SceneWriter::isFieldWritten(const SoNode* node, const SbName& name, const SoField& field) const
{
    const SoField::FieldType kind = field.getFieldType();
    if (kind == SoField::EVENT_IN || kind == SoField::EVENT_OUT || !m_dialect.hasField(name.view())
        || (isWrapper(node) && !isBound(field))) // its children only
        return false;
    if (field.isIgnored())
        return m_dialect.hasIgnoredFields() || !field.isDefault();
    return isBound(field) ? nodeListOf(field)->getNum() > 0 : node->isFieldWritten(field);
}

void SceneWriter::field(SoNode* node, const SbName& name, SoField* field)
{
    if (!isFieldWritten(node, name, *field))
        return;
    if (m_counting) {
        countField(node, *field);
        return;
    }
    if (isWrapper(node)) {
        for (SoNode* child : nodeListOf(*field)->getValues()) {
            writeNode(child);
            m_text << "\n";
        }
        return;
    }
    m_text.newLine();
    m_text << name.view() << " ";
    value(node, *field);
    if (field->isIgnored() && m_dialect.hasIgnoredFields())
        m_text << " ~";
}

void SceneWriter::countField(const SoNode* node, const SoField& field)
{
    if (const SoMNodeField* list = nodeListOf(field))
        nodeList(node, *list);
    else if (hasObjectsInText(field.getTypeId()))
        values([&field](SoFieldWriter& out) { field.writeValue(out); });
}

void SceneWriter::value(const SoNode* node, const SoField& field)
{
    if (const SoMNodeField* list = nodeListOf(field)) {
        nodeList(node, *list);
        return;
    }
    const auto uses = m_kept.usesIn(node, field);
    if (uses.empty() || static_cast<const SoSFNode&>(field).getValue())
        m_values.write(node, field);
    else
        writeUse(uses.front().node);
}

void SceneWriter::nodeList(const SoNode* node, const SoMNodeField& field)
{
    if (m_counting) {
        for (int i = 0; !m_action.hasTerminated() && i < field.getNum(); ++i)
            if (!field.isBound() || m_cut.isKept(node, field[i], i))
                writeNode(field[i]);
        return;
    }
    m_text << "[";
    m_text.indent();
    bool any = false;
    const auto uses =
        field.isBound() ? std::vector<SoForeignFields::Use>() : m_kept.usesIn(node, field);
    auto use = uses.begin();
    for (int i = 0; !m_action.hasTerminated(); ++i) {
        const bool isEnd = i >= field.getNum();
        for (; use != uses.end() && (isEnd || use->index <= i); ++use) {
            any = true;
            m_text.newLine();
            writeUse(use->node);
        }
        if (isEnd)
            break;
        if (field.isBound() && !m_cut.isKept(node, field[i], i))
            continue;
        any = true;
        m_text.newLine();
        writeNode(field[i]);
    }
    m_text.outdent();
    if (any)
        m_text.newLine();
    m_text << (any ? "]" : " ]");
}

void SceneWriter::writeNode(const SoNode* node)
{
    if (node)
        m_action.traverse(const_cast<SoNode*>(node), -1);
    else if (!m_counting)
        m_text << "NULL";
}

void SceneWriter::writeEngine(const SoEngine* engine)
{
    if (m_counting)
        m_routes.findEngine(engine);
    else
        m_routes.writeEngine(engine);
}

} // namespace kalmyr::detail
