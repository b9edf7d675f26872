#include <kalmyr/core/SoFieldConverter.h>

#include <cstdint>
#include <unordered_map>

namespace {

std::uint32_t keyOf(SoType from, SoType to)
{
    return static_cast<std::uint32_t>(from.getIndex()) << 16
           | static_cast<std::uint32_t>(to.getIndex());
}

std::unordered_map<std::uint32_t, SoFieldConverter::Function*>& table()
{
    static auto* t = new std::unordered_map<std::uint32_t, SoFieldConverter::Function*>;
    return *t;
}

SoFieldConverter::Fallback* s_fallback = nullptr;

} // namespace

void SoFieldConverter::set(SoType from, SoType to, Function* function)
{
    table()[keyOf(from, to)] = function;
}

void SoFieldConverter::setFallback(Fallback* fallback)
{
    s_fallback = fallback;
}

SoFieldConverter::Function* SoFieldConverter::find(SoType from, SoType to)
{
    if (const auto at = table().find(keyOf(from, to)); at != table().end())
        return at->second;
    return s_fallback ? s_fallback(from, to) : nullptr;
}
