#include "SoBlocks.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/fields/SoValueText.h>

#include <bit>
#include <cstring>
#include <unordered_map>

namespace kalmyr::detail {

namespace {

static_assert(std::endian::native == std::endian::little,
              "blocks are written as they lie in memory, lowest byte first");

struct Access {
    std::string_view (*get)(const SoField& field);
    bool (*set)(SoField& field, std::string_view bytes);
};

template <class Field>
Access accessTo()
{
    using Value = typename Field::Value;
    static_assert(std::is_trivially_copyable_v<Value>);
    return {[](const SoField& field) {
                const auto values = static_cast<const Field&>(field).values();
                return std::string_view(reinterpret_cast<const char*>(values.data()),
                                        values.size_bytes());
            },
            [](SoField& field, std::string_view bytes) {
                const std::size_t count = bytes.size() / sizeof(Value);
                if (bytes.size() % sizeof(Value) != 0 || count > std::size_t(kMaxListLength))
                    return false;
                auto& target = static_cast<Field&>(field);
                Value* to = target.setNumRaw(static_cast<int>(count));
                if (count > 0)
                    std::memcpy(static_cast<void*>(to), bytes.data(), bytes.size());
                target.finishEditing();
                return true;
            }};
}

/// By type index; made when first asked for, with the types that are registered then.
const std::unordered_map<int, Access>& accesses()
{
    static const std::unordered_map<int, Access> table = {
        {SoMFFloat::getClassTypeId().getIndex(), accessTo<SoMFFloat>()},
        {SoMFDouble::getClassTypeId().getIndex(), accessTo<SoMFDouble>()},
        {SoMFInt32::getClassTypeId().getIndex(), accessTo<SoMFInt32>()},
        {SoMFUInt32::getClassTypeId().getIndex(), accessTo<SoMFUInt32>()},
        {SoMFShort::getClassTypeId().getIndex(), accessTo<SoMFShort>()},
        {SoMFUShort::getClassTypeId().getIndex(), accessTo<SoMFUShort>()},
        {SoMFVec2f::getClassTypeId().getIndex(), accessTo<SoMFVec2f>()},
        {SoMFVec3f::getClassTypeId().getIndex(), accessTo<SoMFVec3f>()},
        {SoMFVec4f::getClassTypeId().getIndex(), accessTo<SoMFVec4f>()},
        {SoMFVec2d::getClassTypeId().getIndex(), accessTo<SoMFVec2d>()},
        {SoMFVec3d::getClassTypeId().getIndex(), accessTo<SoMFVec3d>()},
        {SoMFVec4d::getClassTypeId().getIndex(), accessTo<SoMFVec4d>()},
        {SoMFColor::getClassTypeId().getIndex(), accessTo<SoMFColor>()},
        {SoMFColorRGBA::getClassTypeId().getIndex(), accessTo<SoMFColorRGBA>()},
        {SoMFMatrix::getClassTypeId().getIndex(), accessTo<SoMFMatrix>()},
    };
    return table;
}

std::size_t padded(std::size_t size)
{
    return (size + Chunk::kAlignment - 1) / Chunk::kAlignment * Chunk::kAlignment;
}

template <class Number>
void append(std::string& out, Number value)
{
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    out.append(bytes, sizeof value);
}

template <class Number>
bool take(std::string_view& from, Number& value)
{
    if (from.size() < sizeof value)
        return false;
    std::memcpy(&value, from.data(), sizeof value);
    from.remove_prefix(sizeof value);
    return true;
}

} // namespace

bool getBlock(const SoField& field, std::string_view& bytes)
{
    const auto found = accesses().find(field.getTypeId().getIndex());
    if (found == accesses().end() || static_cast<const SoMField&>(field).getNum() < kMinBlockValues)
        return false;
    bytes = found->second.get(field);
    return true;
}

bool setBlock(SoField& field, std::string_view bytes)
{
    const auto found = accesses().find(field.getTypeId().getIndex());
    return found != accesses().end() && found->second.set(field, bytes);
}

const char* Chunk::read(std::string_view file, std::size_t at)
{
    // Zeros fill up to the alignment.
    while (at < file.size() && (file[at] == 0 || file[at] == '\n' || file[at] == '\r'))
        ++at;
    constexpr const char* kCut = "the file ends early";
    end = file.size(); // where it ends early
    std::string_view rest = file.substr(at);
    std::uint32_t order = 0, version = 0;
    std::uint64_t size = 0, count = 0;
    if (!take(rest, order) || !take(rest, version) || !take(rest, size) || !take(rest, count))
        return kCut;
    const auto faultAt = [&](std::size_t offset, const char* fault) {
        end = at + offset;
        return fault;
    };
    if (order != kByteOrder)
        return faultAt(0, "expected the mark of the byte order");
    if (version != kVersion)
        return faultAt(sizeof order, "expected version 1 of the binary form");
    if (size >= rest.size())
        return kCut;
    text = rest.data();
    textSize = static_cast<std::size_t>(size);
    if (text[textSize] != 0)
        return faultAt(static_cast<std::size_t>(text + textSize - file.data()) - at,
                       "expected a zero behind the text");
    // Relative to the mark, so that a piece may stand anywhere.
    const char* base = file.data() + at;
    const auto skipTo = [&](std::size_t offset) {
        offset = padded(offset);
        if (offset > file.size() - at)
            return false;
        rest = file.substr(at + offset);
        return true;
    };
    if (!skipTo(static_cast<std::size_t>(text - base) + textSize + 1))
        return kCut;
    blocks.clear();
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint64_t bytes = 0;
        if (!take(rest, bytes) || bytes > rest.size())
            return kCut;
        blocks.push_back(rest.substr(0, static_cast<std::size_t>(bytes)));
        const auto blockEnd = static_cast<std::size_t>(rest.data() - base) + bytes;
        if (!skipTo(static_cast<std::size_t>(blockEnd)))
            return kCut;
    }
    end = static_cast<std::size_t>(rest.data() - file.data());
    return nullptr;
}

void Chunk::write(std::string& out, std::size_t offset, std::string_view text,
                  const std::vector<std::string_view>& blocks)
{
    out.assign(padded(offset) - offset, '\0');
    const std::size_t base = out.size();
    const auto pad = [&] { out.resize(base + padded(out.size() - base), '\0'); };
    append(out, kByteOrder);
    append(out, kVersion);
    append(out, static_cast<std::uint64_t>(text.size()));
    append(out, static_cast<std::uint64_t>(blocks.size()));
    out += text;
    out += '\0';
    pad();
    for (const std::string_view block : blocks) {
        append(out, static_cast<std::uint64_t>(block.size()));
        out += block;
        pad();
    }
}

} // namespace kalmyr::detail
