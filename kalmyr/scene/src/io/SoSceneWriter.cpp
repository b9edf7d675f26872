#include "SoSceneWriter.h"

#include "core/NodeFields.h"
#include "Relocation.h"

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/fields/SoValueText.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace kalmyr::detail {

namespace {

constexpr std::string_view kVrmlPrefix = "VRML";

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

/// VRML knows no volumes: the slices stand one above the other.
void writeFlat(std::string& out, const SbImage& image)
{
    SbImage flat;
    flat.setValue({image.getWidth(), image.getHeight() * std::max(image.getDepth(), 1)},
                  image.getComponents(), image.getBytes());
    writeText(out, flat);
}

/// Fields that nodes of VRML 1.0 have here and not there.
bool isUnknownToVrml1(std::string_view field)
{
    constexpr std::string_view kFields[] = {
        "aspectRatio",   "blendColor",     "boundingBoxCaching", "farDistance",
        "fastEditing",   "model",          "nearDistance",       "pickCulling",
        "renderCaching", "vertexProperty", "viewportMapping"};
    return std::find(std::begin(kFields), std::end(kFields), field) != std::end(kFields);
}

/// Whether writing a field takes long enough to be interrupted.
bool isLong(const SoField& field)
{
    constexpr int kLong = 4096; // values
    if (field.isOfType(SoSFArray::getClassTypeId()))
        return static_cast<const SoSFArray&>(field).getNumValues() > kLong;
    return field.isOfType(SoMField::getClassTypeId()) && !hasObjectsInText(field.getTypeId())
           && static_cast<const SoMField&>(field).getNum() > kLong;
}

const SoVRMLProto* protoOf(const SoNode* node)
{
    return node->isOfType(SoVRMLProtoInstance::getClassTypeId())
               ? static_cast<const SoVRMLProtoInstance*>(node)->getProto()
               : nullptr;
}

} // namespace

SceneWriter::SceneWriter(SoAction& action, SoOutput& out)
    : SoFieldWriter(m_buffer), m_action(action), m_out(out)
{
    const SoInput::Format format = SoInput::formatOfHeader(out.getHeaderString().view());
    m_binary = out.isBinary();
    if (!out.getFileName().isEmpty()) {
        std::error_code ignored;
        const std::filesystem::path file =
            std::filesystem::absolute(out.getFileName().toStdString(), ignored);
        m_folder = SbString(file.parent_path().string());
    }
    m_dialect = format == SoInput::VRML2 ? VRML97 : format == SoInput::VRML1 ? VRML10 : KALMYR;
}

void SceneWriter::keepOnly(const SoPath& path)
{
    for (int i = 1; i < path.getLength(); ++i)
        m_onPath[path.getNode(i - 1)] = path.getIndex(i);
}

void SceneWriter::startWriting()
{
    m_counting = false;
    std::erase_if(m_routes, [this](const Route& route) { return !isWritten(route); });
    for (const Route& route : m_routes) {
        for (const SoFieldContainer* end : {route.to->getContainer(), route.from->getContainer()})
            if (end->isOfType(SoNode::getClassTypeId()))
                m_nodes[static_cast<const SoNode*>(end)].routed = true;
    }
    prototypes();
}

void SceneWriter::finish()
{
    routes();
    if (!m_buffer.empty() && m_buffer.back() != '\n')
        m_buffer += '\n';
    if (m_binary) {
        finishBinary();
    } else {
        m_out.write(m_buffer);
    }
    m_buffer.clear();
}

void SceneWriter::finishBinary()
{
    std::string bytes;
    Chunk::write(bytes, m_out.getNumBytesBefore(), m_buffer, m_blocks);
    m_out.write(bytes);
}

void SceneWriter::values(const WriteValue& write)
{
    ++m_valueDepth;
    write(*this);
    --m_valueDepth;
    if (m_counting)
        m_buffer.clear();
}

void SceneWriter::askToGoOn()
{
    if (!m_goOn || m_interrupted || (m_valueDepth > 0 && !m_inCopy) || m_goOn())
        return;
    m_interrupted = true;
    m_action.setTerminated(true);
}

void SceneWriter::flushIfLarge()
{
    if (m_inCopy)
        askToGoOn();
    // The size of the text stands in front of it in a binary file.
    if (m_buffer.size() < kFlushSize || m_binary || m_counting)
        return;
    // A stopped traversal is how a failed output ends it; the output posts the reason.
    if (!m_out.write(m_buffer))
        m_action.setTerminated(true);
    m_buffer.clear();
}

void SceneWriter::indent(int levels)
{
    // Deep graphs would be blanks for the most part.
    constexpr int kMaxLevels = 100;
    m_buffer.append(static_cast<std::size_t>(std::min(levels, kMaxLevels)) * 2, ' ');
}

void SceneWriter::newLine()
{
    flushIfLarge();
    m_empty = false;
    m_buffer += '\n';
    indent(m_indent);
}

void SceneWriter::breakLine()
{
    m_buffer += '\n';
    indent(m_indent + 1);
}

const std::string& SceneWriter::nameOf(const SoNode* node, Info& info)
{
    if (info.name >= 0)
        return m_nodeNames[static_cast<std::size_t>(info.name)];
    info.name = static_cast<std::int32_t>(m_nodeNames.size());
    const std::string own(node->getName().view());
    std::string& name = m_nodeNames.emplace_back(own);
    if (!own.empty() && m_taken.insert(own).second)
        return name;
    do {
        // Names of VRML have no plus sign.
        const SbString& prefix = SoBase::getInstancePrefix();
        name = own + (m_dialect != KALMYR && prefix == "+" ? "_" : prefix.getString());
        SbNumber::appendInt(name, m_nextInstance++);
    } while (m_names.count(name));
    return name;
}

void SceneWriter::header(SoNode* node, Info& info)
{
    if (info.count > 1 || info.routed || !node->getName().isEmpty()) {
        m_buffer += "DEF ";
        m_buffer += nameOf(node, info);
        m_buffer += ' ';
    }
    if (const SoVRMLProto* proto = protoOf(node)) {
        m_buffer += isVrml97() ? std::string_view() : kProtoPrefix;
        m_buffer += nameOfProto(proto);
    } else {
        const bool unknown = node->isOfType(SoUnknownNode::getClassTypeId());
        std::string_view type = unknown
                                    ? static_cast<SoUnknownNode*>(node)->getUnknownTypeName().view()
                                    : node->getTypeId().getName().view();
        if (isVrml97() && type.starts_with(kVrmlPrefix))
            type.remove_prefix(kVrmlPrefix.size());
        m_buffer += type;
    }
    m_buffer += " {";
}

void SceneWriter::hold(SoRefCounter* object)
{
    if (m_goOn && object && object->getRefCount() > 0)
        m_held.emplace_back(object);
}

bool SceneWriter::enter(SoNode* node)
{
    askToGoOn();
    if (m_interrupted)
        return false;
    Info& info = m_nodes[node];
    if (m_counting) {
        const bool isFirst = ++info.count == 1;
        if (isFirst && !node->getName().isEmpty())
            m_names.emplace(node->getName().view());
        if (!m_root)
            m_root = node;
        if (isFirst) {
            findRoutes(node);
            for (SoForeignFields::Entry& entry : SoForeignFields::of(node))
                if (isStatement(entry))
                    m_unused.push_back(std::move(entry));
        }
        return isFirst;
    }
    if (isWrapper(node))
        return true;
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

void SceneWriter::leave(const SoNode* node)
{
    if (m_counting || isWrapper(node))
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
        if (field->isOfType(SoMNodeField::getClassTypeId())
            && static_cast<const SoMNodeField*>(field)->isBound())
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
    for (int i = 0; !m_action.hasTerminated() && i < list->getLength(); ++i) {
        SoNode* child = (*list)[i];
        if (!isKept(node, child, i))
            continue;
        const bool top = m_counting || isWrapper(node);
        if (!top)
            newLine();
        m_action.traverse(child, i);
        if (top && !m_counting)
            m_buffer += '\n';
    }
}

void SceneWriter::nodeList(SoNode* node, const SoMNodeField& field)
{
    if (!m_counting) {
        m_buffer += " [";
        ++m_indent;
    }
    bool any = false;
    const bool bound = field.isBound();
    for (int i = 0; !m_action.hasTerminated() && i < field.getNum(); ++i) {
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
    const bool list = field->isOfType(SoMNodeField::getClassTypeId());
    const bool bound = list && static_cast<SoMNodeField*>(field)->isBound();
    if (m_dialect != KALMYR && field->isIgnored() && field->isDefault())
        return;
    if (m_dialect == VRML10 && isUnknownToVrml1(name.view()))
        return;
    const bool unset =
        bound ? static_cast<SoMNodeField*>(field)->getNum() == 0 : !node->isFieldWritten(*field);
    const SoField::FieldType kind = field->getFieldType();
    if ((unset && !field->isIgnored()) || kind == SoField::EVENT_IN || kind == SoField::EVENT_OUT)
        return;
    if (isWrapper(node) && !bound)
        return; // its children only
    if (!m_counting && isWrapper(node)) {
        for (SoNode* child : static_cast<SoMNodeField*>(field)->getValues()) {
            writeNode(child);
            m_buffer += '\n';
        }
        return;
    }
    if (m_counting) {
        if (list)
            nodeList(node, *static_cast<SoMNodeField*>(field));
        else if (hasObjectsInText(field->getTypeId()))
            values([field](SoFieldWriter& out) { field->writeValue(out); });
        return;
    }
    newLine();
    m_buffer += name.view();
    std::string_view block;
    if (list) {
        nodeList(node, *static_cast<SoMNodeField*>(field));
    } else if (m_binary && getBlock(*field, block)) {
        m_buffer += " @";
        SbNumber::appendUInt(m_buffer, m_blocks.size());
        m_blocks.push_back(block);
    } else {
        m_buffer += ' ';
        value(node, field);
    }
    if (field->isIgnored() && m_dialect == KALMYR)
        m_buffer += " ~";
}

void SceneWriter::value(const SoNode* node, const SoField* field)
{
    if (m_dialect != KALMYR && field->isOfType(SoSFImage::getClassTypeId())) {
        writeFlat(m_buffer, static_cast<const SoSFImage*>(field)->getValue());
        return;
    }
    const SbString* origin = m_folder.isEmpty() ? nullptr : originOf(node, field);
    if (!origin || origin->isEmpty()) {
        if (m_goOn && isLong(*field)) {
            writeCopy(*field);
        } else {
            ++m_valueDepth;
            field->writeValue(*this);
            --m_valueDepth;
        }
    } else if (field->isOfType(SoSFString::getClassTypeId())) {
        SoSFString moved;
        moved = relocated(static_cast<const SoSFString*>(field)->getValue(), *origin, m_folder);
        moved.writeValue(*this);
    } else {
        const auto urls = static_cast<const SoMFString*>(field)->values();
        std::vector<SbString> values(urls.begin(), urls.end());
        for (SbString& url : values)
            url = relocated(url, *origin, m_folder);
        SoMFString moved;
        moved.setValues(0, {values.data(), values.size()});
        moved.writeValue(*this);
    }
}

/// The field may get other values while its text is interrupted.
void SceneWriter::writeCopy(const SoField& field)
{
    const std::unique_ptr<SoField> copy(static_cast<SoField*>(field.getTypeId().createInstance()));
    copy->copyFrom(field);
    m_inCopy = true;
    copy->writeValue(*this);
    m_inCopy = false;
}

void SceneWriter::fields(SoNode* node)
{
    const SoFieldData* data = node->getFieldData();
    for (int i = 0; data && !m_action.hasTerminated() && i < data->getNumFields(); ++i)
        field(node, data->getFieldName(i), data->getField(node, i));
    if (!m_counting)
        foreign(node);
}

void SceneWriter::foreign(const SoNode* node)
{
    for (const SoForeignFields::Entry& entry : SoForeignFields::of(node)) {
        if (isStatement(entry))
            continue;
        newLine();
        if (m_dialect == KALMYR) {
            m_buffer += "KEEP ";
            writeQuoted(m_buffer, entry.name);
            m_buffer += ' ';
            writeQuoted(m_buffer, entry.value);
        } else {
            m_buffer += entry.name;
            m_buffer += ' ';
            m_buffer += entry.value;
        }
    }
}

void SceneWriter::declaration(const SoFieldData& data, const SoNode* node, int first)
{
    newLine();
    m_buffer += "fields [";
    for (int i = first; i < data.getNumFields(); ++i) {
        const SoField* field = data.getField(node, i);
        m_buffer += i > first ? ", " : " ";
        if (field->getFieldType() != SoField::ORDINARY)
            m_buffer += kindWord(field->getFieldType());
        m_buffer += field->getTypeId().getName().view();
        m_buffer += ' ';
        m_buffer += data.getFieldName(i).view();
    }
    m_buffer += " ]";
}

void SceneWriter::script(SoVRMLScript* node)
{
    const int numOwn = node->getFieldData()->getNumFields() - node->getDeclared().getNumDeclared();
    if (m_counting || !isVrml97()) {
        if (!m_counting && node->getDeclared().getNumDeclared() > 0)
            declaration(*node->getFieldData(), node, numOwn);
        fields(node);
        return;
    }
    const SoFieldData* data = node->getFieldData();
    for (int i = 0; i < numOwn; ++i)
        field(node, data->getFieldName(i), data->getField(node, i));
    foreign(node);
    for (int i = numOwn; i < data->getNumFields(); ++i) {
        SoField* one = data->getField(node, i);
        newLine();
        m_buffer += kindWord(one->getFieldType());
        m_buffer += one->getTypeId().getName().view();
        m_buffer += ' ';
        m_buffer += data->getFieldName(i).view();
        if (!hasValue(one->getFieldType()))
            continue;
        m_buffer += ' ';
        if (one->isOfType(SoMNodeField::getClassTypeId())) {
            nodeList(node, *static_cast<SoMNodeField*>(one));
        } else {
            one->writeValue(*this);
        }
    }
}

void SceneWriter::instance(SoVRMLProtoInstance* node)
{
    if (m_counting && node->getProto())
        collect(node->getProto());
    fields(node);
}

bool SceneWriter::isWrapper(const SoNode* node) const
{
    if (node != m_root || m_rootLeftOut)
        return node == m_root;
    return isVrml97() && node->getTypeId() == SoVRMLGroup::getClassTypeId()
           && node->getName().isEmpty()
           && static_cast<const SoVRMLGroup*>(node)->bboxSize.isDefault();
}

void SceneWriter::unknown(SoUnknownNode* node)
{
    const std::string& body = node->getBody();
    const bool fromVrml97 = node->getUnknownTypeName().view().starts_with(kVrmlPrefix);
    if (m_counting || body.empty()) {
        // Fields of VRML97 nodes need no declaration there, but here.
        const bool hasFields = node->getFieldData()->getNumFields() > 0;
        // Without a declaration the text of what it holds would be kept here.
        const bool isGroup = m_dialect == KALMYR && node->getNumChildren() > 0;
        const bool declares =
            fromVrml97 ? !isVrml97() && hasFields : node->hasDeclaration() || isGroup;
        if (!m_counting && declares)
            declaration(*node->getFieldData(), node, 0);
        fields(node);
        children(node);
    } else if (m_dialect == KALMYR && fromVrml97) {
        newLine();
        m_buffer += "KEEP \"\" ";
        writeQuoted(m_buffer, body);
    } else {
        // The text brings its own line breaks, also the one in front of the closing brace.
        m_buffer += body;
        m_verbatim = true;
    }
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
