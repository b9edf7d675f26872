#include "PrototypeReader.h"

#include "NodeReader.h"
#include "vrml/LocalUrl.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/sensors/SoRoute.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

/// The text of a prototype. Remarks on it have their place in the file that declares it; where that
/// is not at hand, the place of the instance.
class ProtoInput final : public SoInput {
public:
    ProtoInput(SceneText& outer, const SoVRMLProto& proto, SceneText* file)
        : SoInput(&outer.getInput()), m_outer(outer), m_file(file), m_proto(proto)
    {
        setFolder(proto.folder);
    }
    void warn(const SbString& fileName, int line, int column, const SbString& text) override
    {
        const SoTokenizer& place = m_outer.getTokens();
        const std::string message =
            "in prototype '" + std::string(m_proto.name.view()) + "': " + text.toStdString();
        if (fileName != getCurFileName()) // one that the body refers to
            getParent()->warn(fileName, line, column, text);
        else if (m_file)
            m_file->warnInPart(m_proto.fileAt, line, column, message);
        else
            m_outer.warnOnce(message, place.getText() + place.getOffset(), message);
    }

private:
    SceneText& m_outer;
    SceneText* m_file;
    const SoVRMLProto& m_proto;
};

bool isKnownFieldType(std::string_view name)
{
    const SbName known = SbName::find(name);
    return !known.isEmpty() && SoType::fromName(known).isDerivedFrom(SoField::getClassTypeId());
}

/// Lets a field in the body take part in the one of the interface that it names.
void connectIs(SoField& outer, SoField& field, bool isEvent)
{
    const bool isList = field.isOfType(SoMNodeField::getClassTypeId());
    const bool isChildren = isList && static_cast<SoMNodeField&>(field).isBound();
    if (outer.getFieldType() == SoField::EVENT_OUT) {
        // An event may come from several nodes.
        if (outer.isConnected() || !connectFields(field, outer, false))
            SoRoute::add(&field, &outer);
    } else if (isChildren) { // which follow nobody
        if (outer.getFieldType() != SoField::EVENT_IN)
            field.copyFrom(outer);
        if (outer.getFieldType() != SoField::ORDINARY)
            SoRoute::add(&outer, &field);
    } else if (isEvent || outer.getFieldType() == SoField::EVENT_IN) {
        connectFields(outer, field, false);
    } else if (isList) {
        field.copyFrom(outer); // a field may stand for a list of children, which follows nobody
    } else {
        connectFields(outer, field, true);
    }
}

} // namespace

SoVRMLProto* PrototypeReader::find(std::string_view name) const
{
    name = m_scene.getDialect().protoName(name);
    const SbName known = SbName::find(name);
    return known.isEmpty() || !m_protos ? nullptr : m_protos->find(known);
}

void PrototypeReader::warnOfName(std::string_view name)
{
    if (!SbName::isBaseNameStartChar(name[0]))
        m_scene.warnOddName(name);
    const SoVRMLProto* before = find(name);
    if (before && (!m_known || m_known->find(before->name) != before))
        m_scene.warnOnce("again " + std::string(name), name.data(),
                         "prototype " + quoted(name) + " is declared again");
}

bool PrototypeReader::readProto(bool external)
{
    SoTokenizer& text = m_scene.getTokens();
    std::string_view name;
    if (!text.readName(name) || !m_scene.getDialect().isLegalName(name)
        || m_scene.getDialect().protoName(name).empty())
        return text.fail("expected the name of a prototype");
    if (m_scene.getDialect().isLenient)
        warnOfName(name);
    SoRef<SoVRMLProto> proto(new SoVRMLProto);
    proto->name = SbName(m_scene.getDialect().protoName(name));
    proto->external = external;
    proto->folder = m_scene.getInput().getFolder();
    text.peek();
    const SoTokenizer::Hold hold(text);
    const std::size_t begin = text.getOffset();
    proto->fileAt = m_scene.toFileOffset(begin);
    if (!readInterface(*proto, begin))
        return false;
    if (external) {
        proto->urlsAt = text.getOffset() - begin;
        if (!readUrls(*proto))
            return false;
        proto->builtIn = builtInType(*proto);
        const bool isOwnName =
            !proto->builtIn.isBad() && proto->builtIn == m_scene.getDialect().findType(name);
        if (isOwnName && !find(name))
            return true; // it means that type anyway
    } else {
        text.peek();
        proto->bodyAt = text.getOffset() - begin + 1;
        if (!m_scene.skipBlock('{', false))
            return false;
    }
    proto->text.assign(text.getText() + begin, text.getOffset() - begin);
    proto->declareBehind(m_protos);
    m_protos = std::move(proto);
    m_nodes.forgetType(name); // it may have meant something else before
    return true;
}

/// The node type of VRML97 that a urn names; bad when none does.
SoType PrototypeReader::builtInType(const SoVRMLProto& proto)
{
    constexpr std::string_view kNode = ":node:";
    for (const SbString& url : proto.urls) {
        const std::string_view urn = url.view();
        const std::size_t at = urn.starts_with("urn:") ? urn.rfind(kNode) : urn.npos;
        const SoType type =
            at == urn.npos ? SoType() : kVrml97Dialect.findType(urn.substr(at + kNode.size()));
        if (type.isDerivedFrom(SoNode::getClassTypeId()) && type.canCreateInstance())
            return type;
    }
    return {};
}

bool PrototypeReader::readInterface(SoVRMLProto& proto, std::size_t textAt)
{
    SoTokenizer& text = m_scene.getTokens();
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

bool PrototypeReader::readInterfaceEntry(SoVRMLProto& proto, std::string_view kind,
                                         std::size_t textAt)
{
    SoTokenizer& text = m_scene.getTokens();
    const SoField::FieldType* type = findFieldKind(kind);
    if (!type)
        return m_scene.failAt(kind,
                              "expected 'field', 'exposedField', 'eventIn', 'eventOut' or ']'");
    warnOfLaterKind(m_scene, kind);
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
        if (text.atEnd() || !m_scene.skipValue(false))
            return text.fail("expected a value for '" + std::string(name) + "'");
    }
    // A value that is missing is the default of the type.
    if (found && hasValue)
        entry.valueAt = valueAt - textAt;
    if (found && !hasValue)
        m_scene.warnOnce("value " + std::string(name), text.getText() + valueAt,
                         "'" + std::string(name) + "' can have no value here; it is left out");
    if (!found && hasValue)
        m_scene.warnOnce("value " + std::string(name), name.data(),
                         "'" + std::string(name)
                             + "' has no value; it gets the default of its type");
    if (isKnownFieldType(fieldType)) {
        proto.interface.push_back(entry);
    } else {
        m_scene.warnOnce("type " + std::string(fieldType), fieldType.data(),
                         "field type '" + std::string(fieldType)
                             + "' is unknown; fields of it are left out");
    }
    return true;
}

bool PrototypeReader::readUrls(SoVRMLProto& proto)
{
    SoTokenizer& text = m_scene.getTokens();
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
SoVRMLProto* PrototypeReader::bodyOf(SoVRMLProto* proto)
{
    constexpr int kMaxFiles = 50; // that pass an instance on from one to the next
    for (int i = 0; i < kMaxFiles && proto && proto->external; ++i) {
        if (!proto->resolved && !proto->resolving) {
            proto->resolving = true;
            for (const SbString& url : proto->urls) {
                proto->resolved = findInFile(*proto, url);
                if (proto->resolved || m_scene.isStopped())
                    break;
            }
        }
        proto = proto->resolved.get();
    }
    return proto && !proto->external ? proto : nullptr;
}

SoRef<SoVRMLProto> PrototypeReader::findInFile(const SoVRMLProto& proto, const SbString& url)
{
    SoInput origin(&m_scene.getInput());
    origin.setFolder(proto.folder);
    const std::string address = url.toStdString();
    const std::size_t hash = address.find('#');
    const SbString name = localFileName(SbString(address.substr(0, hash)));
    const SbString file = name.isEmpty() ? SbString() : origin.findFile(name);
    if (file.isEmpty() || m_scene.getInput().isReading(file) || !m_scene.getInput().countFile())
        return nullptr;
    SoInput in(&origin);
    if (!in.openFile(file) || !in.isFileVRML2())
        return nullptr;
    NodeReader reader(in, kVrml97Dialect);
    SoRef<SoVRMLProto> found = reader.getPrototypes().readNamed(
        hash == std::string::npos ? std::string_view()
                                  : std::string_view(address).substr(hash + 1));
    if (!found)
        reader.getScene().tellFault();
    return found;
}

bool PrototypeReader::expand(SoVRMLProtoInstance* instance, std::size_t at)
{
    SoTokenizer& text = m_scene.getTokens();
    SoVRMLProto* declared = instance->getProto();
    const std::string name(declared->name.view());
    if (m_nodes.getProtoDepth() >= kMaxNesting)
        return text.failAt(at, "expected prototypes nested at most " + std::to_string(kMaxNesting)
                                   + " deep");
    const SoRef<SoVRMLProto> proto(bodyOf(declared));
    // Instances cost time beside that for their text.
    constexpr std::size_t kWork = 1000;
    if (!m_scene.countWork(kWork + (proto ? proto->text.size() : 0)))
        return false;
    if (!proto) {
        m_scene.warnOnce("prototype " + name, text.getText() + at,
                         "prototype '" + name + "' cannot be found; its instances stay empty");
        return true;
    }
    SceneText* file = proto == declared ? m_scene.getFile() : nullptr;
    ProtoInput in(m_scene, *proto, file);
    SceneText::openText(in, proto->text, name);
    NodeReader reader(in, m_nodes, *proto, instance, file);
    instance->enableNotify(false);
    const bool ok = readDefaults(reader, *instance, *proto)
                    && (reader.text.setOffset(proto->bodyAt), readParts(reader, *instance))
                    && (proto->checked || reader.getPrototypes().checkUnused());
    proto->checked = true;
    instance->enableNotify(true);
    if (ok || m_scene.isStopped())
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

bool PrototypeReader::checkUnused()
{
    constexpr int kMaxLevels = 32; // of declarations in each other: each is read again
    if (m_nodes.getProtoDepth() >= kMaxLevels)
        return true;
    std::vector<SoVRMLProto*> unused;
    for (SoVRMLProto* proto = m_protos.get(); proto && proto != m_known;
         proto = proto->getPrevious())
        if (!proto->checked && !proto->external)
            unused.push_back(proto);
    for (auto proto = unused.rbegin(); proto != unused.rend(); ++proto)
        if (!check(**proto))
            return false;
    return true;
}

bool PrototypeReader::check(SoVRMLProto& proto)
{
    proto.checked = true;
    if (!m_scene.countWork(proto.text.size()))
        return false;
    const SoRef<SoVRMLProtoInstance> instance(new SoVRMLProtoInstance);
    instance->setProto(&proto);
    ProtoInput in(m_scene, proto, m_scene.getFile());
    SceneText::openText(in, proto.text, std::string(proto.name.view()));
    NodeReader reader(in, m_nodes, proto, instance.get(), m_scene.getFile());
    reader.setCheckOnly();
    instance->enableNotify(false);
    const bool ok = readDefaults(reader, *instance, proto)
                    && (reader.text.setOffset(proto.bodyAt), readParts(reader, *instance));
    if (m_scene.isStopped())
        return false;
    if (!ok)
        in.warnAt(reader.text.getErrorLine(), reader.text.getErrorColumn(),
                  SbString(reader.text.getError() + "; no instance of it could be made"));
    return reader.getPrototypes().checkUnused();
}

bool PrototypeReader::readDefaults(NodeReader& reader, SoVRMLProtoInstance& instance,
                                   const SoVRMLProto& body)
{
    const bool isElsewhere = &body != instance.getProto();
    for (const SoVRMLProto::Entry& entry : body.interface) {
        SoField* field = instance.getField(entry.name);
        // Declarations of prototypes elsewhere need not name what nobody here sets.
        if (!field && isElsewhere)
            field = instance.getDeclared().declare(entry.type, entry.name, entry.kind);
        if (!field || !field->isDefault() || entry.valueAt == 0
            || (isElsewhere && field->getTypeId() != SoType::fromName(entry.type)))
            continue;
        reader.text.setOffset(entry.valueAt);
        if (!reader.getValues().read(*field))
            return reader.text.fail("expected a value");
        field->setDefault(true);
    }
    // Names in default values are none of the body's.
    reader.getScene().getDefinitions().clear();
    return true;
}

bool PrototypeReader::readParts(NodeReader& reader, SoVRMLProtoInstance& instance)
{
    SoTokenizer& text = reader.text;
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word))
            return text.fail("expected a node or '}'");
        const Parsed statement = reader.tryStatement(word);
        SoNode* node = nullptr;
        if (statement == Parsed::Fault
            || (statement == Parsed::No && !reader.readNodeFrom(word, node)))
            return false;
        if (node)
            instance.getParts().append(node);
        text.reportProgress();
    }
    if (instance.getParts().getLength() == 0)
        reader.getScene().warnOnce("empty", text.getText() + text.getOffset() - 1,
                                   "the body holds no node");
    return reader.getRoutes().makeLateRoutes();
}

SoRef<SoVRMLProto> PrototypeReader::readNamed(std::string_view name)
{
    SoTokenizer& text = m_scene.getTokens();
    while (!text.atEnd()) {
        std::string_view word;
        if (!text.readWord(word)) {
            // Whatever stands between the prototypes does not matter here.
            if (!m_scene.skipValue(false))
                return nullptr;
            continue;
        }
        const bool external = word == "EXTERNPROTO";
        if (!external && word != "PROTO") {
            if (text.peek() == '{' && !m_scene.skipBlock('{', false))
                return nullptr;
            continue;
        }
        if (!readProto(external))
            return nullptr;
        if (name.empty() || m_protos->name == name)
            return m_protos;
    }
    return nullptr;
}

std::string_view PrototypeReader::exposedName(std::string_view event) const
{
    if (m_instance && event.starts_with(kSet))
        return event.substr(kSet.size());
    if (m_instance && event.ends_with(kChanged))
        return event.substr(0, event.size() - kChanged.size());
    return {};
}

Parsed PrototypeReader::tryIs(SoField& field, bool isEvent)
{
    SoTokenizer& text = m_scene.getTokens();
    if (!m_instance || !text.acceptWord("IS"))
        return Parsed::No;
    std::string_view name;
    if (!text.readName(name))
        return parsedIf(text.fail("expected the name of a field of the prototype"));
    const bool writes = field.getFieldType() == SoField::EVENT_OUT;
    SoField* outer = fieldOfEvent(*m_instance, name, writes);
    if (!outer)
        m_scene.warnOnce("is " + std::string(name), name.data(),
                         "the prototype has no field '" + std::string(name) + "'");
    else if (outer->getTypeId() != field.getTypeId())
        m_scene.warnOnce("is " + std::string(name), name.data(),
                         "the prototype's field '" + std::string(name) + "' is of another type");
    else {
        m_instance->notePassedOn(*outer);
        connectIs(*outer, field, isEvent);
    }
    return Parsed::Yes;
}

void PrototypeReader::keepUnused(const SoNode* root) const
{
    std::vector<const SoVRMLProto*> unused;
    for (const SoVRMLProto* proto = m_protos.get(); proto; proto = proto->getPrevious())
        if (proto->getNumInstances() == 0)
            unused.push_back(proto);
    for (auto proto = unused.rbegin(); proto != unused.rend(); ++proto)
        SoForeignFields::add(root,
                             ((*proto)->external ? "EXTERNPROTO " : "PROTO ")
                                 + std::string((*proto)->name.view()),
                             (*proto)->text);
}

} // namespace kalmyr::detail
