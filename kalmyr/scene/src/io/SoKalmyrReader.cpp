#include "SoSceneReader.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

#include <algorithm>
#include <iterator>

namespace kalmyr::detail {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Field types under their names of VRML 1.0.
SbName currentFieldType(std::string_view type)
{
    if (type == "SFLong")
        return SbName("SFInt32");
    if (type == "MFLong")
        return SbName("MFInt32");
    return SbName(type);
}

/// Prototypes are called "proto:Name" here, so that they cannot be taken for classes.
constexpr std::string_view kProtoPrefix = "proto:";

/// A type as text can name it: files have words there that mean something else, or begin oddly.
SbName legalType(std::string_view type)
{
    constexpr std::string_view kOther[] = {"DEF",    "USE",    "NULL",  "ROUTE",       "Path",
                                           "ENGINE", "GLOBAL", "PROTO", "EXTERNPROTO", "KEEP"};
    const bool isOther = std::find(std::begin(kOther), std::end(kOther), type) != std::end(kOther);
    return SbName(isOther || !SbName::isBaseNameStartChar(type[0]) ? "_" + std::string(type)
                                                                   : std::string(type));
}

/// Files may call such fields anything, numbers included.
bool declaresFields(const SoNode* node)
{
    return node->isOfType(SoVRMLScript::getClassTypeId())
           || node->isOfType(SoUnknownNode::getClassTypeId())
           || node->isOfType(SoVRMLProtoInstance::getClassTypeId());
}

bool declareField(SoNode* node, const SbName& type, const SbName& name, SoField::FieldType kind)
{
    if (node->isOfType(SoUnknownNode::getClassTypeId())) {
        auto* unknown = static_cast<SoUnknownNode*>(node);
        SoField* field = unknown->declareField(type, name);
        if (!field)
            return false;
        unknown->setDeclaration(true);
        field->setFieldType(kind);
        return true;
    }
    if (node->isOfType(SoVRMLScript::getClassTypeId()))
        return static_cast<SoVRMLScript*>(node)->getDeclared().declare(type, name, kind) != nullptr;
    return false;
}

} // namespace

SoType KalmyrReader::findType(std::string_view name) const
{
    const SbName known = SbName::find(name);
    const bool isInstance = name == "VRMLProtoInstance"; // these are called as their prototype is
    return known.isEmpty() || isInstance ? SoType() : SoType::fromName(known);
}

std::string_view KalmyrReader::protoName(std::string_view name) const
{
    return name.starts_with(kProtoPrefix) ? name.substr(kProtoPrefix.size()) : std::string_view();
}

int KalmyrReader::tryStatement(std::string_view word)
{
    if (word == "ROUTE")
        return readRoute(word) ? 1 : -1;
    SoRef<SoEngine> engine;
    if (word == "ENGINE" && !isVrml1())
        return readEngineStatement(engine) ? 1 : -1;
    if (word == "GLOBAL" && !isVrml1())
        return readGlobalStatement() ? 1 : -1;
    if (word != "PROTO" && word != "EXTERNPROTO")
        return 0;
    return readProto(word == "EXTERNPROTO") ? 1 : -1;
}

SoFieldContainer* KalmyrReader::findContainer(std::string_view name) const
{
    if (SoNode* node = findDefinition(name))
        return node;
    const auto engine = m_engines.find(name);
    return engine == m_engines.end() ? nullptr : engine->second.get();
}

bool KalmyrReader::readEngine(SoEngine*& engine)
{
    engine = nullptr;
    std::string_view word;
    if (!text.readWord(word))
        return text.fail("expected NULL, ENGINE or the name of an engine");
    if (word == "NULL")
        return true;
    SoRef<SoEngine> made;
    if (word == "ENGINE" && !readEngineStatement(made))
        return false;
    const auto known = m_engines.find(word);
    engine = made ? made.get() : known == m_engines.end() ? nullptr : known->second.get();
    return engine
           || text.failAt(static_cast<std::size_t>(word.data() - text.getText()),
                          "expected NULL, ENGINE or the name of an engine");
}

bool KalmyrReader::readEngineStatement(SoRef<SoEngine>& engine)
{
    std::string_view name, type;
    if (!text.readName(name) || !isLegalName(name))
        return text.fail("expected a name");
    text.peek();
    const std::size_t typeAt = text.getOffset();
    if (!text.readWord(type))
        return text.fail("expected the type of an engine");
    const SbName known = SbName::find(type);
    engine = known.isEmpty() ? nullptr : SoEngine::create(SoType::fromName(known));
    if (!engine)
        return text.failAt(typeAt, "expected the type of an engine");
    engine->setName(SbName(name));
    m_engines[name] = engine;
    if (!text.expect('{'))
        return false;
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word))
            return failInBody(type, "a field or '}'");
        const SbName fieldName = SbName::find(word);
        SoField* field = fieldName.isEmpty() ? nullptr : engine->getField(fieldName);
        if (!field || engine->computes(field))
            return text.failAt(static_cast<std::size_t>(word.data() - text.getText()),
                               "expected an input of '" + std::string(type) + "'");
        if (!readFieldValue(*field))
            return text.fail("expected a value");
        afterValue(*field);
    }
    return true;
}

bool KalmyrReader::readGlobalStatement()
{
    std::string_view type, name;
    text.peek();
    const std::size_t typeAt = text.getOffset();
    if (!text.readWord(type) || !text.readName(name))
        return text.fail("expected the type and the name of a global field");
    const SbName known = SbName::find(type);
    const SoType fieldType = known.isEmpty() ? SoType() : SoType::fromName(known);
    if (!fieldType.isDerivedFrom(SoField::getClassTypeId()) || !fieldType.canCreateInstance())
        return text.failAt(typeAt, "expected the type of a field");
    const SbName global(name);
    const bool isNew = !SoGlobalField::find(global);
    SoField* field = SoGlobalField::create(global, fieldType);
    if (isNew && field)
        m_newGlobals.push_back(global);
    if (!field)
        return text.failAt(typeAt,
                           "expected another name or type: the global field is a different one");
    // One that exists already belongs to the whole process, not to this file.
    const std::unique_ptr<SoField> ignored(static_cast<SoField*>(fieldType.createInstance()));
    return readFieldValue(isNew ? *field : *ignored) || text.fail("expected a value");
}

void KalmyrReader::release()
{
    SceneReader::release();
    m_engines.clear();
    m_declared.clear();
    // Global fields of the file that no node follows go, too. Nodes handed out before keep theirs.
    for (const SbName& name : m_newGlobals) {
        const SoField* field = SoGlobalField::find(name);
        if (field && field->getAuditors().getLength() == 0)
            SoGlobalField::remove(name);
    }
    m_newGlobals.clear();
}

bool KalmyrReader::readTop(SoNode*& node)
{
    node = nullptr;
    while (!node && goesOn() && !atEndOfFile()) {
        std::string_view word;
        if (!text.readWord(word))
            return text.fail("expected a node");
        const int statement = tryStatement(word);
        if (statement < 0 || (statement == 0 && !readNodeFrom(word, node)))
            return false;
        if (node && word == "USE")
            m_indexCheck.reuse(node);
    }
    return !text.hasFailed();
}

bool KalmyrReader::isVrml1() const
{
    return m_in.getFormat() == SoInput::VRML1;
}

bool KalmyrReader::isNode(std::string_view word)
{
    return word == "DEF" || word == "USE" || text.peek() == '{' || text.peek() == '}';
}

bool KalmyrReader::isLegalName(std::string_view name) const
{
    if (isVrml1())
        return !name.empty();
    return !isDigit(name[0]);
}

std::string_view KalmyrReader::ownName(std::string_view name) const
{
    const std::size_t plus = name.rfind('+');
    if (plus == std::string_view::npos)
        return name;
    const std::string_view number = name.substr(plus + 1);
    const bool instance = !number.empty() && std::all_of(number.begin(), number.end(), isDigit);
    return instance ? name.substr(0, plus) : name;
}

void KalmyrReader::afterValue(SoField& field)
{
    if (text.accept('~'))
        field.setIgnored(true);
}

bool KalmyrReader::readBody(SoNode* node, std::string_view typeName)
{
    SoChildList* children = node->getChildren();
    const IndexCheck::Scope before = m_indexCheck.open();
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word) && !(declaresFields(node) && text.readName(word)))
            return failInBody(typeName, children ? "a field, a node or '}'" : "a field or '}'");
        int read = tryField(node, word, typeName);
        if (read == 0)
            read = tryStatement(word);
        if (read == 0)
            read = tryForeign(node, word, typeName);
        if (read < 0)
            return false;
        if (read > 0)
            continue;
        if (!children)
            return text.failAt(static_cast<std::size_t>(word.data() - text.getText()),
                               "expected a field of '" + std::string(typeName) + "', not '"
                                   + std::string(word) + "'");
        SoNode* child = nullptr;
        if (!readNodeFrom(word, child))
            return false;
        if (child)
            children->append(child);
        if (word == "USE")
            m_indexCheck.reuse(child);
        text.reportProgress();
    }
    if (const auto remark = m_indexCheck.close(node, before))
        warnOnce("index " + std::to_string(text.getOffset()), typeName.data(), *remark);
    if (!m_declared.empty())
        m_declared.erase(node);
    return true;
}

int KalmyrReader::tryForeign(SoNode* node, std::string_view word, std::string_view typeName)
{
    bool ok = false;
    if (word == "fields") {
        const bool keepsOwn = node->isOfType(SoUnknownNode::getClassTypeId())
                              || node->isOfType(SoVRMLScript::getClassTypeId());
        ok = keepsOwn ? readDeclaration(node) : keepDeclaration(node);
    } else if (word == "KEEP" && !isVrml1()) {
        ok = readKept(node);
    } else if (isNode(word) || !(isVrml1() || isDeclared(node, word))) {
        return 0;
    } else {
        if (!isDeclared(node, word) && !node->isOfType(SoUnknownNode::getClassTypeId()))
            warnOnce("field " + std::string(typeName) + "." + std::string(word), word.data(),
                     "'" + std::string(word) + "' is no field of '" + std::string(typeName)
                         + "'; it is kept as text");
        ok = keepField(node, word);
    }
    return ok ? 1 : -1;
}

bool KalmyrReader::readUnknownBody(SoUnknownNode* node, std::string_view typeName)
{
    node->setUnknownTypeName(legalType(typeName));
    const std::string_view first = text.peekWord();
    if (first == "KEEP" && !isVrml1())
        return readBody(node, typeName);
    if (first != "fields") {
        // A node without anything in it says as much as one that declares that it has no fields.
        if (text.accept('}'))
            return true;
        warnOnce("type " + std::string(typeName), typeName.data(),
                 "node type '" + std::string(typeName) + "' is unknown; it is kept as text");
        return readKeptBody(node, typeName);
    }
    text.acceptWord("fields");
    if (!readDeclaration(node) || !readBody(node, typeName))
        return false;
    node->findStandIn();
    return true;
}

bool KalmyrReader::readKeptBody(SoUnknownNode* node, std::string_view typeName)
{
    const SoTokenizer before = text;
    if (!readSkippedBody(node, true))
        return false;
    const std::string& body = node->getBody();
    if (!isVrml1()
        || (body.find('{') == std::string::npos && body.find("USE") == std::string::npos))
        return true;
    // Nodes in it may be used elsewhere, and are to be seen.
    const SoTokenizer behind = text;
    const IndexCheck::Scope scope = m_indexCheck.open();
    text = before;
    if (readBody(node, typeName)) {
        node->setBody({});
        return true;
    }
    static_cast<void>(m_indexCheck.close(node, scope));
    if (isStopped())
        return false;
    text = behind;
    node->removeFields();
    node->removeAllChildren();
    SoForeignFields::forget(node);
    return true;
}

bool KalmyrReader::readDeclaration(SoNode* node)
{
    if (!text.expect('['))
        return false;
    while (!text.accept(']')) {
        std::string_view type, name;
        if (!text.readWord(type))
            return text.fail("expected a field type or ']'");
        const SoField::FieldType* kind = findFieldKind(type);
        if (kind && !text.readWord(type))
            return text.fail("expected a field type");
        if (!text.readName(name))
            return text.fail("expected a field name");
        if (declareField(node, currentFieldType(type), SbName(name),
                         kind ? *kind : SoField::ORDINARY))
            continue;
        if (isVrml1())
            warnOnce("declaration " + std::string(type), type.data(),
                     "the declaration of '" + std::string(name) + "' is left out");
        else
            return text.failAt(static_cast<std::size_t>(type.data() - text.getText()),
                               "expected a known field type and a new name, not '"
                                   + std::string(type) + " " + std::string(name) + "'");
    }
    return true;
}

} // namespace kalmyr::detail
