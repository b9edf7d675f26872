#include "ByteWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kalmyr::detail {

void ByteWriter::number(double value, int decimals)
{
    std::array<char, 64> text;
    if (!std::isfinite(value) || std::abs(value) > 1e15)
        value = 0;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::fixed, decimals);
    std::string_view digits(text.data(), static_cast<std::size_t>(end.ptr - text.data()));
    if (decimals > 0) {
        digits.remove_suffix(digits.size() - 1 - digits.find_last_not_of('0'));
        if (digits.back() == '.')
            digits.remove_suffix(1);
    }
    write(digits == "-0" ? std::string_view("0") : digits);
}

void ByteWriter::integer(long long value)
{
    std::array<char, 24> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    write({text.data(), static_cast<std::size_t>(end.ptr - text.data())});
}

bool ByteWriter::flush()
{
    if (!m_file)
        return true;
    if (!m_buffer.empty() && !m_failed)
        m_failed = std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file) != m_buffer.size();
    m_buffer.clear();
    return !m_failed;
}

} // namespace kalmyr::detail
