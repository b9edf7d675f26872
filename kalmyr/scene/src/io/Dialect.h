#pragma once

#include <kalmyr/core/SoType.h>

#include <span>
#include <string_view>

namespace kalmyr::detail {

/// The differences between the formats of scene text, as far as reading is concerned.
struct Dialect {
    /// A name by which other versions of the language call a field.
    struct FieldAlias {
        std::string_view type; ///< registered
        std::string_view field;
        std::string_view ours;
    };

    std::string_view typePrefix = {};  ///< of registered type names; the text leaves it out
    std::string_view protoPrefix = {}; ///< of prototypes' names, where the text uses them
    std::span<const FieldAlias> aliases = {};
    /// Reads what programs write by habit, and tells it, where other text is faulty.
    bool isLenient = false;
    /// Nodes stand among the fields of a body, as do declarations ("fields [ ]"), and a '~' behind
    /// a value lets the field be ignored. Without it nodes stand in fields only.
    bool bodiesHoldNodes = false;
    /// ENGINE, GLOBAL and KEEP begin statements.
    bool hasEngines = false;
    /// Routes may name fields that are no events, and convert between types.
    bool routesAnyField = false;

    /// The node type that the text calls `name`; bad when there is none.
    SoType findType(std::string_view name) const;
    /// The name under which a prototype is declared that the text calls `name`; empty for names
    /// that are no prototype's.
    std::string_view protoName(std::string_view name) const;
    /// What the text calls `word` in nodes of that type; empty when that is no field's alias.
    std::string_view fieldAlias(SoType type, std::string_view word) const;
    bool isLegalName(std::string_view name) const;
    /// The node's own part of a name: "+" and a number tell nodes of one name apart.
    std::string_view ownName(std::string_view name) const;
};

extern const Dialect kKalmyrDialect;
extern const Dialect kVrml1Dialect;
extern const Dialect kVrml97Dialect;

} // namespace kalmyr::detail
