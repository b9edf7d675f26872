#include "mirabo/tree/RankedBits.h"

#include <algorithm>
#include <bit>

namespace mirabo {

int RankedBits::countBefore(int place) const
{
    if (place == m_size)
        return m_count;
    const Word& at = word(place);
    const std::uint64_t lower = (std::uint64_t(1) << (place % kBits)) - 1;
    return at.before + std::popcount(at.bits & lower);
}

/// `before` counts what is looked for in all words before one; `flip` makes it the set bits.
template <class Before>
int RankedBits::select(int n, std::uint64_t flip, Before before) const
{
    std::size_t low = 0;
    for (std::size_t high = m_words.size(); low + 1 < high;) {
        const std::size_t middle = low + (high - low) / 2;
        if (before(middle) <= n)
            low = middle;
        else
            high = middle;
    }
    std::uint64_t bits = m_words[low].bits ^ flip;
    for (int left = n - before(low); left > 0; --left)
        bits &= bits - 1;
    return static_cast<int>(low) * kBits + std::countr_zero(bits);
}

int RankedBits::placeOfSet(int n) const
{
    return select(n, 0, [this](std::size_t at) { return m_words[at].before; });
}

int RankedBits::placeOfClear(int n) const
{
    return select(n, ~std::uint64_t(0), [this](std::size_t at) {
        return static_cast<int>(at) * kBits - m_words[at].before;
    });
}

void RankedBits::append(bool bit)
{
    if (m_size % kBits == 0)
        m_words.push_back({0, m_count});
    m_words.back().bits |= std::uint64_t(bit) << (m_size % kBits);
    ++m_size;
    m_count += bit;
}

void RankedBits::insert(int place, bool bit)
{
    append(false); // room
    auto at = m_words.begin() + place / kBits;
    const std::uint64_t lower = (std::uint64_t(1) << (place % kBits)) - 1;
    std::uint64_t carry = at->bits >> (kBits - 1);
    at->bits =
        (at->bits & lower) | std::uint64_t(bit) << (place % kBits) | (at->bits & ~lower) << 1;
    while (++at != m_words.end()) {
        at->before += static_cast<int>(bit) - static_cast<int>(carry);
        const std::uint64_t next = at->bits >> (kBits - 1);
        at->bits = at->bits << 1 | carry;
        carry = next;
    }
    m_count += bit;
}

void RankedBits::remove(int place)
{
    const bool bit = at(place);
    auto at = m_words.begin() + place / kBits;
    const std::uint64_t lower = (std::uint64_t(1) << (place % kBits)) - 1;
    at->bits = (at->bits & lower) | (at->bits >> 1 & ~lower);
    for (auto next = at + 1; next != m_words.end(); at = next++) {
        const std::uint64_t carry = next->bits & 1;
        at->bits |= carry << (kBits - 1);
        next->before += static_cast<int>(carry) - static_cast<int>(bit);
        next->bits >>= 1;
    }
    m_count -= bit;
    if (--m_size % kBits == 0)
        m_words.pop_back();
}

} // namespace mirabo
