#include "PageMesh.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr double kStep = 1.0 / 256;

} // namespace

PageMesh::Corner PageMesh::corner(const VectorVertex& vertex, PageColor color)
{
    return {static_cast<std::int32_t>(std::lround(vertex.x / kStep)),
            static_cast<std::int32_t>(std::lround(vertex.y / kStep)), color};
}

void PageMesh::addTriangle(const VectorVertex& a, const VectorVertex& b, const VectorVertex& c)
{
    add({corner(a, PageColor::of(a)), corner(b, PageColor::of(b)), corner(c, PageColor::of(c))});
}

void PageMesh::addPolygon(const VectorVertex* corners, std::size_t count)
{
    const PageColor color = PageColor::of(corners[0]);
    for (std::size_t i = 2; i < count; ++i)
        add({corner(corners[0], color), corner(corners[i - 1], color), corner(corners[i], color)});
}

void PageMesh::put(Corner corner, std::uint8_t flag)
{
    corner.flag = flag;
    m_corners.push_back(corner);
}

void PageMesh::putWaiting()
{
    if (m_waiting)
        for (const Corner& one : m_last)
            put(one, 0);
    m_waiting = false;
}

bool PageMesh::continues(const std::array<Corner, 3>& triangle, int first, int second,
                         std::uint8_t flag)
{
    const Corner a = m_last[first], b = m_last[second];
    for (int i = 0; i < 3; ++i) {
        const Corner &one = triangle[i], &next = triangle[(i + 1) % 3];
        if ((one.isAt(a) && next.isAt(b)) || (one.isAt(b) && next.isAt(a))) {
            const Corner& tip = triangle[(i + 2) % 3];
            putWaiting();
            put(tip, flag);
            m_last = {a, b, tip};
            return true;
        }
    }
    return false;
}

void PageMesh::add(const std::array<Corner, 3>& triangle)
{
    const auto& [a, b, c] = triangle;
    if (std::int64_t(b.x - a.x) * (c.y - a.y) == std::int64_t(c.x - a.x) * (b.y - a.y))
        return;
    for (int turn = 0; m_waiting && turn < 3; ++turn) {
        if (continues(triangle, 1, 2, 1))
            return;
        std::rotate(m_last.begin(), m_last.begin() + 1, m_last.end());
    }
    if (m_hasLast && !m_waiting && (continues(triangle, 1, 2, 1) || continues(triangle, 0, 2, 2)))
        return;
    putWaiting();
    m_last = triangle;
    m_hasLast = m_waiting = true;
}

PageMesh::Packed PageMesh::take()
{
    putWaiting();
    Packed packed;
    if (m_corners.empty())
        return packed;
    std::int32_t left = m_corners[0].x, right = left, low = m_corners[0].y, high = low;
    for (const Corner& one : m_corners) {
        left = std::min(left, one.x);
        right = std::max(right, one.x);
        low = std::min(low, one.y);
        high = std::max(high, one.y);
    }
    packed.coordinateBits = std::max(right - left, high - low) <= 0xffff ? 16 : 24;
    const int bytes = packed.coordinateBits / 8;
    const double extent = ((1 << packed.coordinateBits) - 1) * kStep;
    packed.range = {left * kStep, left * kStep + extent, low * kStep, low * kStep + extent};
    packed.bounds = {left * kStep, low * kStep, right * kStep, high * kStep};
    packed.bytes.resize(m_corners.size() * (4 + 2 * bytes));
    char* at = packed.bytes.data();
    const auto put = [&at](int value) { *at++ = static_cast<char>(value); };
    for (const Corner& one : m_corners) {
        put(one.flag);
        for (const std::int32_t value : {one.x - left, one.y - low})
            for (int shift = 8 * bytes - 8; shift >= 0; shift -= 8)
                put(value >> shift);
        put(one.color.red);
        put(one.color.green);
        put(one.color.blue);
    }
    m_corners.clear();
    m_hasLast = false;
    return packed;
}

std::string meshDictionary(const PageMesh::Packed& mesh)
{
    std::string text = "/ShadingType 4 /ColorSpace /DeviceRGB /BitsPerCoordinate ";
    text += std::to_string(mesh.coordinateBits);
    text += " /BitsPerComponent 8 /BitsPerFlag 8\n/Decode [";
    for (const double value : mesh.range) {
        appendNumber(text, value, 8); // exact: steps of 1/256
        text += ' ';
    }
    text += "0 1 0 1 0 1]";
    return text;
}

} // namespace kalmyr::detail
