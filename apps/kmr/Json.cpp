#include "Json.h"

#include <kalmyr/base/SbNumber.h>

#include <cmath>

namespace {

/// Length of the UTF-8 character at the start of `text`; 0 when there is none.
std::size_t utf8Length(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const std::size_t length = first < 0x80                    ? 1
                               : first >= 0xc2 && first < 0xe0 ? 2
                               : first >= 0xe0 && first < 0xf0 ? 3
                               : first >= 0xf0 && first < 0xf5 ? 4
                                                               : 0;
    if (length == 0 || length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
    const bool tooLong = (first == 0xe0 && byte(1) < 0xa0) || (first == 0xf0 && byte(1) < 0x90);
    const bool noCharacter =
        (first == 0xed && byte(1) >= 0xa0) || (first == 0xf4 && byte(1) > 0x8f);
    return tooLong || noCharacter ? 0 : length;
}

} // namespace

void Json::separate()
{
    if (!m_first)
        m_text += ',';
    m_first = false;
}

Json& Json::open(char c)
{
    separate();
    m_text += c;
    m_first = true;
    return *this;
}

Json& Json::close(char c)
{
    m_text += c;
    m_first = false;
    return *this;
}

Json& Json::raw(std::string_view text)
{
    separate();
    m_text += text;
    return *this;
}

Json& Json::key(std::string_view name)
{
    separate();
    appendString(name);
    m_text += ':';
    m_first = true;
    return *this;
}

Json& Json::value(std::string_view text)
{
    separate();
    appendString(text);
    return *this;
}

Json& Json::value(double number)
{
    if (!std::isfinite(number))
        return null();
    separate();
    SbNumber::appendDouble(m_text, number);
    return *this;
}

void Json::appendString(std::string_view text)
{
    m_text += '"';
    while (!text.empty()) {
        const auto c = static_cast<unsigned char>(text[0]);
        std::size_t length = utf8Length(text);
        if (c == '"' || c == '\\') {
            m_text += '\\';
            m_text += text[0];
        } else if (c < 0x20) {
            m_text += "\\u";
            std::string hex;
            SbNumber::appendHex(hex, c, 4);
            m_text += hex.substr(2);
        } else if (length == 0) {
            m_text += static_cast<char>(0xc0 | (c >> 6));
            m_text += static_cast<char>(0x80 | (c & 0x3f));
            length = 1;
        } else {
            m_text += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    m_text += '"';
}
