#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace mirabo {

/// Compares a text with many others, given as UTF-8, without making strings of them.
class TextMatcher {
public:
    TextMatcher(const QString& text, bool caseSensitive, bool exact);

    /// Whether the text is in `utf8`, or is it when the match is exact.
    bool matches(std::string_view utf8);

private:
    bool compare(std::string_view utf8) const;

    const QString m_text; ///< in lower case unless case counts
    const std::string m_utf8;
    const bool m_caseSensitive;
    const bool m_exact;
    std::string m_lowered;
};

} // namespace mirabo
