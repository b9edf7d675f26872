#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kalmyr::detail {

/// Appends the blocks of a U3D file, and the values in them, to a string: little-endian, blocks
/// padded to multiples of four bytes from the start of the string. Blocks nest.
class U3DBlocks {
public:
    explicit U3DBlocks(std::string& out) : m_out(out) {}

    /// Writes the head of a block and returns what end() takes.
    std::size_t begin(std::uint32_t type);
    /// Enters the size of the data and pads them.
    void end(std::size_t start);
    /// Zero bytes up to a multiple of four.
    void pad();
    std::size_t getSize() const { return m_out.size(); }
    /// False when a block was larger than its head can tell.
    bool isValid() const { return m_valid; }

    void u8(std::uint8_t value) { m_out += static_cast<char>(value); }
    void u16(std::uint16_t value) { little(value, 2); }
    void u32(std::uint32_t value) { little(value, 4); }
    void u64(std::uint64_t value) { little(value, 8); }
    void f32(float value);
    void f64(double value);
    /// At most 65535 bytes.
    void text(std::string_view value);
    void vec(const SbVec3f& value);
    void color(const SbColor& value) { vec(value); }
    void matrix(const SbMatrix& value);
    void bytes(std::string_view value) { m_out += value; }

    void setU32(std::size_t at, std::uint32_t value) { replace(at, value, 4); }
    void setU64(std::size_t at, std::uint64_t value) { replace(at, value, 8); }

private:
    void little(std::uint64_t value, int count)
    {
        char bytes[8];
        for (int i = 0; i < count; ++i)
            bytes[i] = static_cast<char>(value >> (8 * i));
        m_out.append(bytes, static_cast<std::size_t>(count));
    }
    void replace(std::size_t at, std::uint64_t value, int count);

    std::string& m_out;
    bool m_valid = true;
};

} // namespace kalmyr::detail
