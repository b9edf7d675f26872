#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace u3d {

[[noreturn]] inline void fail(std::size_t offset, const std::string& what)
{
    throw std::runtime_error("byte " + std::to_string(offset) + ": " + what);
}

inline bool isUtf8(const std::string& text)
{
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const int more = lead < 0x80                   ? 0
                         : lead >= 0xc2 && lead < 0xe0 ? 1
                         : lead >= 0xe0 && lead < 0xf0 ? 2
                         : lead >= 0xf0 && lead < 0xf5 ? 3
                                                       : -1;
        if (more < 0 || i + static_cast<std::size_t>(more) >= text.size())
            return false;
        for (int k = 1; k <= more; ++k) {
            if ((static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]) & 0xc0) != 0x80)
                return false;
        }
        i += static_cast<std::size_t>(more) + 1;
    }
    return true;
}

/// Reads the values of one block, and the symbols of its compressed part.
class Data {
public:
    Data(const std::string& bytes, std::size_t at, std::size_t size, bool packed)
        : m_bytes(bytes), m_start(at), m_size(size), m_packed(packed)
    {
    }

    std::size_t offset() const { return m_start + m_bit / 8; }
    std::size_t left() const { return m_size - m_bit / 8; }

    std::uint8_t u8() { return static_cast<std::uint8_t>(plain(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(plain(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(plain(4)); }
    std::uint64_t u64()
    {
        const std::uint64_t low = u32();
        return low | std::uint64_t(u32()) << 32;
    }
    float f32()
    {
        const std::uint32_t bits = u32();
        float value;
        std::memcpy(&value, &bits, 4);
        if (!std::isfinite(value))
            fail(offset(), "a number that is not finite");
        return value;
    }
    double f64()
    {
        const std::uint64_t bits = u64();
        double value;
        std::memcpy(&value, &bits, 8);
        return value;
    }
    std::string text()
    {
        const std::size_t size = u16();
        std::string value = bytes(size);
        if (!isUtf8(value))
            fail(offset(), "a text that is not UTF-8");
        return value;
    }
    std::string bytes(std::size_t size)
    {
        if (size > left())
            fail(offset(), "the data end in the middle of a value");
        std::string value = m_bytes.substr(offset(), size);
        m_bit += 8 * size;
        return value;
    }
    template <std::size_t N>
    std::array<float, N> floats()
    {
        std::array<float, N> values;
        for (float& value : values)
            value = f32();
        return values;
    }
    Matrix matrix()
    {
        const Matrix value = floats<16>();
        if (value[3] != 0 || value[7] != 0 || value[11] != 0 || value[15] != 1)
            fail(offset(), "a matrix that is not affine");
        return value;
    }

    std::uint32_t fixed(std::uint32_t range)
    {
        if (!m_packed || range >= 0x3fff) {
            if (m_packed && range == 0x3fff)
                fail(offset(), "a range about which readers differ");
            return u32();
        }
        const std::uint32_t value = target(range);
        narrow(value, 1, range);
        return value;
    }
    std::uint32_t dynamic(int context, int bytes)
    {
        if (!m_packed)
            return static_cast<std::uint32_t>(plain(bytes));
        Histogram& known = m_contexts[context];
        const std::uint32_t total = known.total;
        const std::uint32_t wanted = target(total);
        std::uint32_t below = 0;
        auto found = known.counts.begin();
        while (below + found->second <= wanted)
            below += (found++)->second;
        const std::uint32_t symbol = found->first;
        narrow(below, found->second, total);
        known.note(symbol);
        if (symbol != 0)
            return symbol - 1;
        const auto value = static_cast<std::uint32_t>(plain(bytes));
        if (value < 0xffff)
            known.note(value + 1);
        return value;
    }
    /// Behind the last symbol.
    void endSymbols(bool mayHaveZero)
    {
        if (m_coded && u32() != 0)
            fail(offset(), "the symbols do not end with zero");
        while (m_bit % 8 != 0) {
            if (bitAt(m_bit++))
                fail(offset(), "padding bits that are not zero");
        }
        m_low = m_underflow = 0;
        m_high = 0xffff;
        if (mayHaveZero && left() == 4 && u32() != 0)
            fail(offset(), "bytes behind the faces");
        end();
    }
    void end() const
    {
        if (m_bit != 8 * m_size)
            fail(offset(), std::to_string(left()) + " bytes too many in a block");
    }

private:
    struct Histogram {
        std::map<std::uint32_t, std::uint32_t> counts{{0, 1}};
        std::uint32_t total = 1;

        void note(std::uint32_t symbol)
        {
            if (total >= 0x1fff) {
                for (auto& [any, count] : counts)
                    count /= 2;
                ++counts[0];
                std::erase_if(counts, [](const auto& entry) { return entry.second == 0; });
                total = 0;
                for (const auto& [any, count] : counts)
                    total += count;
            }
            ++counts[symbol];
            ++total;
        }
    };

    /// A whole number as it stands, or through the coder where one is at work.
    std::uint64_t plain(int bytes)
    {
        std::uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) {
            std::uint64_t byte = 0;
            if (m_low == 0 && m_high == 0xffff && m_underflow == 0) {
                if (m_bit + 8 > 8 * m_size)
                    fail(offset(), "the data end in the middle of a value");
                for (std::uint64_t b = 0; b < 8; ++b)
                    byte |= std::uint64_t(bitAt(m_bit++)) << b;
            } else {
                const std::uint32_t mirrored = target(256);
                narrow(mirrored, 1, 256);
                for (int b = 0; b < 8; ++b)
                    byte |= std::uint64_t(mirrored >> b & 1) << (7 - b);
            }
            value |= byte << (8 * i);
        }
        return value;
    }
    bool bitAt(std::size_t bit) const
    {
        return bit < 8 * m_size
               && (static_cast<unsigned char>(m_bytes[m_start + bit / 8]) >> (bit % 8) & 1) != 0;
    }
    /// Returns the position of the code within the interval, in units of `total`.
    std::uint32_t target(std::uint32_t total) const
    {
        std::uint32_t code = bitAt(m_bit) ? 1 : 0;
        for (std::size_t i = 0; i < 15; ++i)
            code = code << 1 | (bitAt(m_bit + 1 + m_underflow + i) ? 1 : 0);
        if (code < m_low || code > m_high)
            fail(offset(), "symbols that nobody can have written");
        return (total * (code - m_low + 1) - 1) / (m_high - m_low + 1);
    }
    void narrow(std::uint32_t below, std::uint32_t count, std::uint32_t total)
    {
        m_coded = true;
        const std::uint32_t range = m_high - m_low + 1;
        m_high = m_low + range * (below + count) / total - 1;
        m_low += range * below / total;
        for (;;) {
            if ((m_low >= 0x8000) == (m_high >= 0x8000)) {
                m_bit += 1 + m_underflow;
                m_underflow = 0;
                m_low = m_low * 2 % 0x10000;
                m_high = m_high * 2 % 0x10000 + 1;
            } else if (m_low >= 0x4000 && m_high < 0xc000) {
                ++m_underflow;
                m_low = (m_low - 0x4000) * 2;
                m_high = (m_high - 0x4000) * 2 + 1;
            } else {
                break;
            }
        }
        if (m_bit > 8 * m_size)
            fail(offset(), "the data end in the middle of a symbol");
    }
    const std::string& m_bytes;
    std::size_t m_start;
    std::size_t m_size;
    bool m_packed;
    bool m_coded = false;
    std::size_t m_bit = 0;
    std::uint32_t m_low = 0;
    std::uint32_t m_high = 0xffff;
    std::size_t m_underflow = 0;
    std::map<int, Histogram> m_contexts;
};

} // namespace u3d
