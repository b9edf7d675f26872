#include <kalmyr/core/SoTokenizer.h>

#include "NumberScan.h"
#include "TextClasses.h"

#include <kalmyr/base/SoContract.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

using namespace kalmyr::detail;

namespace {

std::size_t countLineFeeds(std::string_view text)
{
    std::size_t count = 0;
    const char* p = text.data();
    const char* const end = p + text.size();
#if defined(__SSE2__)
    const __m128i feed = _mm_set1_epi8('\n');
    // A byte holds 255 hits.
    constexpr std::ptrdiff_t kStep = 16, kBlock = 255 * kStep;
    while (end - p >= kStep) {
        const char* const stop = p + std::min(kBlock, (end - p) / kStep * kStep);
        __m128i hits = _mm_setzero_si128();
        for (; p < stop; p += kStep)
            hits = _mm_sub_epi8(
                hits, _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), feed));
        const __m128i sums = _mm_sad_epu8(hits, _mm_setzero_si128());
        count += static_cast<std::size_t>(_mm_cvtsi128_si32(sums))
                 + static_cast<std::size_t>(_mm_extract_epi16(sums, 4));
    }
#endif
    return count + static_cast<std::size_t>(std::count(p, end, '\n'));
}

bool equalsInSmallLetters(std::string_view word, std::string_view small)
{
    return std::equal(word.begin(), word.end(), small.begin(), small.end(),
                      [](char a, char b) { return (a | 0x20) == b; });
}

} // namespace

SoTokenizer::SoTokenizer(const char* text, std::size_t size, std::string_view sourceName)
    : m_begin(text ? text : ""),
      m_at(m_begin),
      m_end(m_begin + (text ? size : 0)),
      m_source(sourceName)
{
    assert(*m_end == 0);
}

void SoTokenizer::skip()
{
#if defined(__SSE2__)
    // Behind the first blanks of an indented line there are mostly more.
    while (is(m_at[0], kSeparator) && is(m_at[1], kSeparator) && m_end - m_at >= 16) {
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_at));
        const __m128i blanks = _mm_or_si128(_mm_cmpeq_epi8(c, _mm_set1_epi8(' ')),
                                            _mm_cmpeq_epi8(c, _mm_set1_epi8('\n')));
        const auto others = static_cast<unsigned>(_mm_movemask_epi8(blanks)) ^ 0xffffu;
        if (others & 1)
            break;
        m_at += others ? std::countr_zero(others) : 16;
    }
#endif
    m_at = skipSeparators(m_at, m_end);
}

bool SoTokenizer::atEnd()
{
    skip();
    return m_at >= m_end;
}

char SoTokenizer::peek()
{
    skip();
    return *m_at;
}

bool SoTokenizer::accept(char c)
{
    if (m_failed || peek() != c || m_at >= m_end) {
        return false;
    }
    ++m_at;
    return true;
}

bool SoTokenizer::expect(char c)
{
    return accept(c) || fail(std::string("expected '") + c + '\'');
}

bool SoTokenizer::takeWhile(unsigned char firstClass, unsigned char restClass,
                            std::string_view& word)
{
    skip();
    if (m_failed || !is(*m_at, firstClass)) {
        return false;
    }
    const char* p = m_at + 1;
    while (is(*p, restClass)) {
        ++p;
    }
    const auto length = static_cast<std::size_t>(p - m_at);
    if (length > kMaxWordLength) {
        return fail("expected a shorter name");
    }
    word = {m_at, length};
    m_at = p;
    return true;
}

std::string_view SoTokenizer::peekWord()
{
    std::string_view word;
    if (takeWhile(kWordStart, kWordRest, word)) {
        m_at = word.data();
    }
    return word;
}

bool SoTokenizer::readWord(std::string_view& word)
{
    return takeWhile(kWordStart, kWordRest, word);
}

bool SoTokenizer::readName(std::string_view& name)
{
    return takeWhile(kWordRest, kWordRest, name);
}

bool SoTokenizer::readIdentifier(std::string_view& identifier)
{
    return takeWhile(kIdentStart, kIdentRest, identifier);
}

bool SoTokenizer::acceptWord(std::string_view word)
{
    if (peekWord() != word) {
        return false;
    }
    m_at += word.size();
    return true;
}

template <class T>
bool SoTokenizer::readNumber(T& value, const char* what)
{
    skip();
    const char* end = m_failed ? nullptr : scanNumber(m_at, m_end, value);
    if (!end) {
        return fail(what);
    }
    m_at = end;
    return true;
}

bool SoTokenizer::readFloat(float& value)
{
    return readNumber(value, "expected a number");
}

bool SoTokenizer::readDouble(double& value)
{
    return readNumber(value, "expected a number");
}

bool SoTokenizer::readInt(std::int32_t& value)
{
    return readNumber(value, "expected a whole number from -2147483648 to 2147483647");
}

bool SoTokenizer::readUInt(std::uint32_t& value)
{
    return readNumber(value, "expected a whole number from 0 to 4294967295");
}

bool SoTokenizer::readShort(std::int16_t& value)
{
    return readNumber(value, "expected a whole number from -32768 to 32767");
}

bool SoTokenizer::readUShort(std::uint16_t& value)
{
    return readNumber(value, "expected a whole number from 0 to 65535");
}

bool SoTokenizer::readBool(bool& value)
{
    skip();
    const char* start = m_at;
    std::string_view word;
    if (takeWhile(kIdentRest, kIdentRest, word)) {
        value = word == "1" || equalsInSmallLetters(word, "true");
        if (value || word == "0" || equalsInSmallLetters(word, "false")) {
            return true;
        }
    }
    m_at = start;
    return fail("expected TRUE or FALSE");
}

bool SoTokenizer::readString(std::string& value)
{
    if (peek() == '"' && !m_failed) {
        return readQuoted(value);
    }
    std::string_view word;
    if (!takeWhile(kBare, kBare, word)) {
        return fail("expected a string");
    }
    value = word;
    return true;
}

bool SoTokenizer::readQuoted(std::string& value)
{
    value.clear();
    const char* p = m_at + 1;
    for (const char* run = p; p < m_end; ++p) {
        if (!is(*p, kQuoteEvent)) {
            continue;
        }
        value.append(run, p);
        if (*p == '"') {
            if (value.size() > kMaxStringLength) {
                return fail("expected a shorter string");
            }
            m_at = p + 1;
            return true;
        }
        // A backslash is taken as it stands unless it protects a quote or itself.
        run = p;
        if (p[1] == '"' || p[1] == '\\') {
            run = ++p;
        }
    }
    return fail("expected the closing '\"' of this string");
}

template <class T>
std::size_t SoTokenizer::readMany(T* to, std::size_t max)
{
    if (m_failed) {
        return 0;
    }
    return scanNumbers(m_at, m_end, to, max);
}

std::size_t SoTokenizer::readNumbers(float* to, std::size_t max)
{
    return readMany(to, max);
}

std::size_t SoTokenizer::readNumbers(double* to, std::size_t max)
{
    return readMany(to, max);
}

std::size_t SoTokenizer::readNumbers(std::int32_t* to, std::size_t max)
{
    return readMany(to, max);
}

std::size_t SoTokenizer::readNumbers(std::uint32_t* to, std::size_t max)
{
    return readMany(to, max);
}

std::size_t SoTokenizer::readNumbers(std::int16_t* to, std::size_t max)
{
    return readMany(to, max);
}

std::size_t SoTokenizer::readNumbers(std::uint16_t* to, std::size_t max)
{
    return readMany(to, max);
}

namespace {

template <class T>
std::size_t appendNumbers(SoTokenizer& in, std::vector<T>& values)
{
    std::array<T, 1024> piece;
    std::size_t total = 0;
    for (;;) {
        const std::size_t count = in.readNumbers(piece.data(), piece.size());
        values.insert(values.end(), piece.data(), piece.data() + count);
        total += count;
        in.reportProgress();
        if (count < piece.size()) {
            return total;
        }
    }
}

} // namespace

std::size_t SoTokenizer::readFloats(std::vector<float>& values)
{
    return appendNumbers(*this, values);
}

std::size_t SoTokenizer::readInts(std::vector<std::int32_t>& values)
{
    return appendNumbers(*this, values);
}

bool SoTokenizer::fail(const std::string& message)
{
    skip();
    return failAt(getOffset(), message);
}

bool SoTokenizer::failAt(std::size_t offset, const std::string& message)
{
    if (!m_failed) {
        m_failed = true;
        m_error = message;
        m_errorOffset = offset;
    }
    return false;
}

int SoTokenizer::getErrorLine() const
{
    int line = 0, column = 0;
    if (m_failed) {
        getPosition(m_errorOffset, line, column);
    }
    return line;
}

int SoTokenizer::getErrorColumn() const
{
    int line = 0, column = 0;
    if (m_failed) {
        getPosition(m_errorOffset, line, column);
    }
    return column;
}

void SoTokenizer::countLines(std::size_t begin, std::size_t end, int& lines,
                             std::size_t& lineStart) const
{
    const std::string_view part(m_begin + begin, end - begin);
    // Most files know only one kind of line end, which is counted fast.
    if (part.find('\r') == std::string_view::npos) {
        lines += static_cast<int>(countLineFeeds(part));
        if (const std::size_t last = part.rfind('\n'); last != std::string_view::npos)
            lineStart = begin + last + 1;
        return;
    }
    for (const char* p = part.data(); p < part.data() + part.size(); ++p) {
        if (*p == '\n' || (*p == '\r' && p[1] != '\n')) {
            ++lines;
            lineStart = static_cast<std::size_t>(p + 1 - m_begin);
        }
    }
}

void SoTokenizer::getPosition(std::size_t offset, int& line, int& column) const
{
    const std::size_t at = std::min(offset, getSize());
    std::size_t from = 0, lineStart = 0;
    line = 1;
    for (const Gap& gap : m_gaps) {
        if (at < gap.end)
            break;
        countLines(from, gap.begin, line, lineStart);
        line += gap.lines;
        lineStart = gap.lines > 0 ? gap.lineStart : lineStart;
        from = gap.end;
    }
    countLines(from, at, line, lineStart);
    column = static_cast<int>(at - lineStart) + 1;
}

void SoTokenizer::setDiscard(Discard function, void* data)
{
    m_discard = function;
    m_discardData = data;
}

void SoTokenizer::callDiscard(std::size_t& begin)
{
    Gap gap{begin, getOffset(), 0, 0};
    countLines(gap.begin, gap.end, gap.lines, gap.lineStart);
    m_gaps.push_back(gap);
    m_discard(m_discardData, gap.begin, gap.end);
    begin = gap.end;
}

void SoTokenizer::setProgress(Progress function, void* data)
{
    m_progress = function;
    m_progressData = data;
    m_nextProgress = 0;
}

void SoTokenizer::callProgress()
{
    m_nextProgress = getOffset() + kProgressStep;
    m_progress(m_progressData, getOffset(), getSize());
}
