#include "U3DNames.h"

#include <kalmyr/base/SbString.h>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kMaxBytes = 1000;

/// Text that is not UTF-8 came from a Latin-1 file.
std::string cleaned(std::string_view name)
{
    SbString text(name);
    if (!text.isValidUtf8())
        text = SbString::fromLatin1(name);
    std::string result(text.view());
    if (result.size() <= kMaxBytes)
        return result;
    std::size_t end = kMaxBytes;
    while ((static_cast<unsigned char>(result[end]) & 0xc0) == 0x80)
        --end; // not within a character
    result.resize(end);
    return result;
}

} // namespace

std::string U3DNames::makeUnique(std::string_view wanted)
{
    std::string name = cleaned(wanted);
    if (m_taken.insert(name).second)
        return name;
    return number(name, 2);
}

std::string U3DNames::makeNumbered(std::string_view kind)
{
    return number(cleaned(kind), 1);
}

std::string U3DNames::number(const std::string& stem, int first)
{
    int& next = m_next.try_emplace(stem, first).first->second;
    for (;;) {
        std::string name = stem + ' ' + std::to_string(next++);
        if (m_taken.insert(name).second)
            return name;
    }
}

} // namespace kalmyr::detail
