#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoType.h>

class SoField;

/// How values pass between connected fields of different types.
///
/// The table is filled by initFields(); libraries may add types of their own. Changing it while
/// threads connect fields is not allowed.
class KALMYR_API SoFieldConverter {
public:
    /// Sets the value of `to` from that of `from`, which are of the types that it was registered
    /// for. A value that cannot be converted leaves `to` as it is.
    using Function = void(const SoField& from, SoField& to);

    /// Registers, or replaces, the conversion between two field types.
    static void set(SoType from, SoType to, Function* function);
    /// Asked about pairs of types that are not registered; null where it knows none either.
    using Fallback = Function*(SoType from, SoType to);
    static void setFallback(Fallback* fallback);

    /// The conversion, or null when there is none. Fields of one type need none.
    static Function* find(SoType from, SoType to);
    static bool canConvert(SoType from, SoType to) { return from == to || find(from, to); }
};
