#include "SceneText.h"

#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoReadError.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

bool isWordChar(char c)
{
    return SbName::isBaseNameChar(c);
}

} // namespace

std::string quoted(std::string_view text)
{
    constexpr std::size_t kShown = 60;
    std::string result("'");
    result.append(text.substr(0, kShown)).append(text.size() > kShown ? "...'" : "'");
    return result;
}

SceneText::SceneText(SoInput& in, const Dialect& dialect)
    : m_in(in), m_text(in.getTokenizer()), m_dialect(dialect)
{
}

SceneText::SceneText(SoInput& in, const Dialect& dialect, SceneText* file, std::size_t at)
    : m_in(in), m_text(in.getTokenizer()), m_dialect(dialect), m_file(file), m_fileAt(at)
{
}

SoNode* SceneText::findNode(std::string_view name) const
{
    const DefinitionTable::Definition* known = m_definitions.find(name);
    return known ? known->node.get() : nullptr;
}

void SceneText::warnOfEnds()
{
    if (m_in.m_format == SoInput::KALMYR_BINARY)
        return;
    const std::string_view start(m_text.getText(), m_text.getOffset());
    const std::string_view header = m_in.getHeader().view();
    const bool isExact =
        start.starts_with(header)
        && (start.size() == header.size()
            || std::string_view(" \t\r\n").find(start[header.size()]) != start.npos);
    if (!isExact)
        warnOnce("header", m_text.getText(),
                 "expected " + quoted(header) + " at the very beginning, written like this");
    if (m_in.m_isEndCut)
        warnOnce("end", m_text.getText() + m_text.getSize(),
                 "the text ends in zero bytes or marks of old systems");
}

bool SceneText::isStopped()
{
    if (!m_in.isStopped())
        return false;
    m_text.failAt(m_text.getOffset(), "reading was stopped");
    return true;
}

bool SceneText::countWork(std::size_t bytes)
{
    m_in.countWork(bytes);
    return !isStopped();
}

bool SceneText::goesOn()
{
    m_text.reportProgress();
    return !isStopped() && !m_text.hasFailed();
}

void SceneText::tellEnd()
{
    m_in.tellProgress(m_in.getSize(), m_in.getSize());
}

void SceneText::tellFault()
{
    if (!m_text.hasFailed() || m_in.tellStop())
        return;
    // Binary files have no lines.
    if (m_in.getFormat() == SoInput::KALMYR_BINARY)
        SoReadError::post(m_in.getCurFileName(), 0, 0, "%s at byte %zu", m_text.getError().c_str(),
                          m_in.getPlaceOf(m_text.getErrorOffset()));
    else
        SoReadError::post(m_in.getCurFileName(), m_text.getErrorLine(), m_text.getErrorColumn(),
                          "%s", m_text.getError().c_str());
}

bool SceneText::failAt(std::string_view word, const std::string& message)
{
    return m_text.failAt(offsetOf(word), message);
}

bool SceneText::failInBody(std::string_view typeName, const char* wanted)
{
    int line = 0, column = 0;
    m_text.getPosition(offsetOf(typeName), line, column);
    return m_text.fail("expected " + std::string(wanted) + " in " + quoted(typeName)
                       + ", which begins in line " + std::to_string(line));
}

void SceneText::warnOnce(const std::string& key, const char* at, const std::string& message)
{
    // Finding a line takes time, so the number of remarks is limited.
    if (m_warned.size() > SoInput::kMaxWarnings || !m_warned.insert(key).second)
        return;
    const std::size_t here = m_text.getOffset();
    m_text.setOffset(static_cast<std::size_t>(at - m_text.getText()));
    m_in.warnHere(SbString(message));
    m_text.setOffset(here);
}

void SceneText::warnInPart(std::size_t begin, int line, int column, const std::string& message)
{
    const std::string key = "part " + std::to_string(begin) + " " + std::to_string(line) + " "
                            + std::to_string(column) + " " + message;
    if (m_warned.size() > SoInput::kMaxWarnings || !m_warned.insert(key).second)
        return;
    int firstLine = 0, firstColumn = 0;
    m_text.getPosition(begin, firstLine, firstColumn);
    m_in.warnAt(firstLine + line - 1, line == 1 ? firstColumn + column - 1 : column,
                SbString(message));
}

bool SceneText::readName(std::string_view& name)
{
    m_text.peek();
    const std::size_t at = m_text.getOffset();
    bool taken = m_text.readName(name);
    const char next = m_text.getText()[m_text.getOffset()];
    bool isOdd = false;
    if (m_dialect.isLenient && (!taken || !(isWordChar(next) || next == ' ' || next == '\n'))) {
        m_text.setOffset(at);
        taken = takeOddName(name);
        isOdd = taken && !std::all_of(name.begin(), name.end(), isWordChar);
    }
    if (!taken || !m_dialect.isLegalName(name))
        return m_text.failAt(at, "expected a name");
    if (isOdd || (m_dialect.isLenient && !SbName::isBaseNameStartChar(name[0])))
        warnOddName(name);
    return name.size() <= kMaxNameLength
           || m_text.failAt(at, "expected a name of at most " + std::to_string(kMaxNameLength)
                                    + " bytes");
}

void SceneText::warnOddName(std::string_view name)
{
    warnOnce("name " + std::string(name), name.data(),
             quoted(name) + " has characters that a name cannot have there");
}

bool SceneText::takeOddName(std::string_view& name)
{
    m_text.peek();
    const std::string_view rest(m_text.getText() + m_text.getOffset(), m_text.getRemaining());
    std::size_t size = 0;
    if (rest.starts_with('"')) {
        size = rest.find_first_of("\"\r\n", 1);
        if (size == rest.npos || rest[size] != '"' || size == 1)
            return false;
        name = rest.substr(1, size - 1);
        m_text.setOffset(m_text.getOffset() + size + 1);
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
    m_text.setOffset(m_text.getOffset() + size);
    return size > 0;
}

bool SceneText::skipBlock(char open, bool keepNames, std::vector<Block>* blocks)
{
    if (!m_text.expect(open))
        return false;
    const char* end = m_text.getText() + m_text.getSize();
    const char* at = m_text.getText() + m_text.getOffset();
    const char* report = at;
    const auto place = [&] { return static_cast<std::size_t>(at - m_text.getText()); };
    std::vector<std::size_t> opened; // numbers of blocks that are not closed yet
    const auto openBlock = [&](std::size_t offset) {
        opened.push_back(blocks->size());
        blocks->push_back({offset, 0});
    };
    if (blocks && open == '{')
        openBlock(place() - 1);
    std::string closing(1, open == '{' ? '}' : ']');
    bool afterDef = false;
    while (at < end && !closing.empty()) {
        if (at >= report) {
            report = at + std::min(SoTokenizer::kProgressStep, static_cast<std::size_t>(end - at));
            m_text.setOffset(place());
            m_text.reportProgress();
            if (m_text.hasFailed())
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
            if (blocks && c == '{')
                openBlock(place());
            ++at;
        } else if (c == '}' || c == ']') {
            if (c != closing.back())
                return m_text.failAt(place(), std::string("expected '") + closing.back() + "'");
            closing.pop_back();
            if (blocks && c == '}') {
                (*blocks)[opened.back()].close = place();
                opened.pop_back();
            }
            ++at;
        } else {
            ++at;
        }
    }
    m_text.setOffset(std::min(place(), m_text.getSize()));
    return closing.empty() || m_text.fail(std::string("expected '") + closing.back() + "'");
}

bool SceneText::skipNumbers()
{
    // Pixels of images are hexadecimal.
    double number = 0;
    std::uint32_t pixel = 0;
    bool any = false;
    for (;;) {
        m_text.peek(); // past blanks and comments
        const std::string_view rest(m_text.getText() + m_text.getOffset(),
                                    std::min<std::size_t>(m_text.getRemaining(), 2));
        const bool isHex = rest == "0x" || rest == "0X";
        if (isHex ? m_text.readNumbers(&pixel, 1) == 0 : m_text.readNumbers(&number, 1) == 0)
            return any && !m_text.hasFailed();
        any = true;
        m_text.reportProgress();
    }
}

bool SceneText::skipValue(bool keepNames)
{
    const char first = m_text.peek();
    if (first == '[' || first == '{')
        return skipBlock(first, keepNames);
    if (first == '"') {
        std::string ignored;
        return m_text.readString(ignored);
    }
    std::string_view word;
    if (first == '(') {
        const auto end =
            std::string_view(m_text.getText(), m_text.getSize()).find(')', m_text.getOffset());
        m_text.setOffset(end == std::string_view::npos ? m_text.getSize() : end + 1);
        return end != std::string_view::npos || m_text.fail("expected ')'");
    }
    if (skipNumbers())
        return true;
    if (!m_text.readWord(word))
        return m_text.fail("expected a value");
    std::string_view name;
    if ((word == "USE" || word == "IS" || word == "DEF") && !m_text.readName(name))
        return m_text.fail("expected a name");
    if (word == "DEF" && !m_text.readWord(word))
        return m_text.fail("expected a node type");
    return m_text.peek() != '{' || skipBlock('{', keepNames);
}

void SceneText::setText(const char* text, std::size_t size)
{
    m_text = SoTokenizer(text, size, m_text.getSourceName());
    m_in.m_aside = 0;
    m_in.watchProgress();
}

void SceneText::countAside(std::size_t bytes)
{
    m_in.m_aside += bytes;
}

void SceneText::openText(SoInput& in, const std::string& text, const std::string& name)
{
    in.m_tokens = SoTokenizer(text.c_str(), text.size(), name);
    in.m_open = true;
    if (text.size() > SoTokenizer::kProgressStep)
        in.watchProgress();
}

} // namespace kalmyr::detail
