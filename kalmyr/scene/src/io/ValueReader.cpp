#include "ValueReader.h"

#include "core/NodeFields.h"
#include "FieldDeclaring.h"
#include "NodeReader.h"
#include "StringCheck.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

#include <algorithm>
#include <cctype>
#include <span>
#include <utility>
#include <vector>

namespace kalmyr::detail {

namespace {

/// The nodes of one list, on top of those of the lists around it.
class Pending {
public:
    explicit Pending(std::vector<SoNode*>& all) : m_all(all), m_begin(all.size()) {}
    ~Pending()
    {
        for (std::size_t i = m_begin; i < m_all.size(); ++i)
            m_all[i]->unref();
        m_all.resize(m_begin);
    }
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;

    void add(SoNode* node)
    {
        const SoRef<SoNode> held(node);
        m_all.push_back(node);
        node->ref();
    }
    std::span<SoNode* const> get() const { return std::span(m_all).subspan(m_begin); }

private:
    std::vector<SoNode*>& m_all;
    std::size_t m_begin;
};

} // namespace

bool ValueReader::takeUse(SoNode* node)
{
    // Nodes inside the value are read one level further down.
    if (!m_uses || m_uses->depth != m_nodes.getDepth())
        return false;
    m_uses->found.push_back({{}, m_uses->index, node});
    return true;
}

unsigned ValueReader::kindOf(const SoField& field)
{
    const SoType type = field.getTypeId();
    const auto index = static_cast<std::size_t>(type.getIndex());
    if (index >= m_kinds.size())
        m_kinds.resize(index + 1);
    std::uint8_t& kind = m_kinds[index];
    if (kind == 0) {
        const auto isA = [&](SoType base, Kind is) {
            return type.isDerivedFrom(base) ? unsigned(is) : 0u;
        };
        kind = static_cast<std::uint8_t>(
            KNOWN | isA(SoSFEnum::getClassTypeId(), NAMED)
            | isA(SoSFBitMask::getClassTypeId(), NAMED) | isA(SoMField::getClassTypeId(), LIST)
            | isA(SoMNodeField::getClassTypeId(), NODES)
            | (isNodeField(type) ? unsigned(HOLDS_NODES) : 0u)
            | isA(SoSFString::getClassTypeId(), STRINGS)
            | isA(SoMFString::getClassTypeId(), STRINGS) | isA(SoSFBool::getClassTypeId(), BOOL));
    }
    return kind;
}

bool ValueReader::read(SoField& field)
{
    const unsigned kind = kindOf(field);
    if (!m_scene.getDialect().isLenient || !(kind & (STRINGS | BOOL)))
        return readPlain(field, kind);
    SoTokenizer& text = m_scene.getTokens();
    text.peek();
    const char* const begin = text.getText() + text.getOffset();
    if (!readPlain(field, kind))
        return false;
    const std::string_view taken(begin, text.getText() + text.getOffset());
    if (kind & BOOL)
        warnOfOddBool(taken);
    else if (!m_scene.getDialect().bodiesHoldNodes) // VRML 1.0 knows no UTF-8
        warnOfOddString(taken);
    return true;
}

void ValueReader::warnOfOddBool(std::string_view value)
{
    if (value != "TRUE" && value != "FALSE")
        m_scene.warnOnce("bool", value.data(), "expected TRUE or FALSE, not " + quoted(value));
}

void ValueReader::warnOfOddString(std::string_view value)
{
    if (const OddString odd = findOddString(value); odd.at)
        m_scene.warnOnce(odd.what, odd.at, odd.what);
}

bool ValueReader::readPlain(SoField& field, unsigned kind)
{
    if (!(kind & HOLDS_NODES))
        return readValue(field, kind);
    const SoFieldContainer* container = field.getContainer();
    const bool mayUse = container && container->isOfType(SoNode::getClassTypeId())
                        && declaresFields(static_cast<const SoNode*>(container));
    if (!mayUse)
        return readValue(field, kind);
    Uses uses{m_nodes.getDepth(), 0, {}};
    Uses* const before = std::exchange(m_uses, &uses);
    const bool ok = readValue(field, kind);
    m_uses = before;
    for (SoForeignFields::Use& use : uses.found) {
        use.field = container->getFieldName(&field);
        SoForeignFields::addUse(static_cast<const SoNode*>(container), use);
    }
    return ok;
}

bool ValueReader::readValue(SoField& field, unsigned kind)
{
    SoTokenizer& text = m_scene.getTokens();
    if (m_nodes.getPieces().isOpen() && text.accept('@'))
        return m_nodes.getPieces().readBlock(field);
    if (m_scene.getDialect().isLenient && text.peek() == '[' && !(kind & LIST)) {
        m_scene.warnOnce("brackets", text.getText() + text.getOffset(),
                         "there are brackets around the value of a field of one value");
        return text.expect('[') && field.readValue(m_nodes) && text.expect(']');
    }
    return kind & NODES ? readNodeList(static_cast<SoMNodeField&>(field))
                        : field.readValue(m_nodes);
}

bool ValueReader::readOdd(SoField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    if (!(kindOf(field) & NAMED) || !m_scene.getDialect().isLenient)
        return read(field);
    const SoTokenizer before = text;
    if (read(field))
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
        return read(field);
    }
    std::string name(word);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    SoTokenizer tokens(name.c_str(), name.size());
    SoFieldReader reader(tokens);
    const bool isKnown = field.readValue(reader) && tokens.atEnd();
    m_scene.warnOnce("value " + name, start,
                     isKnown ? "expected " + name + ", not " + quoted(word)
                                   + " in quotes or small letters"
                             : tokens.getError() + ", not " + quoted(word) + "; it is left out");
    return true;
}

bool ValueReader::readNodeList(SoMNodeField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    Pending nodes(m_pending);
    const bool one = !text.accept('[');
    for (bool isRead = false; one ? !isRead : !text.accept(']');) {
        std::string_view word;
        if (!text.readWord(word))
            return text.fail(one ? "expected a node or '['" : "expected a node or ']'");
        const Parsed statement = m_nodes.tryStatement(word);
        if (statement == Parsed::Fault)
            return false;
        if (statement == Parsed::Yes) {
            if (!one)
                m_scene.warnOnce("in list", word.data(),
                                 quoted(word) + " stands in a list of nodes");
            continue;
        }
        if (m_uses)
            m_uses->index = static_cast<int>(nodes.get().size());
        SoNode* node = nullptr;
        if (!m_nodes.readNodeFrom(word, node))
            return false;
        isRead = true;
        if (node)
            nodes.add(node);
        text.reportProgress();
    }
    return field.setValues(nodes.get()) || text.fail("expected nodes that do not hold this one");
}

void ValueReader::readMark(SoField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    if (m_scene.getDialect().bodiesHoldNodes && text.accept('~'))
        field.setIgnored(true);
}

} // namespace kalmyr::detail
