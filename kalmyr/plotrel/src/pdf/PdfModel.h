#pragma once

#include <kalmyr/base/SbColor.h>

#include <array>
#include <string>

namespace kalmyr::detail {

/// A model in space that a page holds beside its drawing.
struct PdfModel {
    std::string u3d;  ///< the bytes of a U3D file; empty: no model
    std::string name; ///< of the view; UTF-8

    /// Camera to world: the camera's right, up and back (out of the scene), and its place.
    std::array<double, 12> camera{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    double orbitDistance = 1; ///< from the camera to what it turns around
    bool perspective = true;
    double fieldOfView = 0.785; ///< vertical, radians, of a perspective view
    double height = 2;          ///< of the view of an orthographic one
    SbColor background{1, 1, 1};
};

} // namespace kalmyr::detail
