#include "UnknownReader.h"

#include "NodeReader.h"

#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/io/SoUnknownNode.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kalmyr::detail {

namespace {

bool isSeparator(char c)
{
    return c == ' ' || c == ',' || (c >= '\t' && c <= '\r');
}

/// A type as text can name it: files have words there that mean something else, or begin oddly.
SbName legalType(std::string_view type)
{
    constexpr std::string_view kOther[] = {"DEF",    "USE",    "NULL",  "ROUTE",       "Path",
                                           "ENGINE", "GLOBAL", "PROTO", "EXTERNPROTO", "KEEP"};
    const bool isOther = std::find(std::begin(kOther), std::end(kOther), type) != std::end(kOther);
    return SbName(isOther || !SbName::isBaseNameStartChar(type[0]) ? "_" + std::string(type)
                                                                   : std::string(type));
}

} // namespace

Parsed UnknownReader::tryField(SoNode* node, std::string_view word, std::string_view typeName)
{
    const Dialect& dialect = m_scene.getDialect();
    DeclarationReader& declarations = m_nodes.getDeclarations();
    if (dialect.bodiesHoldNodes && word == "fields")
        return parsedIf(declarations.readList(node));
    if (dialect.hasEngines && word == "KEEP")
        return parsedIf(readKept(node));
    const char next = m_scene.getTokens().peek();
    if (word == "DEF" || word == "USE" || next == '{' || next == '}')
        return Parsed::No;
    const bool isDeclared = declarations.isDeclared(node, word);
    if (!dialect.isLenient && !isDeclared)
        return Parsed::No;
    if (!isDeclared && !node->isOfType(SoUnknownNode::getClassTypeId())) {
        const std::string type(typeName), field(word);
        m_scene.warnOnce("field " + type + "." + field, word.data(),
                         "'" + field + "' is no field of '" + type + "'; it is kept as text");
    }
    return parsedIf(keepField(node, word));
}

bool UnknownReader::keepField(SoNode* node, std::string_view name)
{
    SoTokenizer& text = m_scene.getTokens();
    text.peek();
    const char* begin = text.getText() + text.getOffset();
    const bool inPrototype = m_nodes.isInPrototype();
    // Nodes that have names may be used elsewhere; all else is kept as it stands.
    std::vector<SoRef<SoNode>> nodes;
    bool isList = false;
    const std::size_t numNamed = m_nodes.getNumNamed();
    const bool isNodes = !inPrototype && isNodesHere() && tryNodes(nodes, isList);
    if (m_scene.isStopped() || (!isNodes && !m_scene.skipValue()))
        return false;
    if (isNodes && m_nodes.getNumNamed() != numNamed) {
        SoForeignFields::add(node, name, std::move(nodes), isList);
        return true;
    }
    const char* end = text.getText() + text.getOffset();
    while (end > begin && isSeparator(end[-1]))
        --end;
    // What instances of prototypes are made of is written as the text of the prototype.
    if (!inPrototype)
        SoForeignFields::add(node, name, {begin, static_cast<std::size_t>(end - begin)});
    return true;
}

bool UnknownReader::isNodesHere()
{
    SoTokenizer& text = m_scene.getTokens();
    const std::size_t at = text.getOffset();
    std::string_view name;
    bool mayBe = true;
    if (text.acceptWord("USE") && text.readName(name)) {
        // Text uses what is kept as text, or what it stands in, as well.
        const DefinitionTable::Definition* known = m_scene.getDefinitions().find(name);
        mayBe = known && known->node && !known->open;
    }
    text.setOffset(at);
    return mayBe && nodeFieldType();
}

bool UnknownReader::tryNodes(std::vector<SoRef<SoNode>>& nodes, bool& isList)
{
    SoTokenizer& text = m_scene.getTokens();
    const SoTokenizer before = text;
    const SoTokenizer::Hold hold(text);
    const IndexCheck::Scope scope = m_nodes.getIndexCheck().open();
    const bool ok = readNodes(nodes, isList);
    m_nodes.getIndexCheck().leaveOut(scope);
    if (!ok && !m_scene.isStopped())
        text = before;
    return ok;
}

bool UnknownReader::readNodes(std::vector<SoRef<SoNode>>& nodes, bool& isList)
{
    SoTokenizer& text = m_scene.getTokens();
    isList = text.accept('[');
    while (isList ? !text.accept(']') : nodes.empty()) {
        SoNode* node = nullptr;
        if (!m_nodes.readNode(node))
            return false;
        if (node || !isList)
            nodes.emplace_back(node);
    }
    return true;
}

bool UnknownReader::readKept(SoNode* node)
{
    SoTokenizer& text = m_scene.getTokens();
    std::string name, value;
    if (text.peek() != '"' || !text.readString(name))
        return text.fail("expected the name of a field in quotes");
    if (text.peek() != '"') {
        std::vector<SoRef<SoNode>> nodes;
        bool isList = false;
        if (!tryNodes(nodes, isList))
            return text.fail("expected the text of a field in quotes, or its nodes");
        SoForeignFields::add(node, name, std::move(nodes), isList);
        return true;
    }
    if (!text.readString(value))
        return text.fail("expected the text of a field in quotes, or its nodes");
    if (name.empty() && node->isOfType(SoUnknownNode::getClassTypeId()))
        static_cast<SoUnknownNode*>(node)->setBody(value);
    else
        SoForeignFields::add(node, name, value);
    return true;
}

bool UnknownReader::readBody(SoUnknownNode* node, std::string_view typeName)
{
    const Dialect& dialect = m_scene.getDialect();
    SoTokenizer& text = m_scene.getTokens();
    if (dialect.bodiesHoldNodes) {
        node->setUnknownTypeName(legalType(typeName));
        const std::string_view first = text.peekWord();
        if (first == "KEEP" && dialect.hasEngines)
            return m_nodes.readBody(node, typeName);
        if (first == "fields")
            return readDeclaredBody(node, typeName);
        // A node without anything in it says as much as one that declares that it has no fields.
        if (text.accept('}'))
            return true;
    } else {
        // As types of this format are called elsewhere: other formats may have one of that name.
        node->setUnknownTypeName(SbName("VRML" + std::string(typeName)));
    }
    const std::string name(typeName);
    m_scene.warnOnce("type " + name, typeName.data(),
                     "node type '" + name + "' is unknown; it is kept as text");
    return readUndeclaredBody(node, typeName);
}

bool UnknownReader::readDeclaredBody(SoUnknownNode* node, std::string_view typeName)
{
    m_scene.getTokens().acceptWord("fields");
    if (!m_nodes.getDeclarations().readList(node) || !m_nodes.readBody(node, typeName))
        return false;
    node->findStandIn();
    return true;
}

bool UnknownReader::readUndeclaredBody(SoUnknownNode* node, std::string_view typeName)
{
    SoTokenizer& text = m_scene.getTokens();
    const std::size_t begin = text.getOffset();
    const std::size_t open = m_nodes.getBodyOffset();
    const bool isOutermost = m_blocks.empty();
    if (isOutermost) {
        text.setOffset(open);
        if (!m_scene.skipBlock('{', true, &m_blocks))
            return false;
        text.setOffset(begin);
    }
    const bool ok = readKnownPlace(node, typeName, open);
    if (isOutermost) {
        for (const auto& [kept, body] : m_bodies)
            kept->setBody(std::string(body));
        m_bodies.clear();
        m_blocks.clear();
    }
    return ok;
}

bool UnknownReader::readKnownPlace(SoUnknownNode* node, std::string_view typeName, std::size_t open)
{
    const bool holdsNodes = m_scene.getDialect().bodiesHoldNodes;
    SoTokenizer& text = m_scene.getTokens();
    const auto block =
        std::lower_bound(m_blocks.begin(), m_blocks.end(), open,
                         [](const SceneText::Block& one, std::size_t at) { return one.open < at; });
    const std::size_t close = block->close;
    const bool hasBlocks = block + 1 != m_blocks.end() && (block + 1)->open < close;
    const std::string_view body(text.getText() + open + 1, close - open - 1);
    const bool mayHoldNodes = hasBlocks || (holdsNodes && body.find("USE") != body.npos);
    const std::size_t numBodies = m_bodies.size();
    if (m_scene.getDialect().isLenient && mayHoldNodes) {
        // Nodes in it may be used elsewhere, and are to be seen.
        const SoTokenizer before = text;
        const IndexCheck::Scope scope = m_nodes.getIndexCheck().open();
        if (holdsNodes ? m_nodes.readBody(node, typeName) : readPieces(node))
            return true;
        if (m_scene.isStopped())
            return false;
        static_cast<void>(m_nodes.getIndexCheck().close(node, scope));
        text = before;
        node->removeFields();
        node->removeAllChildren();
        SoForeignFields::forget(node);
        m_bodies.resize(numBodies); // the nodes in it are gone
    }
    text.setOffset(close + 1);
    if (holdsNodes || body.find_first_not_of(" \t\r\n,") != body.npos)
        m_bodies.emplace_back(node, body);
    return true;
}

const char* UnknownReader::nodeFieldType()
{
    SoTokenizer& text = m_scene.getTokens();
    const std::size_t at = text.getOffset();
    const bool isList = text.accept('[');
    std::string_view word;
    bool isNode = text.readWord(word);
    if (isNode && word != "DEF" && word != "USE")
        isNode = text.peek() == '{' || (word == "NULL" && !isList);
    text.setOffset(at);
    return !isNode ? nullptr : isList ? "MFNode" : "SFNode";
}

bool UnknownReader::readPieces(SoUnknownNode* node)
{
    SoTokenizer& text = m_scene.getTokens();
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word) || findFieldKind(word))
            return false;
        const Parsed statement = m_nodes.tryStatement(word);
        if (statement == Parsed::Fault)
            return false;
        if (statement == Parsed::Yes)
            continue;
        const char* type = nodeFieldType();
        if (text.peek() == '{' || (!type && !keepField(node, word)))
            return false;
        if (!type)
            continue;
        SoField* field = node->declareField(SbName(type), SbName(word));
        node->setDeclaration(false);
        if (!field || !m_nodes.getValues().read(*field))
            return false;
    }
    return true;
}

} // namespace kalmyr::detail
