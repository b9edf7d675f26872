#include "U3DSymbols.h"

#include <algorithm>

namespace kalmyr::detail {

namespace {

constexpr std::uint32_t kEscape = 0;
constexpr std::uint32_t kMaxSymbol = 0xffff;
constexpr std::uint32_t kAgeAt = 0x1fff;
constexpr std::uint32_t kTop = 0x8000;
constexpr std::uint32_t kSecond = 0x4000;

std::uint32_t reversed(std::uint32_t byte)
{
    std::uint32_t result = 0;
    for (int i = 0; i < 8; ++i)
        result |= (byte >> i & 1) << (7 - i);
    return result;
}

} // namespace

U3DSymbols::Histogram::Histogram() : m_counts(kMaxSymbol + 1), m_sums(kMaxSymbol + 2)
{
    add(kEscape, 1);
}

void U3DSymbols::Histogram::add(std::uint32_t symbol, std::uint32_t amount)
{
    m_counts[symbol] = static_cast<std::uint16_t>(m_counts[symbol] + amount);
    m_total += amount;
    for (std::uint32_t i = symbol + 1; i < m_sums.size(); i += i & -i)
        m_sums[i] = static_cast<std::uint16_t>(m_sums[i] + amount);
}

std::uint32_t U3DSymbols::Histogram::getBelow(std::uint32_t symbol) const
{
    std::uint32_t sum = 0;
    for (std::uint32_t i = symbol; i > 0; i -= i & -i)
        sum += m_sums[i];
    return sum;
}

/// Halves all counts, so that what was written lately counts for more.
void U3DSymbols::Histogram::age()
{
    m_total = 0;
    std::fill(m_sums.begin(), m_sums.end(), std::uint16_t(0));
    for (std::uint32_t symbol = 0; symbol <= kMaxSymbol; ++symbol) {
        const std::uint32_t half = m_counts[symbol] / 2u + (symbol == kEscape ? 1u : 0u);
        m_counts[symbol] = 0;
        if (half > 0)
            add(symbol, half);
    }
}

void U3DSymbols::Histogram::count(std::uint32_t symbol)
{
    if (m_total >= kAgeAt)
        age();
    add(symbol, 1);
}

void U3DSymbols::fixed(std::uint32_t value, std::uint32_t range)
{
    if (!m_compressed)
        m_out.u32(value);
    else if (range < kMaxRange)
        encode(value, 1, range);
    else
        plain(value, 4);
}

void U3DSymbols::dynamic(std::uint32_t value, int context, int bytes)
{
    if (!m_compressed) {
        bytes == 1 ? m_out.u8(static_cast<std::uint8_t>(value)) : m_out.u32(value);
        return;
    }
    Histogram& known = m_contexts[context];
    const std::uint32_t symbol = value < kMaxSymbol ? value + 1 : kEscape;
    const std::uint32_t found = known.get(symbol) > 0 ? symbol : kEscape;
    encode(known.getBelow(found), known.get(found), known.getTotal());
    known.count(found);
    if (found != kEscape)
        return;
    plain(value, bytes);
    if (symbol != kEscape)
        known.count(symbol);
}

void U3DSymbols::plain(std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        const std::uint32_t byte = value >> (8 * i) & 0xff;
        const bool atStart = m_low == 0 && m_high == 0xffff && m_underflow == 0;
        if (!atStart)
            encode(reversed(byte), 1, 256);
        else
            for (int b = 0; b < 8; ++b)
                bit((byte >> b & 1) != 0);
    }
}

/// Narrows the interval to the symbol's part of it, and writes the bits that are settled by that.
void U3DSymbols::encode(std::uint32_t below, std::uint32_t frequency, std::uint32_t total)
{
    m_coded = true;
    const std::uint32_t range = m_high + 1 - m_low;
    m_high = m_low - 1 + range * (below + frequency) / total;
    m_low = m_low + range * below / total;
    while ((m_low & kTop) == (m_high & kTop)) {
        const bool top = (m_low & kTop) != 0;
        bit(top);
        for (; m_underflow > 0; --m_underflow)
            bit(!top);
        m_low = m_low << 1 & 0xffff;
        m_high = (m_high << 1 & 0xffff) | 1;
    }
    while ((m_low & kSecond) != 0 && (m_high & kSecond) == 0) {
        m_high = (m_high & 0x3fff) << 1 | 0x8001;
        m_low = m_low << 1 & 0x7fff;
        ++m_underflow;
    }
}

/// Bytes are filled from their lowest bit.
void U3DSymbols::bit(bool on)
{
    m_byte = static_cast<std::uint8_t>(m_byte | (on ? 1 : 0) << m_numBits);
    if (++m_numBits < 8)
        return;
    m_out.u8(m_byte);
    m_byte = 0;
    m_numBits = 0;
}

void U3DSymbols::finish()
{
    // The zeros push out the bits that the coder still holds back.
    if (m_coded)
        plain(0, 4);
    while (m_numBits > 0)
        bit(false);
}

} // namespace kalmyr::detail
