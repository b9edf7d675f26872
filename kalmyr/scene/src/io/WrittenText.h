#pragma once

#include <kalmyr/base/SbNumber.h>

#include <string>
#include <string_view>
#include <vector>

class SoAction;
class SoField;
class SoOutput;

namespace kalmyr::detail {

/// The text of a graph while it grows: its lines and braces, and the output that takes it piece by
/// piece. The traversal of the action ends when the output fails, which posts the reason.
class WrittenText {
public:
    /// `buffer` takes the text that is not yet handed on; nothing is until begin() was called.
    WrittenText(std::string& buffer, SoAction& action, SoOutput& out);

    void begin() { m_handsOn = true; }
    void finish();
    void flushIfLarge();

    std::string& buffer() { return m_buffer; }
    WrittenText& operator<<(std::string_view text)
    {
        m_buffer += text;
        return *this;
    }
    WrittenText& operator<<(int number)
    {
        SbNumber::appendInt(m_buffer, number);
        return *this;
    }
    void quoted(std::string_view text);
    /// The values as bytes behind the text, where there are many in a binary file. False when they
    /// must be written as text.
    bool block(const SoField& field);

    void newLine();
    /// A line that goes on with the same value.
    void breakLine();
    /// Ends the line unless that is done already.
    void endLine();
    void indent() { ++m_level; }
    void outdent() { --m_level; }

    /// " {", and what belongs to that: "}" on a line of its own unless there is nothing inside.
    void openBody();
    void closeBody();
    /// All that stands between the braces, with its own line breaks.
    void body(std::string_view text);

private:
    void appendIndentation(int levels);

    std::string& m_buffer;
    SoAction& m_action;
    SoOutput& m_out;
    std::vector<std::string_view> m_blocks; ///< values that a binary file holds as bytes
    int m_level = 0;
    bool m_isBinary;
    bool m_handsOn = false;
    bool m_isEmpty = true;   ///< nothing stands yet in the innermost braces
    bool m_isClosed = false; ///< what stands there brought its own space in front of the brace
};

} // namespace kalmyr::detail
