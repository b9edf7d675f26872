#include "U3DBlocks.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kHeadBytes = 12;
constexpr std::size_t kMaxTextBytes = 0xffff;

} // namespace

std::size_t U3DBlocks::begin(std::uint32_t type)
{
    const std::size_t start = m_out.size();
    u32(type);
    u32(0); // size of the data
    u32(0); // no metadata
    return start;
}

void U3DBlocks::end(std::size_t start)
{
    const std::size_t size = m_out.size() - start - kHeadBytes;
    m_valid = m_valid && size <= std::numeric_limits<std::uint32_t>::max();
    setU32(start + 4, static_cast<std::uint32_t>(size));
    pad();
}

void U3DBlocks::pad()
{
    m_out.append((4 - m_out.size() % 4) % 4, '\0');
}

void U3DBlocks::f32(float value)
{
    u32(std::bit_cast<std::uint32_t>(value));
}

void U3DBlocks::f64(double value)
{
    u64(std::bit_cast<std::uint64_t>(value));
}

void U3DBlocks::text(std::string_view value)
{
    value = value.substr(0, kMaxTextBytes);
    u16(static_cast<std::uint16_t>(value.size()));
    m_out += value;
}

void U3DBlocks::vec(const SbVec3f& value)
{
    for (int i = 0; i < 3; ++i)
        f32(value[i]);
}

/// Our rows are the columns of matrices for column vectors, which the file holds one by one.
void U3DBlocks::matrix(const SbMatrix& value)
{
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column)
            f32(value[row][column]);
    }
}

void U3DBlocks::replace(std::size_t at, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i)
        m_out[at + static_cast<std::size_t>(i)] = static_cast<char>(value >> (8 * i));
}

} // namespace kalmyr::detail
