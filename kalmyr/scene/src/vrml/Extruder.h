#pragma once

#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbVec.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kalmyr::detail {

/// Moves a cross section along a spine, as VRML97 describes it.
class Extruder {
public:
    /// Files of a few megabytes could ask for any number.
    static constexpr std::size_t kMaxPoints = 20'000'000;

    std::span<const SbVec2f> crossSection;
    std::span<const SbVec3f> spine;
    std::span<const SbVec2f> scale; ///< one, or one a spine point; missing ones take the last
    std::span<const SbRotation> orientation; ///< the same
    bool beginCap = true;
    bool endCap = true;

    /// Fills points and faces; false when there is nothing to build.
    bool run();

    std::vector<SbVec3f> points;
    std::vector<std::int32_t> faces; ///< indices of points, counter-clockwise outside, -1 ends each

private:
    struct Axes {
        SbVec3f x, y, z;
    };
    void findAxes();
    void findTangents();
    void findTurns();
    void alignStraight();
    void addFace(std::initializer_list<std::int32_t> corners);
    void addCap(int ring, bool begin);

    std::vector<Axes> m_axes; ///< at each spine point: across, along, and towards the turn
    bool m_closedSpine = false;
    bool m_closedSection = false;
};

} // namespace kalmyr::detail
