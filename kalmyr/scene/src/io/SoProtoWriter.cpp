// Prototypes of VRML97: their declarations in front of the nodes.
#include "SoSceneWriter.h"

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoTokenizer.h>
#include <kalmyr/vrml/SoVRMLProto.h>

namespace kalmyr::detail {

namespace {

/// The words in front of braces: types of nodes.
std::vector<std::string_view> typesIn(std::string_view text)
{
    std::vector<std::string_view> types;
    const std::string copy(text);
    SoTokenizer in(copy.c_str(), copy.size());
    std::string_view word;
    std::string ignored;
    while (!in.atEnd() && !in.hasFailed()) {
        if (in.readName(word)) {
            if (in.peek() == '{')
                types.push_back(
                    text.substr(static_cast<std::size_t>(word.data() - copy.data()), word.size()));
        } else if (in.peek() == '"') {
            in.readString(ignored);
        } else {
            in.setOffset(in.getOffset() + 1);
        }
    }
    return types;
}

/// The prototype that the text of another one means by that name.
SoVRMLProto* findUsed(const SoVRMLProto* proto, std::string_view type)
{
    SoVRMLProto* used = proto->previous.get();
    while (used && used->name != type)
        used = used->previous.get();
    return used;
}

} // namespace

bool SceneWriter::isStatement(const SoForeignFields::Entry& entry)
{
    return entry.name.find(' ') != std::string::npos;
}

void SceneWriter::collect(SoVRMLProto* proto)
{
    if (!m_metProtos.insert(proto).second)
        return;
    std::unordered_set<std::string_view> seen;
    for (const std::string_view type : typesIn(proto->text)) {
        if (!seen.insert(type).second)
            continue;
        if (SoVRMLProto* used = findUsed(proto, type))
            collect(used);
    }
    m_protos.push_back(proto);
}

void SceneWriter::nameProtos()
{
    // Prototypes of one name may come from places that do not know of each other.
    std::unordered_set<std::string> taken;
    for (const SoVRMLProto* proto : m_protos) {
        std::string name(proto->name.view());
        for (int i = 1; !taken.insert(name).second; ++i) {
            name = std::string(proto->name.view()) + '_';
            SbNumber::appendInt(name, i);
        }
        if (name != proto->name.view())
            m_protoNames[proto] = name;
    }
}

std::string_view SceneWriter::nameOfProto(const SoVRMLProto* proto) const
{
    const auto found = m_protoNames.find(proto);
    return found == m_protoNames.end() ? proto->name.view() : std::string_view(found->second);
}

std::string SceneWriter::textOf(const SoVRMLProto* proto) const
{
    if (m_protoNames.empty())
        return proto->text;
    std::string text;
    const char* at = proto->text.data();
    for (const std::string_view type : typesIn(proto->text)) {
        const SoVRMLProto* used = findUsed(proto, type);
        const bool isOwn = proto->text.find("PROTO " + std::string(type)) != std::string::npos;
        if (!used || isOwn || !m_protoNames.count(used))
            continue;
        text.append(at, type.data());
        text += nameOfProto(used);
        at = type.data() + type.size();
    }
    return text.append(at, proto->text.data() + proto->text.size());
}

void SceneWriter::prototypes()
{
    nameProtos();
    for (const SoVRMLProto* proto : m_protos) {
        m_buffer += proto->external ? "EXTERNPROTO " : "PROTO ";
        m_buffer += isVrml97() ? std::string_view() : kProtoPrefix;
        m_buffer += nameOfProto(proto);
        m_buffer += ' ';
        m_buffer += textOf(proto);
        m_buffer += '\n';
        flushIfLarge();
    }
    if (m_dialect != VRML10)
        unusedPrototypes();
}

void SceneWriter::unusedPrototypes()
{
    std::unordered_set<std::string_view> names;
    for (const SoVRMLProto* proto : m_protos)
        names.insert(nameOfProto(proto));
    for (const SoForeignFields::Entry& entry : m_unused) {
        const std::size_t blank = entry.name.find(' ');
        const std::string_view name = std::string_view(entry.name).substr(blank + 1);
        if (!names.insert(name).second)
            continue;
        m_buffer.append(entry.name, 0, blank + 1);
        m_buffer += isVrml97() ? std::string_view() : kProtoPrefix;
        m_buffer.append(name) += ' ';
        m_buffer += entry.value;
        m_buffer += '\n';
        flushIfLarge();
    }
}

} // namespace kalmyr::detail
