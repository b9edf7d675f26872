#include "PrototypeWriter.h"

#include "Relocation.h"
#include "WriteDialect.h"
#include "WriteInterruption.h"
#include "WrittenText.h"

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

/// Fields have no blank in their names.
bool PrototypeWriter::isUnused(const SoForeignFields::Entry& entry)
{
    return entry.name.find(' ') != std::string::npos;
}

void PrototypeWriter::collectUnused(const SoNode* node)
{
    for (SoForeignFields::Entry& entry : SoForeignFields::of(node))
        if (isUnused(entry))
            m_unused.push_back(std::move(entry));
}

void PrototypeWriter::collect(SoVRMLProto* proto)
{
    if (!m_met.insert(proto).second)
        return;
    std::unordered_set<std::string_view> seen;
    for (const std::string_view type : namesIn(proto->text).types) {
        if (!seen.insert(type).second)
            continue;
        if (SoVRMLProto* used = findUsed(proto, type))
            collect(used);
    }
    m_interruption.hold(proto);
    m_protos.push_back(proto);
}

void PrototypeWriter::nameAll()
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
            m_names[proto] = name;
    }
}

std::string_view PrototypeWriter::nameOf(const SoVRMLProto* proto) const
{
    const auto found = m_names.find(proto);
    return found == m_names.end() ? proto->name.view() : std::string_view(found->second);
}

std::string PrototypeWriter::textOf(const SoVRMLProto* proto) const
{
    if (m_names.empty())
        return proto->text;
    std::string text;
    const char* at = proto->text.data();
    const Names names = namesIn(proto->text);
    for (const std::string_view type : names.types) {
        const SoVRMLProto* used = findUsed(proto, type);
        if (!used || names.declared.count(type) || !m_names.count(used))
            continue;
        text.append(at, type.data());
        text += nameOf(used);
        at = type.data() + type.size();
    }
    return text.append(at, proto->text.data() + proto->text.size());
}

/// With urls that lead from the folder of what is written to where they led.
std::string PrototypeWriter::externalText(const SoVRMLProto& proto, const SbString& folder) const
{
    std::string urls;
    bool anyMoved = false;
    for (const SbString& url : proto.urls) {
        const SbString moved = relocated(url, proto.folder, folder);
        anyMoved |= moved != url;
        urls += ' ';
        writeQuoted(urls, moved.toStdString());
    }
    return anyMoved ? proto.text.substr(0, proto.urlsAt) + " [" + urls + " ]" : textOf(&proto);
}

void PrototypeWriter::declare(std::string_view word, std::string_view name,
                              std::string_view declaration)
{
    m_text << word << " " << m_dialect.protoPrefix() << name << " " << declaration << "\n";
    m_text.flushIfLarge();
}

void PrototypeWriter::write(const SbString& folder)
{
    nameAll();
    for (const SoVRMLProto* proto : m_protos) {
        declare(proto->external ? "EXTERNPROTO" : "PROTO", nameOf(proto),
                proto->external ? externalText(*proto, folder) : textOf(proto));
    }
    if (m_dialect.hasUnusedPrototypes())
        writeUnused();
}

void PrototypeWriter::writeUnused()
{
    std::unordered_set<std::string_view> names;
    for (const SoVRMLProto* proto : m_protos)
        names.insert(nameOf(proto));
    for (const SoForeignFields::Entry& entry : m_unused) {
        const std::string_view statement(entry.name);
        const std::size_t blank = statement.find(' ');
        const std::string_view name = statement.substr(blank + 1);
        if (names.insert(name).second)
            declare(statement.substr(0, blank), name, entry.value);
    }
}

} // namespace kalmyr::detail
