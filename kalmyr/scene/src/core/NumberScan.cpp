#include "NumberScan.h"

#include "TextClasses.h"

#include <kalmyr/base/SbNumber.h>

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstring>
#include <limits>
#include <type_traits>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#if defined(__GNUC__)
#define KALMYR_INLINED [[gnu::always_inline]] inline
#else
#define KALMYR_INLINED inline
#endif

namespace kalmyr::detail {

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Digits behind "0x". A number without a sign may use all bits of its type.
template <class T>
const char* scanHex(const char* p, bool negative, T& value)
{
    constexpr std::size_t kDigits = 2 * sizeof(T);
    std::uint64_t sum = 0;
    const char* first = p;
    while (*p == '0') {
        ++p;
    }
    const char* significant = p;
    for (int digit; (digit = hexDigit(*p)) >= 0; ++p) {
        sum = sum << 4 | static_cast<unsigned>(digit);
    }
    if (p == first || static_cast<std::size_t>(p - significant) > kDigits) {
        return nullptr;
    }
    if (negative && sum > std::uint64_t(std::numeric_limits<T>::max()) + 1) {
        return nullptr;
    }
    value = static_cast<T>(negative ? ~sum + 1 : sum);
    return p;
}

template <std::integral T>
inline const char* scanOne(const char* p, const char*, T& value)
{
    const bool negative = *p == '-';
    if (negative || *p == '+') {
        ++p;
    }
    unsigned digit = static_cast<unsigned char>(*p) - unsigned('0');
    if (digit > 9 || (negative && std::is_unsigned_v<T>)) {
        return nullptr;
    }
    if (digit == 0 && (p[1] | 0x20) == 'x') {
        return scanHex(p + 2, negative, value);
    }
    constexpr std::uint64_t kMax = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    const std::uint64_t limit = kMax + (negative ? 1 : 0);
    std::uint64_t sum = 0;
    do {
        sum = sum * 10 + digit;
        if (sum > limit) {
            return nullptr;
        }
        digit = static_cast<unsigned char>(*++p) - unsigned('0');
    } while (digit <= 9);
    if (*p == '.') {
        // "2.0" is a whole number, too.
        if (*++p != '0') {
            return nullptr;
        }
        while (*p == '0') {
            ++p;
        }
        if (*p == '.' || is(*p, kWordRest)) {
            return nullptr;
        }
    }
    value = static_cast<T>(negative ? ~sum + 1 : sum);
    return p;
}

/// The rest of a number that is none, from its '#' on. Null when it is something else.
template <std::floating_point T>
const char* scanOddNumber(const char* first, const char* p, T& value)
{
    using Limits = std::numeric_limits<T>;
    const std::string_view kinds[] = {"#INF", "#IND", "#QNAN", "#SNAN"};
    for (const std::string_view kind : kinds) {
        std::size_t n = 0;
        while (n < kind.size() && p[n] == kind[n]) {
            ++n;
        }
        if (n < kind.size()) {
            continue;
        }
        value = kind != "#INF"  ? Limits::quiet_NaN()
                : *first == '-' ? -Limits::infinity()
                                : Limits::infinity();
        p += n;
        while (*p >= '0' && *p <= '9') {
            ++p;
        }
        return p;
    }
    return p; // a remark that touches a number
}

/// Numbers of any form, by the standard library.
template <std::floating_point T>
const char* scanAny(const char* p, const char* end, T& value)
{
    SbNumber::Result result;
    if constexpr (std::is_same_v<T, float>) {
        result = SbNumber::parseFloat(p, end, value);
    } else {
        result = SbNumber::parseDouble(p, end, value);
    }
    // Some programs write infinities and no numbers as "1.#INF" and "-1.#IND".
    if (result && *result.end == '#' && result.end[-1] == '.') {
        return scanOddNumber(p, result.end, value);
    }
    // "nan" and "inf" are numbers, "infrared" is a name.
    if (!result || (is(*p, kIdentStart) && is(*result.end, kWordRest))) {
        return nullptr;
    }
    return result.end;
}

// ---- Exact conversion without a search for the nearest number: whole numbers below 2^53 and powers
// of ten up to 10^22 are doubles, so that one division of the two rounds once, to the nearest
// double (W. D. Clinger, "How to read floating point numbers accurately", 1990). The double rounds
// on to the nearest float unless it lies half-way between two: then the digits behind it decide.

constexpr std::uint64_t kExactLimit = std::uint64_t(1) << 53;
constexpr int kMaxPower = 22;
constexpr double kPowers[kMaxPower + 1] = {1,    1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                           1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                           1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// The number `exact` with its sign; false when that takes more care.
template <std::floating_point T>
KALMYR_INLINED bool rounded(bool negative, double exact, T& value)
{
    const auto bits = std::bit_cast<std::uint64_t>(exact) | std::uint64_t(negative) << 63;
    value = static_cast<T>(std::bit_cast<double>(bits));
    // Bits of a double that a float has not, and the first of them alone.
    constexpr std::uint64_t kRest = (std::uint64_t(1) << 29) - 1, kHalf = std::uint64_t(1) << 28;
    return !std::is_same_v<T, float> || (bits & kRest) != kHalf;
}

/// The same of digits * 10^power, within kMaxPower.
template <std::floating_point T>
inline bool toFloating(bool negative, std::uint64_t digits, int power, T& value)
{
    const auto whole = static_cast<double>(static_cast<std::int64_t>(digits));
    const double exact = power < 0 ? whole / kPowers[-power] : whole * kPowers[power];
    // Beyond the normal floats other bits count.
    constexpr double kLeast = std::numeric_limits<float>::min(), kMost = 1e38;
    const bool isNormal = std::is_same_v<T, double> || digits == 0
                          || (exact >= kLeast && exact <= kMost);
    return digits < kExactLimit && isNormal && rounded(negative, exact, value);
}

/// Takes digits, up to the first other character.
inline std::uint64_t takeDigits(const char*& p, std::uint64_t sum)
{
    for (unsigned digit; (digit = static_cast<unsigned char>(*p) - unsigned('0')) <= 9; ++p) {
        sum = sum * 10 + digit;
    }
    return sum;
}

/// Behind the digits: the power of ten that "e-5" stands for. False when there is no such thing.
inline bool takeExponent(const char*& p, std::int64_t& power)
{
    const char* at = p + 1;
    const bool negative = *at == '-';
    at += negative || *at == '+';
    const char* const first = at;
    const auto size = static_cast<std::int64_t>(takeDigits(at, 0));
    power += negative ? -size : size;
    p = at;
    return at != first && at - first <= 3;
}

template <std::floating_point T>
inline const char* scanOne(const char* p, const char* end, T& value)
{
    const char* at = p;
    const bool negative = *at == '-';
    at += negative;
    const char* const first = at;
    std::uint64_t digits = takeDigits(at, 0);
    std::int64_t count = at - first, power = 0;
    if (*at == '.') {
        const char* const fraction = ++at;
        digits = takeDigits(at, digits);
        power = fraction - at;
        count -= power;
    }
    bool isPlain = count > 0 && count <= 19 && *at != '#'; // 19 digits fit 64 bits
    if (isPlain && (*at | 0x20) == 'e') {
        isPlain = takeExponent(at, power);
    }
    isPlain = isPlain && power >= -kMaxPower && power <= kMaxPower;
    return isPlain && toFloating(negative, digits, static_cast<int>(power), value)
               ? at
               : scanAny(p, end, value);
}

#if defined(__SSE2__)

// ---- Runs of numbers. The characters of 64 bytes are classified at once, one bit each, which gives
// the places of all numbers in them; each is then converted without a branch on its length. Numbers
// of any other form than [-]digits[.digits] are left to scanOne().

constexpr unsigned kBlock = 64;
/// As many digits before the point, and in one step behind it.
constexpr std::uint64_t kStep = 8;
/// As many digits behind the point.
constexpr std::uint64_t kMaxFraction = 16;
/// Numbers are loaded that far beyond the block.
constexpr std::uint64_t kReach = kMaxFraction + 2;
constexpr std::uint64_t kWholePowers[kStep + 1] = {
    1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000};

/// A bit for each byte of a block.
struct BlockClasses {
    std::uint64_t separators, digits, points, minuses;
};

KALMYR_INLINED void addClasses(const char* p, unsigned i, BlockClasses& all)
{
    const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    const auto between = [&](char first, char last) {
        const __m128i from = _mm_sub_epi8(c, _mm_set1_epi8(first));
        return _mm_cmpeq_epi8(_mm_min_epu8(from, _mm_set1_epi8(static_cast<char>(last - first))),
                              from);
    };
    const auto add = [&](std::uint64_t& bits, __m128i hits) {
        bits |= std::uint64_t(static_cast<unsigned>(_mm_movemask_epi8(hits))) << i;
    };
    add(all.separators,
        _mm_or_si128(between('\t', '\r'), _mm_or_si128(_mm_cmpeq_epi8(c, _mm_set1_epi8(' ')),
                                                       _mm_cmpeq_epi8(c, _mm_set1_epi8(',')))));
    add(all.digits, between('0', '9'));
    add(all.points, _mm_cmpeq_epi8(c, _mm_set1_epi8('.')));
    add(all.minuses, _mm_cmpeq_epi8(c, _mm_set1_epi8('-')));
}

KALMYR_INLINED BlockClasses classify(const char* p)
{
    BlockClasses all{};
    addClasses(p, 0, all);
    addClasses(p, 16, all);
    addClasses(p, 32, all);
    addClasses(p, 48, all);
    return all;
}

KALMYR_INLINED std::uint64_t load(const char* p)
{
    std::uint64_t bytes;
    std::memcpy(&bytes, p, sizeof bytes);
    return bytes;
}

/// The first `count` of eight characters as digits, behind as many zeros as are missing.
KALMYR_INLINED std::uint64_t digitsAt(const char* p, std::uint64_t count)
{
    constexpr std::uint64_t kZeros = 0x3030303030303030;
    const std::uint64_t half = (kStep - count) * 4; // a shift by all 64 bits at once is none
    return (load(p) ^ kZeros) << half << half;
}

/// Two numbers of eight digits each, the first digit in the lowest byte. Neighbours are put
/// together three times: to two, four and eight digits.
KALMYR_INLINED std::uint64_t toNumbers(std::uint64_t first, std::uint64_t second)
{
    const __m128i digits =
        _mm_set_epi64x(static_cast<std::int64_t>(second), static_cast<std::int64_t>(first));
    const __m128i twos = _mm_add_epi16(
        _mm_mullo_epi16(_mm_and_si128(digits, _mm_set1_epi16(0xff)), _mm_set1_epi16(10)),
        _mm_srli_epi16(digits, 8));
    const __m128i fours = _mm_madd_epi16(twos, _mm_set1_epi32(1 << 16 | 100));
    const __m128i eights =
        _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10'000));
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
}

/// A number inside a block, as the bits tell.
struct Shape {
    const char* first; ///< of its digits
    bool negative;
    std::uint64_t whole;    ///< digits before the point
    std::uint64_t fraction; ///< and behind it
    bool hasPoint;
};

template <std::integral T>
KALMYR_INLINED bool convert(const Shape& shape, T& value)
{
    if (shape.hasPoint || shape.whole - 1 >= kStep || (shape.negative && std::is_unsigned_v<T>)) {
        return false;
    }
    const auto number = static_cast<std::int32_t>(toNumbers(digitsAt(shape.first, shape.whole), 0));
    const std::int32_t sign = -std::int32_t(shape.negative);
    const std::int32_t result = (number ^ sign) - sign;
    value = static_cast<T>(result);
    return static_cast<std::int32_t>(value) == result;
}

template <std::floating_point T>
KALMYR_INLINED bool convert(const Shape& shape, T& value)
{
    if (shape.whole > kStep || shape.fraction > kMaxFraction || shape.whole + shape.fraction == 0) {
        return false;
    }
    const char* const fraction = shape.first + shape.whole + 1;
    const std::uint64_t near = std::min(shape.fraction, kStep);
    const std::uint64_t both =
        toNumbers(digitsAt(shape.first, shape.whole), digitsAt(fraction, near));
    std::uint64_t digits = (both & 0xffffffff) * kWholePowers[near] + (both >> 32);
    if (shape.fraction > kStep) {
        const std::uint64_t far = shape.fraction - kStep;
        if (digits >= kExactLimit / kWholePowers[kStep]) {
            return false;
        }
        digits = digits * kWholePowers[far] + toNumbers(digitsAt(fraction + kStep, far), 0);
    } else if (digits >= kExactLimit) {
        return false;
    }
    return rounded(shape.negative,
                   static_cast<double>(static_cast<std::int64_t>(digits))
                       / kPowers[shape.fraction],
                   value);
}

/// Of bits that are not all 0.
KALMYR_INLINED std::uint64_t lowest(std::uint64_t bits)
{
#if defined(__GNUC__)
    return static_cast<std::uint64_t>(__builtin_ctzll(bits));
#else
    return static_cast<std::uint64_t>(std::countr_zero(bits));
#endif
}

/// As scanNumbers(), as long as whole blocks lie in front of the end; stops early at what it does
/// not know.
template <class T>
std::size_t scanBlocks(const char*& at, const char* end, T* const first, std::size_t max)
{
    const char* p = at;
    const char* behind = at;
    T* to = first;
    T* const last = first + max;
    while (end - p >= std::ptrdiff_t(kBlock + kReach)) {
        const BlockClasses block = classify(p);
        const std::uint64_t filled = ~block.separators;
        std::uint64_t starts = filled & ~(filled << 1);
        std::uint64_t ends = block.separators & (filled << 1);
        const std::uint64_t odd =
            filled & ~(block.digits | block.points | (block.minuses & starts));
        for (; ends != 0 && to != last; starts &= starts - 1, ends &= ends - 1) {
            const std::uint64_t start = lowest(starts), stop = lowest(ends);
            const std::uint64_t inside = (std::uint64_t(1) << stop) - (std::uint64_t(1) << start);
            const std::uint64_t points = block.points & inside;
            const std::uint64_t negative = block.minuses >> start & 1;
            const std::uint64_t point = lowest(points | std::uint64_t(1) << stop);
            const std::uint64_t hasPoint = points != 0;
            const Shape shape{p + start + negative, negative != 0, point - start - negative,
                              stop - point - hasPoint, hasPoint != 0};
            const bool isOdd = ((odd & inside) | (points & (points - 1))) != 0;
            if ((isOdd || !convert(shape, *to)) && scanOne(p + start, end, *to) != p + stop) {
                at = behind;
                return static_cast<std::size_t>(to - first);
            }
            ++to;
            behind = p + stop;
        }
        if (to == last || (starts & 1) != 0) {
            break; // all, or longer than a block
        }
        p += starts ? lowest(starts) : kBlock;
    }
    at = behind;
    return static_cast<std::size_t>(to - first);
}

#endif

template <class T>
std::size_t scanPart(const char*& at, const char* end, T* to, std::size_t max)
{
#if defined(__SSE2__)
    return scanBlocks(at, end, to, max);
#else
    return 0;
#endif
}

} // namespace

template <class T>
const char* scanNumber(const char* p, const char* end, T& value)
{
    return scanOne(p, end, value);
}

template <class T>
std::size_t scanNumbers(const char*& at, const char* end, T* to, std::size_t max)
{
    std::size_t count = 0;
    for (;;) {
        count += scanPart(at, end, to + count, max - count);
        if (count == max) {
            return count;
        }
        at = skipSeparators(at, end);
        const char* const next = scanOne(at, end, to[count]);
        if (!next) {
            return count;
        }
        at = next;
        ++count;
    }
}

#define KALMYR_NUMBERS(T)                                                                          \
    template const char* scanNumber(const char*, const char*, T&);                                 \
    template std::size_t scanNumbers(const char*&, const char*, T*, std::size_t);
KALMYR_NUMBERS(float)
KALMYR_NUMBERS(double)
KALMYR_NUMBERS(std::int32_t)
KALMYR_NUMBERS(std::uint32_t)
KALMYR_NUMBERS(std::int16_t)
KALMYR_NUMBERS(std::uint16_t)
#undef KALMYR_NUMBERS

} // namespace kalmyr::detail
