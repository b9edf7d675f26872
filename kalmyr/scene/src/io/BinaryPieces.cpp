#include "BinaryPieces.h"

#include "SceneText.h"

namespace kalmyr::detail {

bool BinaryPieces::open(std::string_view file, std::size_t offset)
{
    m_file = file;
    return openPiece(offset);
}

bool BinaryPieces::openPiece(std::size_t offset)
{
    if (const char* fault = m_piece.read(m_file, offset)) {
        // Behind the text that was read up to now.
        const char* const place = m_file.data() + m_piece.end;
        return m_scene.getTokens().failAt(
            static_cast<std::size_t>(place - m_scene.getTokens().getText()), fault);
    }
    m_scene.setText(m_piece.text, m_piece.textSize);
    return true;
}

bool BinaryPieces::openNext()
{
    const std::size_t rest = m_file.find_first_not_of(std::string_view("\0\r\n", 3), m_piece.end);
    return rest != m_file.npos && openPiece(m_piece.end);
}

bool BinaryPieces::readBlock(SoField& field)
{
    SoTokenizer& text = m_scene.getTokens();
    std::uint32_t index = 0;
    text.peek();
    const std::size_t at = text.getOffset();
    if (!text.readUInt(index))
        return false;
    if (index >= m_piece.blocks.size() || !setBlock(field, m_piece.blocks[index]))
        return text.failAt(at, "expected the number of a block that fits the field");
    const std::size_t size = m_piece.blocks[index].size();
    m_scene.countAside(size);
    return m_scene.countWork(size);
}

} // namespace kalmyr::detail
