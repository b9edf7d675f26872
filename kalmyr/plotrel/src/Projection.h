#pragma once

#include "Facets.h"

#include <kalmyr/base/SbVec.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <array>

namespace kalmyr::detail {

/// The rectangle of the drawing on the page, in millimetres.
struct DrawingArea {
    double x = 0;
    double y = 0;
    double width = 1;
    double height = 1;
};

/// Homogeneous coordinates of a camera's view: inside where -w <= x, y, z <= w.
struct ClipPoint {
    double x, y, z, w;
};

/// From the space of the eye of one camera to the page.
class Projection {
public:
    /// `area` shows the whole window of the camera's viewport region.
    Projection(const SoSceneView::Camera& camera, const DrawingArea& area);

    bool isParallel() const { return m_parallel; }
    ClipPoint toClip(const SbVec3f& eye) const;
    /// Place and nearness; the point is in front of the eye.
    Corner toPage(const ClipPoint& clip) const;
    /// How far away in the space of the eye something is that lies so many millimetres right and
    /// up on the page, at the depth of a point with that `w`.
    SbVec3f onPage(double right, double up, double w) const;

private:
    std::array<double, 16> m_matrix;
    double m_left, m_bottom, m_width, m_height;
    bool m_parallel;
};

} // namespace kalmyr::detail
