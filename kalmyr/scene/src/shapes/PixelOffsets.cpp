// Geometry with a size in pixels, as a view shows it. The vertex stage of the renderer does the
// same.
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/shapes/SoGeometry.h>

#include "core/CacheLock.h"

#include <algorithm>
#include <cmath>

namespace {

/// Moves positions along the plane of the screen.
class ScreenMover {
public:
    ScreenMover(const SbMatrix& toEye, const SbMatrix& projection, const SbVec2s& pixels)
        : m_toEye(toEye), m_toObject(toEye.inverse(&m_works)), m_projection(projection)
    {
        for (int axis = 0; axis < 2; ++axis) {
            m_middle[axis] = 0.5 * pixels[axis];
            m_works = m_works && pixels[axis] > 0 && projection[axis][axis] != 0;
        }
    }

    bool works() const { return m_works; }

    /// False for a position that is not in front of the eye.
    bool move(SbVec3f& position, const SbVec2f& offset) const
    {
        const SbVec3f eye = m_toEye.point(position);
        const double w = clip(eye, 3);
        if (!(w > 0))
            return false;
        SbVec3f by(0, 0, 0);
        for (int axis = 0; axis < 2; ++axis) {
            const double at = clip(eye, axis) / w * m_middle[axis] + m_middle[axis];
            // A little more: a place between two pixels is in the same one everywhere.
            const double pixels = std::floor(at + 0.002) - at + offset[axis];
            by[axis] = static_cast<float>(pixels / m_middle[axis] * w / m_projection[axis][axis]);
        }
        position += m_toObject.direction(by);
        return true;
    }

private:
    double clip(const SbVec3f& eye, int column) const
    {
        double sum = m_projection[3][column];
        for (int row = 0; row < 3; ++row)
            sum += static_cast<double>(eye[row]) * m_projection[row][column];
        return sum;
    }

    bool m_works = false;
    SbMatrix m_toEye, m_toObject, m_projection;
    double m_middle[2] = {0, 0};
};

/// Copies the primitives of `size` vertices each that can be seen; `keep(i)` is told the place of
/// each of them.
template <class Keep>
void copySeen(const std::vector<std::uint32_t>& from, std::size_t size,
              const std::vector<char>& seen, std::vector<std::uint32_t>& to, Keep&& keep)
{
    for (std::size_t i = 0; i + size <= from.size(); i += size) {
        const auto first = from.begin() + static_cast<std::ptrdiff_t>(i);
        const auto last = first + static_cast<std::ptrdiff_t>(size);
        if (std::all_of(first, last, [&](std::uint32_t v) { return seen[v] != 0; })) {
            to.insert(to.end(), first, last);
            keep(i / size);
        }
    }
}

} // namespace

float SoGeometry::getPixelReach() const
{
    if (pixelOffsets.empty())
        return 0;
    const kalmyr::detail::CacheLock lock;
    if (m_pixelReach < 0) {
        m_pixelReach = 0;
        for (const SbVec2f& offset : pixelOffsets)
            m_pixelReach = std::max({m_pixelReach, std::abs(offset[0]), std::abs(offset[1])});
    }
    return m_pixelReach;
}

SoRef<SoGeometry> SoGeometry::inView(const SbMatrix& toWorld, const SoView& view,
                                     const SbViewportRegion& region) const
{
    if (!view.valid)
        return nullptr;
    const ScreenMover mover(toWorld * view.viewing, view.projection,
                            region.getViewportSizePixels());
    if (!mover.works())
        return nullptr;
    SoRef<SoGeometry> result(new SoGeometry);
    result->positions = positions;
    result->texCoords = texCoords;
    result->colors = colors;
    result->coverage = coverage;
    result->solid = solid;
    result->twoSided = twoSided;
    std::vector<char> seen(positions.size());
    const SbVec3f* anySeen = nullptr;
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const SbVec2f offset = i < pixelOffsets.size() ? pixelOffsets[i] : SbVec2f();
        seen[i] = mover.move(result->positions[i], offset);
        if (seen[i])
            anySeen = &result->positions[i];
    }
    if (!anySeen)
        result->positions.clear();
    for (std::size_t i = 0; i < result->positions.size(); ++i) {
        if (!seen[i])
            result->positions[i] = *anySeen; // used by nothing, and not to widen the box
    }
    copySeen(triangles, 3, seen, result->triangles, [&](std::size_t i) {
        result->triangleFaces.push_back(i < triangleFaces.size() ? triangleFaces[i]
                                                                 : static_cast<std::int32_t>(i));
    });
    copySeen(lines, 2, seen, result->lines, [&](std::size_t i) {
        result->lineNumbers.push_back(i < lineNumbers.size() ? lineNumbers[i]
                                                             : static_cast<std::int32_t>(i));
    });
    copySeen(points, 1, seen, result->points, [&](std::size_t i) {
        result->pointNumbers.push_back(i < pointNumbers.size() ? pointNumbers[i]
                                                               : static_cast<std::int32_t>(i));
    });
    return result;
}
