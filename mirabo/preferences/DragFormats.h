#pragma once

/// Formats of a drag out of a panel. The formats have no content: a drag begins at the selected
/// row of its panel, and is of no use outside the window.
namespace mirabo {

inline constexpr char kFieldRowFormat[] = "mirabofielditem";
inline constexpr char kTreeRowFormat[] = "treeviewnodeobject";

} // namespace mirabo
