#include "U3DMeshLayout.h"

#include "U3DSymbols.h"

#include <bit>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr std::uint32_t kNone = 0xffffffff;

std::uint64_t mixed(std::uint64_t hash, std::uint32_t bits)
{
    hash = (hash ^ bits) * 0x9E3779B97F4A7C15ull;
    return hash ^ hash >> 29;
}

std::uint64_t hashOf(std::uint32_t value)
{
    return mixed(0, value);
}

template <int N>
std::uint64_t hashOf(const SbVec<float, N>& value)
{
    std::uint64_t hash = 0;
    for (int i = 0; i < N; ++i)
        hash = mixed(hash, std::bit_cast<std::uint32_t>(value[i] + 0.0f)); // both zeros are one
    return hash;
}

/// Puts the values of `count` vertices into a list, each once. `valueOf` returns false for a vertex
/// that has none; it gets the number 0.
template <class Value, class ValueOf>
std::vector<std::uint32_t> collectOnce(std::size_t count, std::vector<Value>& list,
                                       ValueOf&& valueOf)
{
    const std::size_t size = std::bit_ceil(2 * count + 1);
    std::vector<std::uint32_t> table(size, kNone);
    std::vector<std::uint32_t> indices(count, 0);
    list.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        Value value{};
        if (!valueOf(i, value))
            continue;
        std::size_t slot = hashOf(value) & (size - 1);
        while (table[slot] != kNone && !(list[table[slot]] == value))
            slot = (slot + 1) & (size - 1);
        if (table[slot] == kNone) {
            table[slot] = static_cast<std::uint32_t>(list.size());
            list.push_back(value);
        }
        indices[i] = table[slot];
    }
    return indices;
}

bool isFinite(const SbVec3f& v)
{
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

template <class Value>
void avoidTrap(std::vector<Value>& list)
{
    if (list.size() == U3DSymbols::kMaxRange)
        list.push_back(Value(list.back()));
}

} // namespace

U3DMeshLayout::U3DMeshLayout(const U3DMesh& mesh, bool compressed)
{
    const SoGeometry& geometry = *mesh.geometry;
    const std::size_t count = geometry.positions.size();
    m_positions = collectOnce(count, positions, [&](std::size_t i, SbVec3f& p) {
        p = geometry.positions[i];
        return hasPlace(p);
    });
    if (!geometry.normals.empty()) {
        m_normals = collectOnce(count, normals, [&](std::size_t i, SbVec3f& n) {
            n = isFinite(geometry.normals[i]) ? geometry.normals[i] : SbVec3f(0, 0, 1);
            return true;
        });
    }
    if (!geometry.colors.empty()) {
        m_colors = collectOnce(count, colors, [&](std::size_t i, std::uint32_t& color) {
            color = geometry.colors[i];
            return true;
        });
    }
    if (mesh.textured) {
        // The transformation of the coordinates is not left to readers, which differ in it.
        const bool transforms = !mesh.textureMatrix.isIdentity();
        m_texCoords = collectOnce(count, texCoords, [&](std::size_t i, SbVec2f& t) {
            SbVec3f moved(geometry.texCoords[i][0], geometry.texCoords[i][1], 0);
            if (transforms)
                moved = mesh.textureMatrix.point(moved);
            t = isFinite(moved) ? SbVec2f(moved[0], moved[1]) : SbVec2f(0, 0);
            return true;
        });
    }
    if (compressed) {
        avoidTrap(positions);
        avoidTrap(normals);
        avoidTrap(texCoords);
        avoidTrap(colors);
    }
}

std::size_t U3DMeshLayout::getNumBytes(std::size_t numFaces) const
{
    const std::size_t arrays =
        12 * positions.size() + 12 * normals.size() + 16 * colors.size() + 16 * texCoords.size();
    const std::size_t indices =
        1 + (normals.empty() ? 0 : 1) + (colors.empty() ? 0 : 1) + (texCoords.empty() ? 0 : 1);
    return arrays + numFaces * (4 + 12 * indices);
}

} // namespace kalmyr::detail
