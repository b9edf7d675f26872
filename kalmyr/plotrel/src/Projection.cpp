#include "Projection.h"

namespace kalmyr::detail {

Projection::Projection(const SoSceneView::Camera& camera, const DrawingArea& area)
{
    const SbMatrix& matrix = camera.view.projection;
    for (int i = 0; i < 16; ++i)
        m_matrix[static_cast<std::size_t>(i)] = matrix[i / 4][i % 4];
    m_parallel = matrix[2][3] == 0;
    const SbVec2s& window = camera.region.getWindowSize();
    const SbVec2s& origin = camera.region.getViewportOriginPixels();
    const SbVec2s& size = camera.region.getViewportSizePixels();
    m_left = area.x + area.width * origin[0] / window[0];
    m_bottom = area.y + area.height * origin[1] / window[1];
    m_width = area.width * size[0] / window[0];
    m_height = area.height * size[1] / window[1];
}

ClipPoint Projection::toClip(const SbVec3f& eye) const
{
    double out[4];
    for (std::size_t c = 0; c < 4; ++c)
        out[c] = eye[0] * m_matrix[c] + eye[1] * m_matrix[4 + c] + eye[2] * m_matrix[8 + c]
                 + m_matrix[12 + c];
    return {out[0], out[1], out[2], out[3]};
}

Corner Projection::toPage(const ClipPoint& clip) const
{
    const double inverse = 1 / clip.w;
    return {m_left + (clip.x * inverse + 1) * 0.5 * m_width,
            m_bottom + (clip.y * inverse + 1) * 0.5 * m_height,
            m_parallel ? -clip.z * inverse : inverse,
            {}};
}

SbVec3f Projection::onPage(double right, double up, double w) const
{
    return {static_cast<float>(2 * right / m_width * w / m_matrix[0]),
            static_cast<float>(2 * up / m_height * w / m_matrix[5]), 0};
}

} // namespace kalmyr::detail
