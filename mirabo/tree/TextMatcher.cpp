#include "mirabo/tree/TextMatcher.h"

namespace mirabo {

namespace {

/// Lower case of an ASCII text; false when there are other characters in it.
bool lowerAscii(std::string_view text, std::string& out)
{
    out.resize(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
        out[i] = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    }
    return true;
}

} // namespace

TextMatcher::TextMatcher(const QString& text, bool caseSensitive, bool exact)
    : m_text(caseSensitive ? text : text.toLower()),
      m_utf8(m_text.toStdString()),
      m_caseSensitive(caseSensitive),
      m_exact(exact)
{
}

bool TextMatcher::compare(std::string_view utf8) const
{
    return m_exact ? utf8 == m_utf8 : utf8.find(m_utf8) != std::string_view::npos;
}

bool TextMatcher::matches(std::string_view utf8)
{
    if (m_caseSensitive)
        return compare(utf8);
    if (lowerAscii(utf8, m_lowered))
        return compare(m_lowered);
    const QString lowered = QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size())).toLower();
    return m_exact ? lowered == m_text : lowered.contains(m_text);
}

} // namespace mirabo
