// Prototypes of VRML97: their declarations, and instances of them.
#include "SoSceneReader.h"

#include "vrml/LocalUrl.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/vrml/SoVRMLProto.h>

#include <algorithm>
#include <array>

namespace kalmyr::detail {

namespace {

struct Kind {
    std::string_view word;
    SoField::FieldType type;
};
constexpr std::array kKinds{
    Kind{"field", SoField::ORDINARY},
    Kind{"exposedField", SoField::EXPOSED},
    Kind{"eventIn", SoField::EVENT_IN},
    Kind{"eventOut", SoField::EVENT_OUT},
    // As later versions of the language call them.
    Kind{"initializeOnly", SoField::ORDINARY},
    Kind{"inputOutput", SoField::EXPOSED},
    Kind{"inputOnly", SoField::EVENT_IN},
    Kind{"outputOnly", SoField::EVENT_OUT},
};

/// The text of a prototype. Remarks go to the file that has the instance.
class ProtoInput final : public SoInput {
public:
    ProtoInput(SoInput* parent, const SoVRMLProto& proto) : SoInput(parent), m_proto(proto)
    {
        setFolder(proto.folder);
    }
    void warn(const SbString&, int, int, const SbString& text) override
    {
        getParent()->warnHere("in prototype '" + SbString(m_proto.name) + "': " + text);
    }

private:
    const SoVRMLProto& m_proto;
};

bool isKnownFieldType(std::string_view name)
{
    const SbName known = SbName::find(name);
    return !known.isEmpty() && SoType::fromName(known).isDerivedFrom(SoField::getClassTypeId());
}

} // namespace

const SoField::FieldType* findFieldKind(std::string_view word)
{
    const auto found = std::find_if(kKinds.begin(), kKinds.end(),
                                    [word](const Kind& kind) { return kind.word == word; });
    return found == kKinds.end() ? nullptr : &found->type;
}

SoVRMLProto* SceneReader::findProto(std::string_view name) const
{
    name = protoName(name);
    const SbName known = SbName::find(name);
    return known.isEmpty() || !m_protos ? nullptr : m_protos->find(known);
}

bool SceneReader::readProto(bool external)
{
    std::string_view name;
    if (!text.readName(name) || !isLegalName(name) || protoName(name).empty())
        return text.fail("expected the name of a prototype");
    SoRef<SoVRMLProto> proto(new SoVRMLProto);
    proto->name = SbName(protoName(name));
    proto->external = external;
    proto->folder = m_in.getFolder();
    text.peek();
    const SoTokenizer::Hold hold(text);
    const std::size_t begin = text.getOffset();
    if (!readInterface(*proto, begin))
        return false;
    if (external) {
        proto->urlsAt = text.getOffset() - begin;
        if (!readUrls(*proto))
            return false;
        if (isBuiltIn(*proto))
            return true; // instances are nodes of that type
    } else {
        text.peek();
        proto->bodyAt = text.getOffset() - begin + 1;
        if (!skipBlock('{', false))
            return false;
    }
    proto->text.assign(text.getText() + begin, text.getOffset() - begin);
    proto->declareBehind(m_protos);
    m_protos = std::move(proto);
    m_types.erase(name); // it may have meant something else before
    return true;
}

/// Whether a urn says that the prototype is a node type of this name, which we have.
bool SceneReader::isBuiltIn(const SoVRMLProto& proto) const
{
    const std::string end = ":node:" + std::string(proto.name.view());
    const auto names = [&end](const SbString& url) {
        const std::string text = url.toStdString();
        return text.starts_with("urn:") && text.ends_with(end);
    };
    return std::any_of(proto.urls.begin(), proto.urls.end(), names)
           && !findType(proto.name.view()).isBad();
}

bool SceneReader::readInterface(SoVRMLProto& proto, std::size_t textAt)
{
    if (!text.expect('['))
        return false;
    while (!text.accept(']')) {
        std::string_view kind;
        if (!text.readWord(kind))
            return text.fail("expected 'field', 'exposedField', 'eventIn', 'eventOut' or ']'");
        if (!readInterfaceEntry(proto, kind, textAt))
            return false;
        text.reportProgress();
    }
    return true;
}

bool SceneReader::readInterfaceEntry(SoVRMLProto& proto, std::string_view kind, std::size_t textAt)
{
    const SoField::FieldType* type = findFieldKind(kind);
    if (!type)
        return text.failAt(static_cast<std::size_t>(kind.data() - text.getText()),
                           "expected 'field', 'exposedField', 'eventIn', 'eventOut' or ']'");
    std::string_view fieldType, name;
    if (!text.readWord(fieldType))
        return text.fail("expected a field type");
    if (!text.readName(name))
        return text.fail("expected a field name");
    SoVRMLProto::Entry entry{*type, SbName(fieldType), SbName(name), 0};
    const bool hasValue =
        !proto.external && (*type == SoField::ORDINARY || *type == SoField::EXPOSED);
    text.peek();
    const std::size_t valueAt = text.getOffset();
    bool found = false;
    while (text.peek() != ']' && !findFieldKind(text.peekWord())) {
        found = true;
        if (text.atEnd() || !skipValue(false))
            return text.fail("expected a value for '" + std::string(name) + "'");
    }
    // A value that is missing is the default of the type.
    if (found && hasValue)
        entry.valueAt = valueAt - textAt;
    if (found && !hasValue)
        warnOnce("value " + std::string(name), text.getText() + valueAt,
                 "'" + std::string(name) + "' can have no value here; it is left out");
    if (isKnownFieldType(fieldType)) {
        proto.interface.push_back(entry);
    } else {
        warnOnce("type " + std::string(fieldType), fieldType.data(),
                 "field type '" + std::string(fieldType)
                     + "' is unknown; fields of it are left out");
    }
    return true;
}

bool SceneReader::readUrls(SoVRMLProto& proto)
{
    const bool many = text.accept('[');
    std::string url;
    do {
        if (many && text.accept(']'))
            return true;
        if (text.peek() != '"')
            return text.fail(many ? "expected a url in quotes or ']'" : "expected a url in quotes");
        if (!text.readString(url))
            return false;
        proto.urls.emplace_back(url);
    } while (many);
    return true;
}

/// The declaration that has the body; null when it cannot be had.
SoVRMLProto* SceneReader::bodyOf(SoVRMLProto* proto)
{
    constexpr int kMaxFiles = 50; // that pass an instance on from one to the next
    for (int i = 0; i < kMaxFiles && proto && proto->external; ++i) {
        if (!proto->resolved && !proto->resolving) {
            proto->resolving = true;
            for (const SbString& url : proto->urls) {
                proto->resolved = findInFile(*proto, url);
                if (proto->resolved || isStopped())
                    break;
            }
        }
        proto = proto->resolved.get();
    }
    return proto && !proto->external ? proto : nullptr;
}

SoRef<SoVRMLProto> SceneReader::findInFile(const SoVRMLProto& proto, const SbString& url)
{
    SoInput origin(&m_in);
    origin.setFolder(proto.folder);
    const std::string address = url.toStdString();
    const std::size_t hash = address.find('#');
    const SbString name = localFileName(SbString(address.substr(0, hash)));
    const SbString file = name.isEmpty() ? SbString() : origin.findFile(name);
    if (file.isEmpty() || m_in.isReading(file) || !m_in.countFile())
        return nullptr;
    SoInput in(&origin);
    if (!in.openFile(file) || !in.isFileVRML2())
        return nullptr;
    Vrml97Reader reader(in);
    reader.m_protoDepth = m_protoDepth;
    SoRef<SoVRMLProto> found = reader.readProtoNamed(
        hash == std::string::npos ? std::string_view()
                                  : std::string_view(address).substr(hash + 1));
    if (!found)
        reader.abandon();
    return found;
}

bool SceneReader::expand(SoVRMLProtoInstance* instance, std::size_t at)
{
    SoVRMLProto* declared = instance->getProto();
    const std::string name(declared->name.view());
    if (m_protoDepth >= kMaxProtoNesting)
        return text.failAt(at, "expected prototypes nested at most "
                                   + std::to_string(kMaxProtoNesting) + " deep");
    const SoRef<SoVRMLProto> proto(bodyOf(declared));
    // Instances cost time beside that for their text.
    constexpr std::size_t kWork = 1000;
    if (!countWork(kWork + (proto ? proto->text.size() : 0)))
        return false;
    if (!proto) {
        warnOnce("prototype " + name, text.getText() + at,
                 "prototype '" + name + "' cannot be found; its instances stay empty");
        return true;
    }
    ProtoInput in(&m_in, *proto);
    in.m_tokens = SoTokenizer(proto->text.c_str(), proto->text.size(), name);
    in.m_open = true;
    if (proto->text.size() > SoTokenizer::kProgressStep) // small ones are counted
        in.watchProgress();
    Vrml97Reader reader(in, *this, proto->getPrevious(), instance);
    instance->enableNotify(false);
    const bool ok = readDefaults(reader, *instance)
                    && (reader.text.setOffset(proto->bodyAt), reader.readProtoBody(*instance));
    instance->enableNotify(true);
    if (ok || isStopped())
        return ok;
    // Of prototypes in each other's bodies the first and the last are named.
    const std::string_view inner(reader.text.getError());
    constexpr std::string_view kBecause = " cannot be made, because ";
    std::string reason = "prototype '" + name + "' cannot be made, ";
    if (const std::size_t because = inner.find(kBecause); because != inner.npos)
        reason.append("because ").append(inner.substr(because + kBecause.size()));
    else if (inner.starts_with("prototype '"))
        reason.append("because ").append(inner);
    else
        reason
            .append("line " + std::to_string(reader.text.getErrorLine()) + " of its declaration: ")
            .append(inner);
    return text.failAt(at, reason);
}

bool SceneReader::readDefaults(Vrml97Reader& reader, SoVRMLProtoInstance& instance)
{
    const SoVRMLProto* proto = instance.getProto();
    const SoVRMLProto* body = bodyOf(instance.getProto());
    for (const SoVRMLProto::Entry& entry : body->interface) {
        SoField* field = instance.getField(entry.name);
        // Declarations of prototypes elsewhere need not name what nobody here sets.
        if (!field && body != proto)
            field = instance.getDeclared().declare(entry.type, entry.name, entry.kind);
        if (!field || !field->isDefault() || entry.valueAt == 0
            || (body != proto && field->getTypeId() != SoType::fromName(entry.type)))
            continue;
        reader.text.setOffset(entry.valueAt);
        if (!reader.readFieldValue(*field))
            return reader.text.fail("expected a value");
        field->setDefault(true);
    }
    // Names in default values are none of the body's.
    reader.m_definitions.clear();
    return true;
}

} // namespace kalmyr::detail
