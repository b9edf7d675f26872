#include "SoSceneReader.h"

#include "core/StackSwitch.h"

#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>

#include <algorithm>
#include <cctype>

namespace kalmyr::detail {

namespace {

std::string quoted(std::string_view text)
{
    constexpr std::size_t kShown = 60;
    std::string result("'");
    result.append(text.substr(0, kShown)).append(text.size() > kShown ? "...'" : "'");
    return result;
}

bool isWordChar(char c)
{
    return SbName::isBaseNameChar(c);
}

} // namespace

std::unique_ptr<SceneReader> SceneReader::make(SoInput& in, bool headerNeeded)
{
    if (!in.isOpen()) {
        if (!in.tellStop()) // while it was being opened
            SoReadError::post(in.getCurFileName(), 0, 0, "no file is open");
        return nullptr;
    }
    switch (in.getFormat()) {
    case SoInput::KALMYR_ASCII:
    case SoInput::VRML1:
        return std::make_unique<KalmyrReader>(in);
    case SoInput::VRML2:
        return std::make_unique<Vrml97Reader>(in);
    case SoInput::KALMYR_BINARY: {
        auto reader = std::make_unique<KalmyrReader>(in);
        reader->m_isBinary = true;
        reader->m_binary = {in.getTokenizer().getText(), in.getSize()};
        if (reader->openChunk(in.getTokenizer().getOffset()))
            return reader;
        reader->abandon();
        return nullptr;
    }
    case SoInput::UNKNOWN_FORMAT:
        break;
    }
    if (!headerNeeded && in.getHeader().isEmpty())
        return std::make_unique<KalmyrReader>(in);
    const SbString found = in.getSize() == 0 ? SbString("the file is empty")
                           : in.getHeader().isEmpty()
                               ? SbString("the first line is no header")
                               : "the header " + SbString(quoted(in.getHeader())) + " is unknown";
    SoReadError::post(in.getCurFileName(), 1, 1, "%s; expected one of %s", found.getString(),
                      SoInput::getKnownHeaders().getString());
    return nullptr;
}

SceneReader::SceneReader(SoInput& in) : SoFieldReader(in.getTokenizer()), m_in(in) {}

SceneReader::SceneReader(SoInput& in, SceneReader& outer, SoVRMLProto* protos)
    : SoFieldReader(in.getTokenizer()),
      m_in(in),
      m_protos(protos),
      m_stackLimit(outer.m_stackLimit),
      m_depth(outer.m_depth),
      m_protoDepth(outer.m_protoDepth + 1),
      m_expanded(outer.m_expanded)
{
}

SceneReader::~SceneReader() = default;

void SceneReader::abandon()
{
    if (m_posted || !text.hasFailed())
        return;
    m_posted = true;
    if (!m_in.tellStop())
        SoReadError::post(m_in.getCurFileName(), text.getErrorLine(), text.getErrorColumn(), "%s",
                          text.getError().c_str());
    release();
}

void SceneReader::release()
{
    m_lateRoutes.clear();
    m_types.clear();
    m_definitions.clear();
    m_protos.reset();
}

bool SceneReader::isStopped()
{
    if (!m_in.isStopped())
        return false;
    text.failAt(text.getOffset(), "reading was stopped");
    return true;
}

bool SceneReader::countWork(std::size_t bytes)
{
    m_in.countWork(bytes);
    return !isStopped();
}

bool SceneReader::goesOn()
{
    text.reportProgress();
    return !isStopped() && !text.hasFailed();
}

bool SceneReader::leaveOut(std::size_t at, const SbString& why)
{
    warnOnce("left out " + std::to_string(at), text.getText() + at, why.getString());
    return true;
}

void SceneReader::warnOnce(const std::string& key, const char* at, const std::string& message)
{
    // Finding a line takes time, so the number of remarks is limited.
    if (m_warned.size() > SoInput::kMaxWarnings || !m_warned.insert(key).second)
        return;
    const std::size_t here = text.getOffset();
    text.setOffset(static_cast<std::size_t>(at - text.getText()));
    m_in.warnHere(SbString(message));
    text.setOffset(here);
}

bool SceneReader::readAll(std::vector<SoRef<SoNode>>& nodes)
{
    for (;;) {
        SoNode* node = nullptr;
        if (!readTop(node))
            return false;
        if (!node)
            break;
        nodes.emplace_back(node);
    }
    m_in.tellProgress(m_in.getSize(), m_in.getSize());
    return !isStopped();
}

bool SceneReader::readTop(SoNode*& node)
{
    node = nullptr;
    while (!node) {
        if (!goesOn())
            return false;
        if (text.atEnd())
            return true;
        if (!readNode(node))
            return false;
    }
    return true;
}

bool SceneReader::readNode(SoNode*& node)
{
    node = nullptr;
    std::string_view word;
    if (!text.readWord(word))
        return text.fail("expected a node");
    return readNodeFrom(word, node);
}

bool SceneReader::readNodeFrom(std::string_view word, SoNode*& node)
{
    node = nullptr;
    if (word == "NULL")
        return true;
    if (word == "USE")
        return readUse(node);
    std::string_view name;
    if (word == "DEF") {
        if (!readName(name))
            return false;
        if (mayLeaveOutUse() && text.peek() == '{'
            && std::all_of(name.begin(), name.end(), isWordChar)) {
            warnOnce("def " + std::string(name), name.data(),
                     "the name behind DEF is missing in front of " + quoted(name));
            return readDefinition(name, {}, node);
        }
        if (!text.readWord(word))
            return text.fail("expected a node type after DEF " + std::string(name));
    }
    return readDefinition(word, name, node);
}

bool SceneReader::readName(std::string_view& name)
{
    text.peek();
    const std::size_t at = text.getOffset();
    bool taken = text.readName(name);
    const char next = text.getText()[text.getOffset()];
    if (mayLeaveOutUse() && (!taken || !(isWordChar(next) || next == ' ' || next == '\n'))) {
        text.setOffset(at);
        taken = takeOddName(name);
    }
    if (!taken || !isLegalName(name))
        return text.failAt(at, "expected a name");
    return name.size() <= kMaxNameLength
           || text.failAt(at, "expected a name of at most " + std::to_string(kMaxNameLength)
                                  + " bytes");
}

bool SceneReader::takeOddName(std::string_view& name)
{
    text.peek();
    const std::string_view rest(text.getText() + text.getOffset(), text.getRemaining());
    std::size_t size = 0;
    if (rest.starts_with('"')) {
        size = rest.find_first_of("\"\r\n", 1);
        if (size == rest.npos || rest[size] != '"' || size == 1)
            return false;
        name = rest.substr(1, size - 1);
        text.setOffset(text.getOffset() + size + 1);
        return true;
    }
    int brackets = 0; // a closing one may end the list that the name stands in
    for (; size < rest.size(); ++size) {
        const char c = rest[size];
        const bool closes = c == ']' && brackets == 0, opens = c == '[' && size == 0;
        const bool isControl = static_cast<unsigned char>(c) <= ' ' || c == 0x7f;
        if (isControl || std::string_view(",{}\"#").find(c) != rest.npos || closes || opens)
            break;
        brackets += c == '[' ? 1 : c == ']' ? -1 : 0;
    }
    name = rest.substr(0, size);
    text.setOffset(text.getOffset() + size);
    return size > 0;
}

bool SceneReader::readUse(SoNode*& node)
{
    std::string_view name;
    if (!readName(name))
        return false;
    const auto at = static_cast<std::size_t>(name.data() - text.getText());
    const DefinitionTable::Definition* known = m_definitions.find(name);
    if (known && !known->open) {
        node = known->node.get();
        return true;
    }
    const std::string wanted =
        known ? "a node other than " + quoted(name) + ", which holds this place itself"
              : "a name that DEF gave before, not " + quoted(name);
    if (!mayLeaveOutUse())
        return text.failAt(at, "expected " + wanted);
    warnOnce("use " + std::string(name), name.data(),
             "expected " + wanted + "; nothing is put in its place");
    return true;
}

SoNode* SceneReader::findDefinition(std::string_view name) const
{
    const DefinitionTable::Definition* known = m_definitions.find(name);
    return known ? known->node.get() : nullptr;
}

const SceneReader::TypeEntry& SceneReader::entryOf(std::string_view type)
{
    const auto [at, isNew] = m_types.try_emplace(type);
    if (isNew) {
        at->second.proto = findProto(type);
        if (at->second.proto)
            return at->second;
        const SoType found = type.size() <= kMaxNameLength ? findType(type) : SoType();
        if (found.isDerivedFrom(SoNode::getClassTypeId()) && found.canCreateInstance())
            at->second = {found, SoDB::getReadHook(found)};
    }
    return at->second;
}

bool SceneReader::readDefinition(std::string_view type, std::string_view name, SoNode*& node)
{
    const auto typeAt = static_cast<std::size_t>(type.data() - text.getText());
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
        definition = &m_definitions.get(name);
        definition->node = holder;
        definition->open = true;
        const std::string_view own = ownName(name);
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

SoNode* SceneReader::makeNode(const TypeEntry& entry)
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

bool SceneReader::finishNode(SoNode* node, const TypeEntry& entry, std::size_t typeAt)
{
    if (m_protoDepth > 0 && ++*m_expanded > kMaxExpandedNodes)
        return text.failAt(typeAt, "expected prototypes that expand to at most "
                                       + std::to_string(kMaxExpandedNodes) + " nodes");
    if (entry.proto)
        return expand(static_cast<SoVRMLProtoInstance*>(node), typeAt);
    if (!entry.hook)
        return true;
    entry.hook(&m_in, node);
    return !isStopped(); // it may have read other files
}

bool SceneReader::readBodySafely(SoNode* node, std::string_view type, bool known)
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
    return readUnknownBody(static_cast<SoUnknownNode*>(node), type);
}

int SceneReader::tryField(SoNode* node, std::string_view word, std::string_view typeName)
{
    const SoFieldData* data = node->getFieldData();
    int index = data ? data->getIndex(SbName::find(word)) : -1;
    if (index < 0 && data) {
        if (const std::string_view alias = fieldAlias(node, word); !alias.empty())
            index = data->getIndex(SbName::find(alias));
    }
    if (index < 0 || word.empty())
        return 0;
    SoField* field = data->getField(node, index);
    const SoField::FieldType kind = field->getFieldType();
    const bool isEvent = kind == SoField::EVENT_IN || kind == SoField::EVENT_OUT;
    if (const int is = tryIs(node, *field, isEvent); is != 0)
        return is;
    if (isEvent) {
        text.failAt(static_cast<std::size_t>(word.data() - text.getText()),
                    "expected a field; " + quoted(word) + " of " + quoted(typeName)
                        + " is an event and has no value");
        return -1;
    }
    if (!readOddValue(*field)) {
        text.fail("expected a value for " + quoted(word) + " of " + quoted(typeName));
        return -1;
    }
    afterValue(*field);
    return text.hasFailed() ? -1 : 1;
}

bool SceneReader::readOddValue(SoField& field)
{
    const bool isNamed =
        field.isOfType(SoSFEnum::getClassTypeId()) || field.isOfType(SoSFBitMask::getClassTypeId());
    if (!isNamed || !mayLeaveOutUse())
        return readFieldValue(field);
    const SoTokenizer before = text;
    if (readFieldValue(field))
        return true;
    text = before;
    const char closing = text.peek() == '"' ? '"' : text.peek() == '(' ? ')' : 0;
    const char* const start = text.getText() + text.getOffset();
    std::string_view word(start, text.getRemaining());
    const std::size_t end = closing ? word.find(closing, 1) : word.npos;
    if (end != word.npos) {
        word = closing == ')' ? word.substr(0, end + 1) : word.substr(1, end - 1);
        text.setOffset(text.getOffset() + end + 1);
    } else if (!text.readWord(word)) {
        return readFieldValue(field);
    }
    std::string name(word);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    SoTokenizer tokens(name.c_str(), name.size());
    SoFieldReader reader(tokens);
    if (!field.readValue(reader) || !tokens.atEnd())
        warnOnce("value " + name, start,
                 tokens.getError() + ", not " + quoted(word) + "; it is left out");
    return true;
}

bool SceneReader::openChunk(std::size_t offset)
{
    const char* fault = m_chunk.read(m_binary, offset);
    if (fault)
        return text.failAt(text.getSize(),
                           std::string(fault) + " at byte " + std::to_string(m_chunk.end));
    text = SoTokenizer(m_chunk.text, m_chunk.textSize, text.getSourceName());
    m_in.m_aside = 0;
    m_in.watchProgress();
    return true;
}

bool SceneReader::atEndOfFile()
{
    if (!text.atEnd())
        return false;
    if (!m_isBinary || text.hasFailed())
        return true;
    const std::size_t rest = m_binary.find_first_not_of(std::string_view("\0\r\n", 3), m_chunk.end);
    if (rest == std::string_view::npos)
        return true;
    m_definitions.clear(); // their names lie in the piece before
    m_types.clear();
    return !openChunk(m_chunk.end);
}

bool SceneReader::readBlock(SoField& field)
{
    std::uint32_t index = 0;
    text.peek();
    const std::size_t at = text.getOffset();
    if (!text.readUInt(index))
        return false;
    if (index >= m_chunk.blocks.size() || !setBlock(field, m_chunk.blocks[index]))
        return text.failAt(at, "expected the number of a block that fits the field");
    const std::size_t size = m_chunk.blocks[index].size();
    m_in.m_aside += size;
    return countWork(size);
}

bool SceneReader::readFieldValue(SoField& field)
{
    if (m_isBinary && text.accept('@'))
        return readBlock(field);
    if (mayLeaveOutUse() && text.peek() == '[' && !field.isOfType(SoMField::getClassTypeId()))
        return text.expect('[') && field.readValue(*this) && text.expect(']');
    return field.isOfType(SoMNodeField::getClassTypeId())
               ? readNodeList(static_cast<SoMNodeField&>(field))
               : field.readValue(*this);
}

bool SceneReader::readNodeList(SoMNodeField& field)
{
    std::vector<SoRef<SoNode>> held;
    std::vector<SoNode*> nodes;
    const bool one = !text.accept('[');
    while (one ? held.empty() : !text.accept(']')) {
        std::string_view word;
        if (!text.readWord(word))
            return text.fail(one ? "expected a node or '['" : "expected a node or ']'");
        const int skipped = tryStatement(word);
        if (skipped < 0)
            return false;
        if (skipped > 0)
            continue;
        SoNode* node = nullptr;
        if (!readNodeFrom(word, node))
            return false;
        held.emplace_back(node);
        if (node)
            nodes.push_back(node);
        text.reportProgress();
    }
    return field.setValues(nodes) || text.fail("expected nodes that do not hold this one");
}

bool SceneReader::failInBody(std::string_view typeName, const char* wanted)
{
    int line = 0, column = 0;
    text.getPosition(static_cast<std::size_t>(typeName.data() - text.getText()), line, column);
    return text.fail("expected " + std::string(wanted) + " in " + quoted(typeName)
                     + ", which begins in line " + std::to_string(line));
}

bool SceneReader::skipBlock(char open, bool keepNames, std::string_view* inside)
{
    if (!text.expect(open))
        return false;
    const char* begin = text.getText() + text.getOffset();
    const char* end = text.getText() + text.getSize();
    const char* at = begin;
    const char* report = begin;
    std::string closing(1, open == '{' ? '}' : ']');
    bool afterDef = false;
    while (at < end && !closing.empty()) {
        if (at >= report) {
            report = at + std::min(SoTokenizer::kProgressStep, static_cast<std::size_t>(end - at));
            text.setOffset(static_cast<std::size_t>(at - text.getText()));
            text.reportProgress();
            if (text.hasFailed())
                return false;
        }
        const char c = *at;
        if (c == '"') {
            for (++at; at < end && *at != '"'; ++at)
                if (*at == '\\')
                    ++at;
            ++at;
        } else if (c == '#') {
            while (at < end && *at != '\n' && *at != '\r')
                ++at;
        } else if (isWordChar(c)) {
            const char* word = at;
            while (at < end && isWordChar(*at))
                ++at;
            const std::string_view name(word, static_cast<std::size_t>(at - word));
            if (afterDef && keepNames)
                m_definitions.get(name).node = nullptr;
            afterDef = name == "DEF";
        } else if (c == '{' || c == '[') {
            closing.push_back(c == '{' ? '}' : ']');
            ++at;
        } else if (c == '}' || c == ']') {
            if (c != closing.back())
                return text.failAt(static_cast<std::size_t>(at - text.getText()),
                                   std::string("expected '") + closing.back() + "'");
            closing.pop_back();
            ++at;
        } else {
            ++at;
        }
    }
    text.setOffset(std::min(static_cast<std::size_t>(at - text.getText()), text.getSize()));
    if (!closing.empty())
        return text.fail(std::string("expected '") + closing.back() + "'");
    if (inside)
        *inside = {begin, static_cast<std::size_t>(at - 1 - begin)};
    return true;
}

bool SceneReader::skipNumbers()
{
    // Pixels of images are hexadecimal.
    double number = 0;
    std::uint32_t pixel = 0;
    bool any = false;
    for (;;) {
        text.peek(); // past blanks and comments
        const std::string_view rest(text.getText() + text.getOffset(),
                                    std::min<std::size_t>(text.getRemaining(), 2));
        const bool isHex = rest == "0x" || rest == "0X";
        if (isHex ? text.readNumbers(&pixel, 1) == 0 : text.readNumbers(&number, 1) == 0)
            return any && !text.hasFailed();
        any = true;
        text.reportProgress();
    }
}

bool SceneReader::skipValue(bool keepNames)
{
    const char first = text.peek();
    if (first == '[' || first == '{')
        return skipBlock(first, keepNames);
    if (first == '"') {
        std::string ignored;
        return text.readString(ignored);
    }
    std::string_view word;
    if (first == '(') {
        const auto end =
            std::string_view(text.getText(), text.getSize()).find(')', text.getOffset());
        text.setOffset(end == std::string_view::npos ? text.getSize() : end + 1);
        return end != std::string_view::npos || text.fail("expected ')'");
    }
    if (skipNumbers())
        return true;
    if (!text.readWord(word))
        return text.fail("expected a value");
    std::string_view name;
    if ((word == "USE" || word == "IS" || word == "DEF") && !text.readName(name))
        return text.fail("expected a name");
    if (word == "DEF" && !text.readWord(word))
        return text.fail("expected a node type");
    return text.peek() != '{' || skipBlock('{', keepNames);
}

bool SceneReader::readSkippedBody(SoUnknownNode* node, bool keepNames)
{
    text.setOffset(m_bodyAt);
    std::string_view body;
    if (!skipBlock('{', keepNames, &body))
        return false;
    node->setBody(std::string(body));
    return true;
}

bool SceneReader::readStatements()
{
    for (;;) {
        const std::size_t start = text.getOffset();
        std::string_view word;
        if (!text.readWord(word))
            return !text.hasFailed();
        const int statement = tryStatement(word);
        if (statement < 0)
            return false;
        if (statement == 0) {
            text.setOffset(start);
            return true;
        }
    }
}

bool SceneReader::readPath(SoRef<SoPath>& path)
{
    if (!goesOn())
        return false;
    // Prototypes stand in front of what uses them, routes behind.
    if (!readStatements())
        return false;
    if (!text.acceptWord("Path"))
        return text.fail("expected 'Path'");
    if (!text.expect('{'))
        return false;
    if (!text.acceptWord("head"))
        return text.fail("expected 'head'");
    SoNode* head = nullptr;
    if (!readNode(head))
        return false;
    if (!head)
        return text.fail("expected a node as head of the path");
    path = new SoPath(head);
    if (!text.acceptWord("indices"))
        return text.fail("expected 'indices'");
    if (!text.expect('['))
        return false;
    while (!text.accept(']')) {
        std::int32_t index = 0;
        if (!text.readInt(index))
            return false;
        const SoChildList* children = path->getTail()->getInternalChildren();
        if (!children || index < 0 || index >= children->getLength())
            return text.fail("expected the index of a child in front of this");
        path->append(index);
    }
    return text.expect('}') && readStatements();
}

} // namespace kalmyr::detail
