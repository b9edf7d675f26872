#include "Extruder.h"

#include <algorithm>

namespace kalmyr::detail {

namespace {

constexpr float kTiny = 1e-12f;

bool isNothing(const SbVec3f& v)
{
    return !(v.sqrLength() > kTiny);
}

/// Places without a direction take that of the place before; the first ones that of the first that
/// has one.
template <class Get>
bool fillGaps(std::size_t count, Get get)
{
    std::size_t first = 0;
    while (first < count && isNothing(get(first)))
        ++first;
    if (first == count)
        return false;
    for (std::size_t i = 0; i < first; ++i)
        get(i) = get(first);
    for (std::size_t i = first + 1; i < count; ++i)
        if (isNothing(get(i)))
            get(i) = get(i - 1);
    return true;
}

} // namespace

void Extruder::findTangents()
{
    const std::size_t n = spine.size();
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t before = i > 0 ? i - 1 : (m_closedSpine ? n - 2 : 0);
        const std::size_t after = i + 1 < n ? i + 1 : (m_closedSpine ? 1 : n - 1);
        m_axes[i].y = spine[after] - spine[before];
    }
}

void Extruder::findTurns()
{
    const std::size_t n = spine.size();
    for (std::size_t i = 0; i < n; ++i) {
        const bool end = i == 0 || i + 1 == n;
        if (end && !m_closedSpine)
            continue;
        const std::size_t before = i > 0 ? i - 1 : n - 2;
        const std::size_t after = i + 1 < n ? i + 1 : 1;
        m_axes[i].z = (spine[after] - spine[i]).cross(spine[before] - spine[i]);
    }
}

/// A spine without any turn: the section is turned from the y axis to the spine's direction.
void Extruder::alignStraight()
{
    const SbVec3f along = m_axes[0].y;
    const SbRotation turn(SbVec3f(0, 1, 0), along);
    for (Axes& axes : m_axes)
        axes = {turn.rotated({1, 0, 0}), along, turn.rotated({0, 0, 1})};
}

void Extruder::findAxes()
{
    m_axes.assign(spine.size(), {});
    findTangents();
    if (!fillGaps(m_axes.size(), [this](std::size_t i) -> SbVec3f& { return m_axes[i].y; })) {
        for (Axes& axes : m_axes)
            axes = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        return;
    }
    for (Axes& axes : m_axes)
        axes.y.normalize();
    findTurns();
    if (!fillGaps(m_axes.size(), [this](std::size_t i) -> SbVec3f& { return m_axes[i].z; })) {
        alignStraight();
        return;
    }
    for (std::size_t i = 0; i < m_axes.size(); ++i) {
        Axes& axes = m_axes[i];
        if (i > 0 && axes.z.dot(m_axes[i - 1].z) < 0)
            axes.z = -axes.z;
        axes.z.normalize();
        axes.x = axes.y.cross(axes.z);
    }
}

void Extruder::addFace(std::initializer_list<std::int32_t> corners)
{
    faces.insert(faces.end(), corners);
    faces.push_back(-1);
}

void Extruder::addCap(int ring, bool begin)
{
    const int m = static_cast<int>(crossSection.size());
    const int corners = m_closedSection ? m - 1 : m;
    if (corners < 3)
        return;
    for (int k = 0; k < corners; ++k)
        faces.push_back(ring * m + (begin ? corners - 1 - k : k));
    faces.push_back(-1);
}

bool Extruder::run()
{
    const int n = static_cast<int>(spine.size());
    const int m = static_cast<int>(crossSection.size());
    if (n < 2 || m < 2)
        return false;
    const std::size_t count = spine.size() * crossSection.size();
    points.reserve(count);
    faces.reserve(5 * count);
    m_closedSpine = n > 2 && spine.front() == spine.back();
    m_closedSection = m > 2 && crossSection.front() == crossSection.back();
    findAxes();
    const auto entry = [](const auto& list, int i, auto none) {
        return list.empty() ? none : list[std::min(static_cast<std::size_t>(i), list.size() - 1)];
    };
    for (int i = 0; i < n; ++i) {
        const SbVec2f size = entry(scale, i, SbVec2f(1, 1));
        const SbRotation turn = entry(orientation, i, SbRotation());
        const Axes& axes = m_axes[static_cast<std::size_t>(i)];
        for (const SbVec2f& at : crossSection) {
            const SbVec3f p = turn.rotated({at[0] * size[0], 0, at[1] * size[1]});
            points.push_back(spine[static_cast<std::size_t>(i)] + axes.x * p[0] + axes.y * p[1]
                             + axes.z * p[2]);
        }
    }
    const bool sameEnds =
        m_closedSpine && std::equal(points.begin(), points.begin() + m, points.end() - m);
    // The seam of a closed section or spine uses the first points again, so that it can be smooth.
    const auto corner = [&](int i, int k) {
        const int row = sameEnds && i == n - 1 ? 0 : i;
        return row * m + (m_closedSection && k == m - 1 ? 0 : k);
    };
    for (int i = 0; i + 1 < n; ++i)
        for (int k = 0; k + 1 < m; ++k)
            addFace({corner(i, k), corner(i, k + 1), corner(i + 1, k + 1), corner(i + 1, k)});
    if (beginCap && !m_closedSpine)
        addCap(0, true);
    if (endCap && !m_closedSpine)
        addCap(n - 1, false);
    return true;
}

} // namespace kalmyr::detail
