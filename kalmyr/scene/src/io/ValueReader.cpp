#include "ValueReader.h"

#include "NodeReader.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFEnum.h>

#include <algorithm>
#include <cctype>
#include <vector>

namespace kalmyr::detail {

bool ValueReader::read(SoField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    if (m_nodes.getPieces().isOpen() && text.accept('@'))
        return m_nodes.getPieces().readBlock(field);
    if (m_scene.getDialect().isLenient && text.peek() == '['
        && !field.isOfType(SoMField::getClassTypeId()))
        return text.expect('[') && field.readValue(m_nodes) && text.expect(']');
    return field.isOfType(SoMNodeField::getClassTypeId())
               ? readNodeList(static_cast<SoMNodeField&>(field))
               : field.readValue(m_nodes);
}

bool ValueReader::readOdd(SoField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    const bool isNamed =
        field.isOfType(SoSFEnum::getClassTypeId()) || field.isOfType(SoSFBitMask::getClassTypeId());
    if (!isNamed || !m_scene.getDialect().isLenient)
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
    if (!field.readValue(reader) || !tokens.atEnd())
        m_scene.warnOnce("value " + name, start,
                         tokens.getError() + ", not " + quoted(word) + "; it is left out");
    return true;
}

bool ValueReader::readNodeList(SoMNodeField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    std::vector<SoRef<SoNode>> held;
    std::vector<SoNode*> nodes;
    const bool one = !text.accept('[');
    while (one ? held.empty() : !text.accept(']')) {
        std::string_view word;
        if (!text.readWord(word))
            return text.fail(one ? "expected a node or '['" : "expected a node or ']'");
        const Parsed statement = m_nodes.tryStatement(word);
        if (statement == Parsed::Fault)
            return false;
        if (statement == Parsed::Yes)
            continue;
        SoNode* node = nullptr;
        if (!m_nodes.readNodeFrom(word, node))
            return false;
        held.emplace_back(node);
        if (node)
            nodes.push_back(node);
        text.reportProgress();
    }
    return field.setValues(nodes) || text.fail("expected nodes that do not hold this one");
}

void ValueReader::readMark(SoField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    if (m_scene.getDialect().bodiesHoldNodes && text.accept('~'))
        field.setIgnored(true);
}

} // namespace kalmyr::detail
