#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <array>
#include <compare>

namespace kalmyr::detail {

/// The values by which two simple shapes look the same.
struct SharedKey {
    enum Kind { CUBE, SPHERE, CONE, CYLINDER };
    Kind kind = CUBE;
    int parts = 0;
    int segments = 0;
    std::array<std::uint32_t, 3>
        sizes{}; ///< bits of the floats, so that not-a-number has its place
    auto operator<=>(const SharedKey&) const = default;
};

using BuildFunction = void (*)(const SharedKey& key, SoGeometry& geometry);

/// The geometry of that key: the living one, or a new one. It is forgotten with its last user.
SoRef<SoGeometry> sharedGeometry(const SharedKey& key, BuildFunction build);

} // namespace kalmyr::detail
