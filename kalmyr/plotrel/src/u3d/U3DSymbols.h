#pragma once

#include "U3DBlocks.h"

#include <cstdint>
#include <map>
#include <vector>

namespace kalmyr::detail {

/// Writes the values that a U3D block may hold compressed: face corners, line ends and their like.
/// Without compression they are plain little-endian numbers; with it the arithmetic coder of the
/// format packs them. One object serves the part of one block that begins with its first symbol.
class U3DSymbols {
public:
    U3DSymbols(U3DBlocks& out, bool compressed) : m_out(out), m_compressed(compressed) {}

    /// A value below `range`, each being as likely as the others. Readers do not agree about the
    /// range 16383: it must not be used with compression.
    void fixed(std::uint32_t value, std::uint32_t range);
    /// A value whose likelihood is learnt from those written in the same context before.
    void u32(std::uint32_t value, int context) { dynamic(value, context, 4); }
    void u8(std::uint8_t value, int context) { dynamic(value, context, 1); }
    /// Brings out the last bits. Nothing may be written afterwards.
    void finish();

    /// From here on values of a fixed range are not packed.
    static constexpr std::uint32_t kMaxRange = 0x3fff;

private:
    /// Counts by symbol, with their sums, for one context.
    class Histogram {
    public:
        Histogram();
        void count(std::uint32_t symbol);
        std::uint32_t get(std::uint32_t symbol) const { return m_counts[symbol]; }
        /// Of all symbols in front of this one.
        std::uint32_t getBelow(std::uint32_t symbol) const;
        std::uint32_t getTotal() const { return m_total; }

    private:
        void add(std::uint32_t symbol, std::uint32_t amount);
        void age();

        std::vector<std::uint16_t> m_counts;
        std::vector<std::uint16_t> m_sums; ///< a binary indexed tree
        std::uint32_t m_total = 0;
    };

    void dynamic(std::uint32_t value, int context, int bytes);
    void plain(std::uint32_t value, int bytes);
    void encode(std::uint32_t below, std::uint32_t frequency, std::uint32_t total);
    void bit(bool on);

    U3DBlocks& m_out;
    bool m_compressed;
    bool m_coded = false; ///< the coder has written something
    std::uint32_t m_low = 0;
    std::uint32_t m_high = 0xffff;
    std::uint32_t m_underflow = 0;
    std::uint8_t m_byte = 0;
    int m_numBits = 0;
    std::map<int, Histogram> m_contexts;
};

} // namespace kalmyr::detail
