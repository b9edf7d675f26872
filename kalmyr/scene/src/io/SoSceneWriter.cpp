#include "SoSceneWriter.h"

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoUnknownNode.h>

namespace kalmyr::detail {

SceneWriter::SceneWriter(SoAction& action, SoOutput& out)
    : SoFieldWriter(m_buffer), m_action(action), m_out(out)
{
}

void SceneWriter::keepOnly(const SoPath& path)
{
    for (int i = 1; i < path.getLength(); ++i)
        m_onPath[path.getNode(i - 1)] = path.getIndex(i);
}

void SceneWriter::startWriting()
{
    m_counting = false;
}

void SceneWriter::finish()
{
    m_buffer += '\n';
    m_out.write(m_buffer);
    m_buffer.clear();
}

void SceneWriter::flushIfLarge()
{
    if (m_buffer.size() < kFlushSize)
        return;
    // A stopped traversal is how a failed output ends it; the output posts the reason.
    if (!m_out.write(m_buffer))
        m_action.setTerminated(true);
    m_buffer.clear();
}

void SceneWriter::newLine()
{
    flushIfLarge();
    m_empty = false;
    m_buffer += '\n';
    m_buffer.append(static_cast<std::size_t>(m_indent) * 2, ' ');
}

void SceneWriter::breakLine()
{
    m_buffer += '\n';
    m_buffer.append(static_cast<std::size_t>(m_indent + 1) * 2, ' ');
}

const std::string& SceneWriter::nameOf(const SoNode* node, Info& info)
{
    if (!info.name.empty())
        return info.name;
    const std::string own(node->getName().view());
    if (!own.empty() && m_taken.insert(own).second)
        return info.name = own;
    do {
        info.name = own + SoBase::getInstancePrefix().toStdString();
        SbNumber::appendInt(info.name, m_nextInstance++);
    } while (m_names.count(info.name));
    return info.name;
}

void SceneWriter::header(SoNode* node, Info& info)
{
    if (info.count > 1 || !node->getName().isEmpty()) {
        m_buffer += "DEF ";
        m_buffer += nameOf(node, info);
        m_buffer += ' ';
    }
    if (node->isOfType(SoUnknownNode::getClassTypeId())) {
        m_buffer += static_cast<SoUnknownNode*>(node)->getUnknownTypeName().view();
    } else {
        m_buffer += node->getTypeId().getName().view();
    }
    m_buffer += " {";
}

bool SceneWriter::enter(SoNode* node)
{
    Info& info = m_nodes[node];
    if (m_counting) {
        if (++info.count == 1 && !node->getName().isEmpty())
            m_names.emplace(node->getName().view());
        return info.count == 1;
    }
    if (info.written) {
        m_buffer += "USE ";
        m_buffer += nameOf(node, info);
        return false;
    }
    info.written = true;
    header(node, info);
    ++m_indent;
    m_empty = true;
    return true;
}

void SceneWriter::leave()
{
    if (m_counting)
        return;
    --m_indent;
    if (m_verbatim) {
        m_verbatim = false;
    } else if (m_empty) {
        m_buffer += ' ';
    } else {
        newLine();
    }
    m_buffer += '}';
    m_empty = false;
}

bool SceneWriter::hasChildrenField(const SoNode* node)
{
    const SoFieldData* data = node->getChildren() ? node->getFieldData() : nullptr;
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(node, i);
        if (field->isOfType(SoMFNode::getClassTypeId())
            && static_cast<const SoMFNode*>(field)->isBound())
            return true;
    }
    return false;
}

bool SceneWriter::isKept(const SoNode* parent, const SoNode* child, int index) const
{
    const auto onPath = m_onPath.find(parent);
    if (onPath == m_onPath.end())
        return true;
    return index == onPath->second || (index < onPath->second && child->affectsState());
}

void SceneWriter::children(SoNode* node)
{
    const SoChildList* list = node->getChildren();
    if (!list)
        return;
    for (int i = 0; i < list->getLength() && !m_action.hasTerminated(); ++i) {
        SoNode* child = (*list)[i];
        if (!isKept(node, child, i))
            continue;
        if (!m_counting)
            newLine();
        m_action.traverse(child, i);
    }
}

void SceneWriter::nodeList(SoNode* node, const SoMFNode& field)
{
    if (!m_counting) {
        m_buffer += " [";
        ++m_indent;
    }
    bool any = false;
    const bool bound = field.isBound();
    for (int i = 0; i < field.getNum() && !m_action.hasTerminated(); ++i) {
        SoNode* child = field[i];
        if (bound && !isKept(node, child, i))
            continue;
        any = true;
        if (!m_counting)
            newLine();
        writeNode(child);
    }
    if (m_counting)
        return;
    --m_indent;
    if (any) {
        newLine();
    } else {
        m_buffer += ' ';
    }
    m_buffer += ']';
}

void SceneWriter::field(SoNode* node, const SbName& name, SoField* field)
{
    const bool list = field->isOfType(SoMFNode::getClassTypeId());
    const bool bound = list && static_cast<SoMFNode*>(field)->isBound();
    const bool unset = bound ? static_cast<SoMFNode*>(field)->getNum() == 0 : field->isDefault();
    const SoField::FieldType kind = field->getFieldType();
    if ((unset && !field->isIgnored()) || kind == SoField::EVENT_IN || kind == SoField::EVENT_OUT)
        return;
    if (m_counting) {
        if (list)
            nodeList(node, *static_cast<SoMFNode*>(field));
        else if (field->isOfType(SoSFNode::getClassTypeId()))
            writeNode(static_cast<SoSFNode*>(field)->getValue());
        return;
    }
    newLine();
    m_buffer += name.view();
    if (list) {
        nodeList(node, *static_cast<SoMFNode*>(field));
    } else {
        m_buffer += ' ';
        field->writeValue(*this);
    }
    if (field->isIgnored())
        m_buffer += " ~";
}

void SceneWriter::fields(SoNode* node)
{
    const SoFieldData* data = node->getFieldData();
    for (int i = 0; data && i < data->getNumFields() && !m_action.hasTerminated(); ++i)
        field(node, data->getFieldName(i), data->getField(node, i));
}

void SceneWriter::unknown(SoUnknownNode* node)
{
    if (!m_counting && node->hasDeclaration()) {
        newLine();
        m_buffer += "fields [";
        const SoFieldData* data = node->getFieldData();
        for (int i = 0; i < data->getNumFields(); ++i) {
            m_buffer += i ? ", " : " ";
            m_buffer += data->getField(node, i)->getTypeId().getName().view();
            m_buffer += ' ';
            m_buffer += data->getFieldName(i).view();
        }
        m_buffer += " ]";
    }
    if (!m_counting && !node->getBody().empty()) {
        // The text brings its own line breaks, also the one in front of the closing brace.
        m_buffer += node->getBody();
        m_verbatim = true;
        return;
    }
    fields(node);
    children(node);
}

void SceneWriter::writeNode(const SoNode* node)
{
    if (node)
        m_action.traverse(const_cast<SoNode*>(node), -1);
    else if (!m_counting)
        m_buffer += "NULL";
}

void SceneWriter::beginPath()
{
    m_buffer += "Path {\n  head ";
    ++m_indent;
}

void SceneWriter::endPath(const SoPath& path)
{
    m_buffer += "\n  indices [";
    for (int i = 1; i < path.getLength(); ++i) {
        const SoNode* parent = path.getNode(i - 1);
        const SoChildList* list = parent->getChildren();
        int index = 0;
        for (int k = 0; k < path.getIndex(i); ++k)
            index += isKept(parent, (*list)[k], k);
        m_buffer += i > 1 ? ", " : " ";
        SbNumber::appendInt(m_buffer, index);
    }
    m_buffer += " ]\n}";
    --m_indent;
}

} // namespace kalmyr::detail
