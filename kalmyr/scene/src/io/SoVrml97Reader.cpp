#include "SoSceneReader.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/sensors/SoRoute.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

#include <algorithm>
#include <array>

namespace kalmyr::detail {

namespace {

/// Names by which other versions of the language call fields.
struct Alias {
    std::string_view type;
    std::string_view field;
    std::string_view ours;
};
constexpr std::array kAliases{
    Alias{"VRMLLOD", "children", "level"},
    Alias{"VRMLSwitch", "children", "choice"},
    Alias{"VRMLInline", "name", "url"},
};

constexpr std::string_view kSet = "set_";
constexpr std::string_view kChanged = "_changed";

} // namespace

SoType Vrml97Reader::findType(std::string_view name) const
{
    const SbName known = SbName::find("VRML" + std::string(name));
    return known.isEmpty() || name == "ProtoInstance" ? SoType() : SoType::fromName(known);
}

bool Vrml97Reader::readTop(SoNode*& node)
{
    node = nullptr;
    while (!node) {
        if (!goesOn())
            return false;
        if (text.atEnd())
            return makeLateRoutes();
        std::string_view word;
        if (!text.readWord(word))
            return text.fail("expected a node");
        const int skipped = tryStatement(word);
        if (skipped < 0 || (skipped == 0 && !readNodeFrom(word, node)))
            return false;
    }
    return true;
}

bool Vrml97Reader::readProtoBody(SoVRMLProtoInstance& instance)
{
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word))
            return text.fail("expected a node or '}'");
        const int skipped = tryStatement(word);
        SoNode* node = nullptr;
        if (skipped < 0 || (skipped == 0 && !readNodeFrom(word, node)))
            return false;
        if (node)
            instance.getParts().append(node);
        text.reportProgress();
    }
    return makeLateRoutes();
}

SoRef<SoVRMLProto> Vrml97Reader::readProtoNamed(std::string_view name)
{
    SoRef<SoVRMLProto> last;
    while (!text.atEnd()) {
        std::string_view word;
        if (!text.readWord(word)) {
            // Whatever stands between the prototypes does not matter here.
            if (!skipValue(false))
                return nullptr;
            continue;
        }
        const bool external = word == "EXTERNPROTO";
        if (!external && word != "PROTO") {
            if (text.peek() == '{' && !skipBlock('{', false))
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

bool Vrml97Reader::readBody(SoNode* node, std::string_view typeName)
{
    auto* script =
        node->isOfType(SoVRMLScript::getClassTypeId()) ? static_cast<SoVRMLScript*>(node) : nullptr;
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word))
            return failInBody(typeName, "a field or '}'");
        int read = script ? tryDeclaration(script, word) : 0;
        if (read == 0)
            read = tryField(node, word, typeName);
        if (read == 0)
            read = tryStatement(word);
        if (read < 0 || (read == 0 && !skipField(node, word, typeName)))
            return false;
    }
    return true;
}

bool Vrml97Reader::skipField(SoNode* node, std::string_view word, std::string_view typeName)
{
    const std::string type(typeName), field(word);
    const bool isNode = text.peek() == '{' || word == "DEF" || word == "USE" || text.peek() == '}';
    if (isNode)
        return text.failAt(static_cast<std::size_t>(word.data() - text.getText()),
                           "expected a field of '" + type + "', not '" + field + "'");
    warnOnce("field " + type + "." + field, word.data(),
             "'" + field + "' is no field of '" + type + "'; it is kept as text");
    return keepField(node, word);
}

int Vrml97Reader::tryDeclaration(SoVRMLScript* script, std::string_view word)
{
    const SoField::FieldType* kind = findFieldKind(word);
    if (!kind)
        return 0;
    std::string_view type, name;
    if (!text.readWord(type) || !text.readName(name)) {
        text.fail("expected the type and the name of a field");
        return -1;
    }
    SoField* field = script->getDeclared().declare(SbName(type), SbName(name), *kind);
    const bool isEvent = *kind == SoField::EVENT_IN || *kind == SoField::EVENT_OUT;
    if (!field) {
        warnOnce("declaration " + std::string(name), type.data(),
                 "expected a known field type and a new name, not '" + std::string(type) + " "
                     + std::string(name) + "'; it is left out");
        // One that is there already takes the value.
        SoField* known = script->getField(SbName(name));
        if (known && known->getTypeId().getName() == type && known->getFieldType() == *kind)
            field = known;
        else
            return isEvent || skipValue() ? 1 : -1;
    }
    if (const int is = tryIs(script, *field, isEvent); is != 0)
        return is;
    if (isEvent)
        return 1;
    if (!readFieldValue(*field)) {
        text.fail("expected a value for '" + std::string(name) + "' of 'Script'");
        return -1;
    }
    return 1;
}

bool Vrml97Reader::readUnknownBody(SoUnknownNode* node, std::string_view typeName)
{
    const std::string name(typeName);
    // As types of this format are called elsewhere: other formats may have one of that name.
    node->setUnknownTypeName(SbName("VRML" + name));
    warnOnce("type " + name, typeName.data(),
             "node type '" + name + "' is unknown; it is kept as text");
    const SoTokenizer before = text;
    if (!readSkippedBody(node, true))
        return false;
    if (node->getBody().find_first_not_of(" \t\r\n,") == std::string::npos)
        node->setBody({});
    if (node->getBody().find('{') == std::string::npos)
        return true;
    // Nodes in it may be used elsewhere, and are to be seen.
    const SoTokenizer behind = text;
    text = before;
    if (readPieces(node)) {
        node->setBody({});
        return true;
    }
    if (isStopped())
        return false;
    text = behind;
    node->removeFields();
    SoForeignFields::forget(node);
    return true;
}

std::string_view Vrml97Reader::fieldAlias(SoNode* node, std::string_view word) const
{
    for (const Alias& alias : kAliases) {
        if (alias.field == word && node->getTypeId().getName() == alias.type)
            return alias.ours;
    }
    // "set_x IS y" and "x_changed IS y" stand for the exposed field x.
    if (!m_instance)
        return {};
    if (word.starts_with(kSet))
        return word.substr(kSet.size());
    if (word.ends_with(kChanged))
        return word.substr(0, word.size() - kChanged.size());
    return {};
}

int Vrml97Reader::tryIs(SoNode* node, SoField& field, bool isEvent)
{
    if (!m_instance || !text.acceptWord("IS"))
        return 0;
    std::string_view name;
    if (!text.readName(name)) {
        text.fail("expected the name of a field of the prototype");
        return -1;
    }
    const bool writes = field.getFieldType() == SoField::EVENT_OUT;
    SoField* outer = fieldOfEvent(*m_instance, name, writes);
    if (!outer) {
        warnOnce("is " + std::string(name), name.data(),
                 "the prototype has no field '" + std::string(name) + "'");
        return 1;
    }
    if (outer->getTypeId() != field.getTypeId()) {
        warnOnce("is " + std::string(name), name.data(),
                 "the prototype's field '" + std::string(name) + "' is of another type");
        return 1;
    }
    static_cast<void>(node);
    const bool isChildren = field.isOfType(SoMNodeField::getClassTypeId())
                            && static_cast<SoMNodeField&>(field).isBound();
    if (outer->getFieldType() == SoField::EVENT_OUT) {
        // An event may come from several nodes.
        if (outer->isConnected() || !connectFields(field, *outer, false))
            SoRoute::add(&field, outer);
    } else if (isChildren) { // which follow nobody
        if (outer->getFieldType() != SoField::EVENT_IN)
            field.copyFrom(*outer);
        if (outer->getFieldType() != SoField::ORDINARY)
            SoRoute::add(outer, &field);
    } else if (isEvent || outer->getFieldType() == SoField::EVENT_IN) {
        connectFields(*outer, field, false);
    } else if (field.isOfType(SoMNodeField::getClassTypeId())) {
        field.copyFrom(*outer); // a field may stand for a list of children, which follows nobody
    } else {
        connectFields(*outer, field, true);
    }
    return 1;
}

int Vrml97Reader::tryStatement(std::string_view word)
{
    if (word == "ROUTE")
        return readRoute(word) ? 1 : -1;
    if (word == "PROTO")
        return readProto(false) ? 1 : -1;
    if (word == "EXTERNPROTO")
        return readProto(true) ? 1 : -1;
    return 0;
}

} // namespace kalmyr::detail
