#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/rendering/SoRenderAppearance.h>

#include <cstdint>
#include <map>
#include <utility>

namespace kalmyr::detail {

/// Changes a look to what a draw style shows of it.
void restyle(SoRenderAppearance& look, SoGLRenderAction::DrawStyle style);

/// The look of faces that hide what is behind them and are not seen themselves.
SoRef<const SoRenderAppearance> hidingAppearance();

/// The geometries that draw styles show in place of those of the scene: boxes, and surfaces with
/// one normal a face. Each is made once, and kept as long as somebody else holds it.
class StyledGeometries {
public:
    /// The geometry itself where the style shows it as it is. The box takes the first of the
    /// geometry's own colours.
    SoRef<SoGeometry> find(const SoRef<SoGeometry>& geometry, SoGLRenderAction::DrawStyle style);

    /// Drops what nobody else holds.
    void sweep();
    std::size_t size() const { return m_made.size(); }

private:
    using Key = std::pair<std::uint64_t, int>;
    std::map<Key, SoRef<SoGeometry>> m_made;
};

} // namespace kalmyr::detail
