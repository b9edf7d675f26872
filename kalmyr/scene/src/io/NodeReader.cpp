#include "NodeReader.h"

#include "FieldDeclaring.h"

#include "core/StackSwitch.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

bool isWordChar(char c)
{
    return SbName::isBaseNameChar(c);
}

} // namespace

NodeReader::NodeReader(SoInput& in, const Dialect& dialect)
    : SoFieldReader(in.getTokenizer()),
      m_scene(in, dialect),
      m_engines(m_scene, *this),
      m_routes(m_scene, m_engines),
      m_prototypes(m_scene, *this),
      m_declarations(m_scene, *this),
      m_unknown(m_scene, *this),
      m_pieces(m_scene),
      m_values(m_scene, *this)
{
}

NodeReader::NodeReader(SoInput& in, NodeReader& outer, SoVRMLProto& proto,
                       SoVRMLProtoInstance* instance, SceneText* file)
    : SoFieldReader(in.getTokenizer()),
      m_scene(in, kVrml97Dialect, file, proto.fileAt),
      m_engines(m_scene, *this),
      m_routes(m_scene, m_engines),
      m_prototypes(m_scene, *this, proto.getPrevious(), instance),
      m_declarations(m_scene, *this),
      m_unknown(m_scene, *this),
      m_pieces(m_scene),
      m_values(m_scene, *this),
      m_stackLimit(outer.m_stackLimit),
      m_depth(outer.m_depth),
      m_protoDepth(outer.m_protoDepth + 1),
      m_isCheck(outer.m_isCheck),
      m_expanded(outer.m_expanded)
{
}

void NodeReader::forgetNames()
{
    m_scene.getDefinitions().clear();
    m_types.clear();
    m_lastTypes = {};
}

void NodeReader::release()
{
    m_routes.forgetLateRoutes();
    forgetNames();
    m_prototypes.release();
    m_engines.release();
    m_declarations.release();
}

bool NodeReader::leaveOut(std::size_t at, const SbString& why)
{
    m_scene.warnOnce("left out " + std::to_string(at), text.getText() + at, why.getString());
    return true;
}

bool NodeReader::readNode(SoNode*& node)
{
    node = nullptr;
    std::string_view word;
    if (!text.readWord(word))
        return text.fail("expected a node");
    return readNodeFrom(word, node);
}

bool NodeReader::readEngine(SoEngine*& engine)
{
    return m_scene.getDialect().hasEngines ? m_engines.readEngine(engine)
                                           : SoFieldReader::readEngine(engine);
}

bool NodeReader::readNodeFrom(std::string_view word, SoNode*& node)
{
    node = nullptr;
    if (word == "NULL")
        return true;
    if (word == "USE")
        return readUse(node);
    std::string_view name;
    if (word == "DEF") {
        if (!m_scene.readName(name))
            return false;
        if (m_scene.getDialect().isLenient && text.peek() == '{'
            && std::all_of(name.begin(), name.end(), isWordChar)) {
            m_scene.warnOnce("def " + std::string(name), name.data(),
                             "the name behind DEF is missing in front of " + quoted(name));
            return readDefinition(name, {}, node);
        }
        if (!text.readWord(word))
            return text.fail("expected a node type after DEF " + std::string(name));
    }
    return readDefinition(word, name, node);
}

bool NodeReader::readChildFrom(std::string_view word, SoNode*& node)
{
    if (!readNodeFrom(word, node))
        return false;
    if (node && word == "USE" && m_scene.getDialect().bodiesHoldNodes)
        m_indexCheck.reuse(node);
    return true;
}

Parsed NodeReader::tryStatement(std::string_view word)
{
    if (word == "ROUTE")
        return parsedIf(m_routes.readRoute(word));
    if (word == "PROTO")
        return parsedIf(m_prototypes.readProto(false));
    if (word == "EXTERNPROTO")
        return parsedIf(m_prototypes.readProto(true));
    return m_scene.getDialect().hasEngines ? m_engines.tryStatement(word) : Parsed::No;
}

bool NodeReader::readStatements()
{
    for (;;) {
        const std::size_t start = text.getOffset();
        std::string_view word;
        if (!text.readWord(word))
            return !text.hasFailed();
        const Parsed statement = tryStatement(word);
        if (statement == Parsed::Fault)
            return false;
        if (statement == Parsed::No) {
            text.setOffset(start);
            return true;
        }
    }
}

bool NodeReader::readUse(SoNode*& node)
{
    std::string_view name;
    if (!m_scene.readName(name))
        return false;
    const auto at = m_scene.offsetOf(name);
    const DefinitionTable::Definition* known = m_scene.getDefinitions().find(name);
    m_numNamed += known && known->node;
    if (known && !known->open) {
        node = known->node.get();
        return true;
    }
    if (known && m_values.takeUse(known->node.get()))
        return true;
    const std::string wanted =
        known ? "a node other than " + quoted(name) + ", which holds this place itself"
              : "a name that DEF gave before, not " + quoted(name);
    if (!m_scene.getDialect().isLenient)
        return text.failAt(at, "expected " + wanted);
    m_scene.warnOnce("use " + std::string(name), name.data(),
                     "expected " + wanted + "; nothing is put in its place");
    return true;
}

const NodeReader::TypeEntry& NodeReader::entryOf(std::string_view type)
{
    auto& [lastName, lastEntry] = m_lastTypes[slotOf(type)];
    if (lastEntry && lastName == type)
        return *lastEntry;
    const auto [at, isNew] = m_types.try_emplace(type);
    lastName = type;
    lastEntry = &at->second;
    if (isNew) {
        SoVRMLProto* const proto = m_prototypes.find(type);
        const bool isBuiltIn = proto && !proto->builtIn.isBad();
        if (proto && !isBuiltIn) {
            at->second.proto = proto;
            return at->second;
        }
        const SoType found = isBuiltIn ? proto->builtIn
                             : type.size() <= SceneText::kMaxNameLength
                                 ? m_scene.getDialect().findType(type)
                                 : SoType();
        if (found.isDerivedFrom(SoNode::getClassTypeId()) && found.canCreateInstance())
            at->second = {found, SoDB::getReadHook(found)};
    }
    return at->second;
}

bool NodeReader::readDefinition(std::string_view type, std::string_view name, SoNode*& node)
{
    const auto typeAt = m_scene.offsetOf(type);
    const TypeEntry entry = entryOf(type);
    if (!text.accept('{')) {
        return entry.type.isBad() && !entry.proto ? text.failAt(
                   typeAt, "expected a node type or the name of a field, not " + quoted(type))
                                                  : text.fail("expected '{' after " + quoted(type));
    }
    if (m_depth >= kMaxNesting)
        return text.failAt(typeAt, "expected nodes nested at most " + std::to_string(kMaxNesting)
                                       + " deep");
    m_bodyAt = text.getOffset() - 1;
    ++m_depth;
    const bool known = entry.proto || !entry.type.isBad();
    SoRef<SoNode> holder(makeNode(entry));
    node = holder.get();
    // Nobody listens yet; the walk of every single value would only cost time.
    node->enableNotify(false);
    DefinitionTable::Definition* definition = nullptr;
    if (!name.empty()) {
        ++m_numNamed;
        definition = &m_scene.getDefinitions().get(name);
        definition->node = holder;
        definition->open = true;
        const std::string_view own = m_scene.getDialect().ownName(name);
        if (!own.empty())
            node->setName(SbName(own));
    }
    const bool ok = readBodySafely(node, type, known);
    node->enableNotify(true);
    --m_depth;
    if (definition)
        definition->open = false;
    if (!ok || !finishNode(node, entry, typeAt)) {
        node = nullptr;
        return false;
    }
    node = holder.release();
    return true;
}

SoNode* NodeReader::makeNode(const TypeEntry& entry)
{
    if (entry.proto) {
        auto* instance = new SoVRMLProtoInstance;
        instance->setProto(entry.proto);
        return instance;
    }
    if (entry.type.isBad())
        return new SoUnknownNode;
    return static_cast<SoNode*>(entry.type.createInstance());
}

bool NodeReader::finishNode(SoNode* node, const TypeEntry& entry, std::size_t typeAt)
{
    if (m_isCheck)
        return true;
    if (m_protoDepth > 0 && ++*m_expanded > PrototypeReader::kMaxExpandedNodes)
        return text.failAt(typeAt, "expected prototypes that expand to at most "
                                       + std::to_string(PrototypeReader::kMaxExpandedNodes)
                                       + " nodes");
    if (entry.proto)
        return m_prototypes.expand(static_cast<SoVRMLProtoInstance*>(node), typeAt);
    if (!entry.hook)
        return true;
    entry.hook(&m_scene.getInput(), node);
    return !m_scene.isStopped(); // it may have read other files
}

bool NodeReader::readBodySafely(SoNode* node, std::string_view type, bool known)
{
    if (m_depth == 1)
        m_stackLimit = stackLimit();
    if (isStackLow(m_stackLimit)) {
        const char* before = m_stackLimit;
        bool ok = false;
        callOnNewStack([&](const char* limit) {
            m_stackLimit = limit;
            ok = readBodySafely(node, type, known);
        });
        m_stackLimit = before;
        return ok;
    }
    if (known)
        return readBody(node, type);
    const SoTokenizer::Hold hold(text); // what cannot be read is kept as it stands
    return m_unknown.readBody(static_cast<SoUnknownNode*>(node), type);
}

bool NodeReader::readBody(SoNode* node, std::string_view typeName)
{
    const bool holdsNodes = m_scene.getDialect().bodiesHoldNodes;
    SoChildList* children = holdsNodes ? node->getChildren() : nullptr;
    SoVRMLScript* script = !holdsNodes && node->isOfType(SoVRMLScript::getClassTypeId())
                               ? static_cast<SoVRMLScript*>(node)
                               : nullptr;
    const IndexCheck::Scope before = m_indexCheck.open();
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word) && !(holdsNodes && declaresFields(node) && text.readName(word)))
            return m_scene.failInBody(typeName,
                                      children ? "a field, a node or '}'" : "a field or '}'");
        Parsed read = script ? m_declarations.tryInScript(script, word) : Parsed::No;
        if (read == Parsed::No)
            read = tryField(node, word, typeName);
        if (read == Parsed::No)
            read = tryStatement(word);
        if (read == Parsed::No)
            read = m_unknown.tryField(node, word, typeName);
        if (read == Parsed::No)
            read = children
                       ? readChild(*children, word)
                       : parsedIf(m_scene.failAt(word, "expected a field of " + quoted(typeName)
                                                           + ", not " + quoted(word)));
        if (read == Parsed::Fault)
            return false;
    }
    if (!holdsNodes)
        return true;
    if (const auto remark = m_indexCheck.close(node, before))
        m_scene.warnOnce("index " + std::to_string(text.getOffset()), typeName.data(), *remark);
    m_declarations.close(node);
    return true;
}

Parsed NodeReader::readChild(SoChildList& children, std::string_view word)
{
    SoNode* child = nullptr;
    if (!readChildFrom(word, child))
        return Parsed::Fault;
    if (child)
        children.append(child);
    text.reportProgress();
    return Parsed::Yes;
}

int NodeReader::findField(const SoNode* node, std::string_view word, std::string_view typeName)
{
    const SoFieldData* data = node->getFieldData();
    if (!data)
        return -1;
    std::uint16_t& last = m_lastFields[slotOf(word)];
    if (last < data->getNumFields() && data->getFieldName(last).view() == word)
        return last;
    const int index = data->getIndex(SbName::find(word));
    if (index < 0)
        return findOtherName(node, word, typeName);
    last = static_cast<std::uint16_t>(index);
    return index;
}

int NodeReader::findOtherName(const SoNode* node, std::string_view word, std::string_view typeName)
{
    std::string_view alias = m_scene.getDialect().fieldAlias(node->getTypeId(), word);
    if (alias.empty())
        alias = m_prototypes.exposedName(word);
    else
        m_scene.warnOnce("alias " + std::string(typeName), word.data(),
                         quoted(word) + " of " + quoted(typeName) + " is called " + quoted(alias)
                             + " in this format");
    return alias.empty() ? -1 : node->getFieldData()->getIndex(SbName::find(alias));
}

Parsed NodeReader::tryField(SoNode* node, std::string_view word, std::string_view typeName)
{
    const int index = findField(node, word, typeName);
    if (index < 0)
        return Parsed::No;
    SoField* field = node->getFieldData()->getField(node, index);
    const SoField::FieldType kind = field->getFieldType();
    const bool isEvent = kind == SoField::EVENT_IN || kind == SoField::EVENT_OUT;
    if (const Parsed is = m_prototypes.tryIs(*field, isEvent); is != Parsed::No)
        return is;
    if (isEvent)
        return parsedIf(m_scene.failAt(word, "expected a field; " + quoted(word) + " of "
                                                 + quoted(typeName)
                                                 + " is an event and has no value"));
    if (!m_values.readOdd(*field))
        return parsedIf(
            text.fail("expected a value for " + quoted(word) + " of " + quoted(typeName)));
    m_values.readMark(*field);
    return parsedIf(!text.hasFailed());
}

} // namespace kalmyr::detail
