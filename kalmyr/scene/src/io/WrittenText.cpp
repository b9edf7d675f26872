#include "WrittenText.h"

#include "SoBlocks.h"

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/fields/SoValueText.h>
#include <kalmyr/io/SoOutput.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

/// Text is handed on in pieces of this size (bytes).
constexpr std::size_t kFlushSize = std::size_t(1) << 18;

} // namespace

WrittenText::WrittenText(std::string& buffer, SoAction& action, SoOutput& out)
    : m_buffer(buffer), m_action(action), m_out(out), m_isBinary(out.isBinary())
{
}

void WrittenText::finish()
{
    if (!m_buffer.empty())
        endLine();
    if (m_isBinary) {
        std::string bytes;
        Chunk::write(bytes, m_out.getNumBytesBefore(), m_buffer, m_blocks);
        m_out.write(bytes);
    } else {
        m_out.write(m_buffer);
    }
    m_buffer.clear();
}

void WrittenText::flushIfLarge()
{
    // The size of the text stands in front of it in a binary file.
    if (m_buffer.size() < kFlushSize || m_isBinary || !m_handsOn)
        return;
    if (!m_out.write(m_buffer))
        m_action.setTerminated(true);
    m_buffer.clear();
}

void WrittenText::quoted(std::string_view text)
{
    writeQuoted(m_buffer, text);
}

bool WrittenText::block(const SoField& field)
{
    std::string_view bytes;
    if (!m_isBinary || !getBlock(field, bytes))
        return false;
    m_buffer += '@';
    SbNumber::appendUInt(m_buffer, m_blocks.size());
    m_blocks.push_back(bytes);
    return true;
}

void WrittenText::appendIndentation(int levels)
{
    // Deep graphs would be blanks for the most part.
    constexpr int kMaxLevels = 100;
    m_buffer.append(static_cast<std::size_t>(std::min(levels, kMaxLevels)) * 2, ' ');
}

void WrittenText::newLine()
{
    flushIfLarge();
    m_isEmpty = false;
    m_buffer += '\n';
    appendIndentation(m_level);
}

void WrittenText::breakLine()
{
    m_buffer += '\n';
    appendIndentation(m_level + 1);
}

void WrittenText::endLine()
{
    if (m_buffer.empty() || m_buffer.back() != '\n')
        m_buffer += '\n';
}

void WrittenText::openBody()
{
    m_buffer += " {";
    ++m_level;
    m_isEmpty = true;
}

void WrittenText::closeBody()
{
    --m_level;
    if (m_isClosed) {
        m_isClosed = false;
    } else if (m_isEmpty) {
        m_buffer += ' ';
    } else {
        newLine();
    }
    m_buffer += '}';
    m_isEmpty = false;
}

void WrittenText::body(std::string_view text)
{
    m_buffer += text;
    m_isClosed = true;
}

} // namespace kalmyr::detail
