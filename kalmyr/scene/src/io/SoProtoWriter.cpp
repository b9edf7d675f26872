// Prototypes of VRML97: their declarations in front of the nodes.
#include "SoSceneWriter.h"

#include "Relocation.h"

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoTokenizer.h>
#include <kalmyr/fields/SoValueText.h>
#include <kalmyr/vrml/SoVRMLProto.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

/// What the text of a prototype names.
struct Names {
    std::vector<std::string_view> types;           ///< the words in front of braces
    std::unordered_set<std::string_view> declared; ///< prototypes inside the prototype
};

Names namesIn(std::string_view text)
{
    Names names;
    const std::string copy(text);
    SoTokenizer in(copy.c_str(), copy.size());
    std::string_view word;
    std::string ignored;
    bool isDeclared = false;
    while (!in.atEnd() && !in.hasFailed()) {
        if (in.readName(word)) {
            const std::string_view name =
                text.substr(static_cast<std::size_t>(word.data() - copy.data()), word.size());
            if (isDeclared)
                names.declared.insert(name);
            else if (in.peek() == '{')
                names.types.push_back(name);
            isDeclared = name == "PROTO" || name == "EXTERNPROTO";
        } else if (in.peek() == '"') {
            in.readString(ignored);
        } else {
            in.setOffset(in.getOffset() + 1);
        }
    }
    return names;
}

/// The prototype that the text of another one means by that name.
SoVRMLProto* findUsed(const SoVRMLProto* proto, std::string_view type)
{
    const SbName known = SbName::find(type);
    return known.isEmpty() || !proto->getPrevious() ? nullptr : proto->getPrevious()->find(known);
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
    for (const std::string_view type : namesIn(proto->text).types) {
        if (!seen.insert(type).second)
            continue;
        if (SoVRMLProto* used = findUsed(proto, type))
            collect(used);
    }
    hold(proto);
    m_protos.push_back(proto);
}

void SceneWriter::nameProtos()
{
    // Prototypes of one name may come from places that do not know of each other.
    std::unordered_map<std::string, int> taken; // and the last number tried behind each
    for (const SoVRMLProto* proto : m_protos) {
        std::string name(proto->name.view());
        int& number = taken[name];
        while (number > 0 && !taken.try_emplace(name, 1).second) {
            name = std::string(proto->name.view()) + '_';
            SbNumber::appendInt(name, number++);
        }
        number = std::max(number, 1);
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
    const Names names = namesIn(proto->text);
    for (const std::string_view type : names.types) {
        const SoVRMLProto* used = findUsed(proto, type);
        if (!used || names.declared.count(type) || !m_protoNames.count(used))
            continue;
        text.append(at, type.data());
        text += nameOfProto(used);
        at = type.data() + type.size();
    }
    return text.append(at, proto->text.data() + proto->text.size());
}

/// With urls that lead from the folder of what is written to where they led.
std::string SceneWriter::externalText(const SoVRMLProto& proto) const
{
    std::string urls;
    bool anyMoved = false;
    for (const SbString& url : proto.urls) {
        const SbString moved = relocated(url, proto.folder, m_folder);
        anyMoved |= moved != url;
        urls += ' ';
        writeQuoted(urls, moved.toStdString());
    }
    return anyMoved ? proto.text.substr(0, proto.urlsAt) + " [" + urls + " ]" : textOf(&proto);
}

void SceneWriter::prototypes()
{
    nameProtos();
    for (const SoVRMLProto* proto : m_protos) {
        m_buffer += proto->external ? "EXTERNPROTO " : "PROTO ";
        m_buffer += isVrml97() ? std::string_view() : kProtoPrefix;
        m_buffer += nameOfProto(proto);
        m_buffer += ' ';
        m_buffer += proto->external ? externalText(*proto) : textOf(proto);
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
