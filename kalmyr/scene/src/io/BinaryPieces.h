#pragma once

#include "SoBlocks.h"

#include <string_view>

namespace kalmyr::detail {

class SceneText;

/// The pieces of a binary file. The text of one is read at a time, with the blocks of values that
/// it refers to.
class BinaryPieces {
public:
    explicit BinaryPieces(SceneText& scene) : m_scene(scene) {}

    /// Begins with the first piece of `file`; false after a fault.
    bool open(std::string_view file, std::size_t offset);
    bool isOpen() const { return !m_file.empty(); }
    /// Goes on to the next piece; false when there is none, and after a fault.
    bool openNext();
    /// Reads on behind '@': the number of a block, whose values the field takes.
    bool readBlock(SoField& field);

private:
    bool openPiece(std::size_t offset);

    SceneText& m_scene;
    std::string_view m_file;
    Chunk m_piece;
};

} // namespace kalmyr::detail
