#include <kalmyr/base/SbString.h>

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

std::string numberText(auto number)
{
    char buffer[SbNumber::kMaxChars];
    return std::string(buffer, SbNumber::write(buffer, number));
}

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Decodes the first byte of a UTF-8 sequence: how many bytes follow and the range of the first of
// them, which excludes overlong forms, surrogates and what is beyond U+10FFFF.
struct Lead {
    int more;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
};

Lead leadOf(unsigned char c)
{
    if (c < 0x80) {
        return {0};
    }
    if (c >= 0xC2 && c <= 0xDF) {
        return {1};
    }
    if (c >= 0xE0 && c <= 0xEF) {
        return {2, static_cast<unsigned char>(c == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(c == 0xED ? 0x9F : 0xBF)};
    }
    if (c >= 0xF0 && c <= 0xF4) {
        return {3, static_cast<unsigned char>(c == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(c == 0xF4 ? 0x8F : 0xBF)};
    }
    return {-1};
}

// Takes one character off the front; the replacement character for the longest broken start of one.
char32_t takeCharacter(std::string_view& text, bool& valid)
{
    const auto first = static_cast<unsigned char>(text[0]);
    text.remove_prefix(1);
    Lead lead = leadOf(first);
    if (lead.more <= 0) {
        valid = lead.more == 0;
        return valid ? first : kReplacement;
    }
    char32_t c = first & (0x3F >> lead.more);
    for (int i = 0; i < lead.more; ++i) {
        const auto next = text.empty() ? 0 : static_cast<unsigned char>(text[0]);
        if (next < lead.low || next > lead.high) {
            valid = false;
            return kReplacement;
        }
        c = c << 6 | (next & 0x3F);
        text.remove_prefix(1);
        lead = {lead.more};
    }
    valid = true;
    return c;
}

void appendUtf8(std::string& out, char32_t c)
{
    const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        out += tail(0);
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += tail(6);
        out += tail(0);
    } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += tail(12);
        out += tail(6);
        out += tail(0);
    }
}

bool isHighSurrogate(char16_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

bool isLowSurrogate(char16_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

} // namespace

SbString::SbString(float number) : m_text(numberText(number)) {}

SbString::SbString(double number) : m_text(numberText(number)) {}

SbString SbString::getSubString(std::size_t start, std::size_t end) const
{
    if (start >= m_text.size() || end < start) {
        return {};
    }
    const std::size_t last = std::min(end, m_text.size() - 1);
    return {m_text.data() + start, last - start + 1};
}

void SbString::deleteSubString(std::size_t start, std::size_t end)
{
    if (start < m_text.size() && end >= start) {
        const std::size_t last = std::min(end, m_text.size() - 1);
        m_text.erase(start, last - start + 1);
    }
}

SbString SbString::lower() const
{
    SbString r = *this;
    for (char& c : r.m_text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return r;
}

SbString SbString::upper() const
{
    SbString r = *this;
    for (char& c : r.m_text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return r;
}

SbString SbString::trim() const
{
    std::string_view v = m_text;
    while (!v.empty() && isSpace(v.front())) {
        v.remove_prefix(1);
    }
    while (!v.empty() && isSpace(v.back())) {
        v.remove_suffix(1);
    }
    return v;
}

SbString SbString::replaced(std::string_view from, std::string_view to) const
{
    if (from.empty()) {
        return *this;
    }
    std::string out;
    std::size_t at = 0;
    for (std::size_t hit = m_text.find(from); hit != npos; hit = m_text.find(from, at)) {
        out.append(m_text, at, hit - at);
        out.append(to);
        at = hit + from.size();
    }
    out.append(m_text, at);
    return out;
}

std::u16string SbString::toUtf16() const
{
    std::u16string out;
    out.reserve(m_text.size());
    bool valid;
    for (std::string_view rest = m_text; !rest.empty();) {
        const char32_t c = takeCharacter(rest, valid);
        if (c < 0x10000) {
            out += static_cast<char16_t>(c);
        } else {
            out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return out;
}

SbString SbString::fromUtf16(std::u16string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (isHighSurrogate(text[i]) || isLowSurrogate(text[i])) {
            c = kReplacement;
        }
        appendUtf8(out, c);
    }
    return out;
}

std::string SbString::toLatin1() const
{
    std::string out;
    out.reserve(m_text.size());
    bool valid;
    for (std::string_view rest = m_text; !rest.empty();) {
        const char32_t c = takeCharacter(rest, valid);
        out += c <= 0xFF ? static_cast<char>(c) : '?';
    }
    return out;
}

SbString SbString::fromLatin1(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        appendUtf8(out, static_cast<unsigned char>(c));
    }
    return out;
}

bool SbString::isValidUtf8() const
{
    bool valid = true;
    for (std::string_view rest = m_text; !rest.empty() && valid;) {
        takeCharacter(rest, valid);
    }
    return valid;
}

SbString SbString::format(const char* pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    SbString r = kalmyr::detail::formatArguments(pattern, arguments);
    va_end(arguments);
    return r;
}

SbString kalmyr::detail::formatArguments(const char* pattern, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, pattern, again);
    va_end(again);
    std::string text(std::max(length, 0), '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, pattern, arguments);
    }
    return text;
}
