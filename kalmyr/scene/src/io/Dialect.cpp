#include "Dialect.h"

#include <kalmyr/base/SbName.h>

#include <algorithm>
#include <array>
#include <string>

namespace kalmyr::detail {

namespace {

constexpr std::array kVrml97Aliases{
    Dialect::FieldAlias{"VRMLLOD", "children", "level"},
    Dialect::FieldAlias{"VRMLSwitch", "children", "choice"},
    Dialect::FieldAlias{"VRMLInline", "name", "url"},
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

// Prototypes are called "proto:Name" where types of all families have one space of names.
const Dialect kKalmyrDialect{
    .protoPrefix = "proto:", .bodiesHoldNodes = true, .hasEngines = true, .routesAnyField = true};
const Dialect kVrml1Dialect{
    .protoPrefix = "proto:", .isLenient = true, .bodiesHoldNodes = true, .routesAnyField = true};
const Dialect kVrml97Dialect{.typePrefix = "VRML", .aliases = kVrml97Aliases, .isLenient = true};

SoType Dialect::findType(std::string_view name) const
{
    const SbName known = SbName::find(std::string(typePrefix).append(name));
    const bool isInstance = known == "VRMLProtoInstance"; // they are called as their prototype is
    return known.isEmpty() || isInstance ? SoType() : SoType::fromName(known);
}

std::string_view Dialect::protoName(std::string_view name) const
{
    return name.starts_with(protoPrefix) ? name.substr(protoPrefix.size()) : std::string_view();
}

std::string_view Dialect::fieldAlias(SoType type, std::string_view word) const
{
    for (const FieldAlias& alias : aliases)
        if (alias.field == word && type.getName() == alias.type)
            return alias.ours;
    return {};
}

bool Dialect::isLegalName(std::string_view name) const
{
    // Programs write names that begin with digits or signs, and plain numbers.
    return !name.empty() && (isLenient || !isDigit(name[0]));
}

std::string_view Dialect::ownName(std::string_view name) const
{
    const std::size_t plus = bodiesHoldNodes ? name.rfind('+') : name.npos;
    if (plus == name.npos)
        return name;
    const std::string_view number = name.substr(plus + 1);
    const bool isNumber = !number.empty() && std::all_of(number.begin(), number.end(), isDigit);
    return isNumber ? name.substr(0, plus) : name;
}

} // namespace kalmyr::detail
