#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>

#include <cstdint>
#include <vector>

/// Run-time type of nodes, fields, engines, actions and details.
///
/// A type is a 16-bit index into a process-wide registry, so it is copied and compared like an
/// integer and can index method tables. Registered names carry no "So" prefix ("Separator").
/// The registry is filled by the explicit `initClass()` lists of the libraries; it is not
/// thread-safe while types are being registered.
class KALMYR_API SoType {
public:
    /// Makes a default instance; null for abstract types.
    using Creator = void* (*)();

    constexpr SoType() = default;

    /// The type that stands for "none"; every other type compares unequal to it.
    static constexpr SoType badType() { return {}; }

    /// Registers a type below `parent` (badType() for a root). A name that is registered already
    /// gives that type back, with a debug error when the parent differs.
    static SoType createType(SoType parent, const SbName& name, Creator creator = nullptr);

    /// Type of that registered name, with or without the "So" prefix; badType() when unknown.
    static SoType fromName(const SbName& name);

    /// Unregisters a type that an optional module had registered. It gets its index back when it is
    /// registered again below the same parent; no other type does.
    static void removeType(SoType type);

    /// All types derived from `type`, itself included, in order of registration.
    static std::vector<SoType> getAllDerivedFrom(SoType type);

    /// Number of indices in use; all indices are below this. Sizes method tables.
    static int getNumTypes();

    SbName getName() const;
    SoType getParent() const;
    bool isBad() const { return m_index == 0; }

    /// True for the type itself and everything below `ancestor`. Constant time.
    bool isDerivedFrom(SoType ancestor) const;

    bool canCreateInstance() const;

    /// A new default instance (reference count 0), or null for an abstract type.
    /// The pointer is that of the registered class; cast it from `void *` to the family's base
    /// (SoNode, SoField, ...) with the family's own factory where there is one.
    void* createInstance() const;

    /// Index in the registry, 0 for badType(); dense, so tables can be indexed by it.
    int getIndex() const { return m_index; }

    friend constexpr bool operator==(SoType a, SoType b) { return a.m_index == b.m_index; }
    friend constexpr bool operator!=(SoType a, SoType b) { return a.m_index != b.m_index; }
    friend constexpr bool operator<(SoType a, SoType b) { return a.m_index < b.m_index; }

private:
    explicit constexpr SoType(std::uint16_t index) : m_index(index) {}

    std::uint16_t m_index = 0;
};
