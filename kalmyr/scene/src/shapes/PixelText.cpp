#include "PixelText.h"

#include "Glyphs.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Empty pixels around a row, and more between the rows of the picture: where it is drawn in
/// another size, as in vector pictures, a pixel takes from its neighbours.
constexpr int kMargin = 1;
constexpr int kGap = 2;

} // namespace

bool PixelText::add(const PlacedGlyph& placed, float size)
{
    // Letters may stand between pixels along the line, but lines on whole ones.
    const float whole = std::floor(placed.origin[0]);
    Coverage drawn = placed.shaped.font->paint(placed.shaped, size, placed.origin[0] - whole);
    if (drawn.values.empty())
        return true;
    const int left = static_cast<int>(whole) + drawn.left;
    const int bottom = static_cast<int>(std::lround(placed.origin[1])) + drawn.bottom;
    const int right = left + drawn.width, top = bottom + drawn.height;
    m_pixels += drawn.values.size();
    if (m_pixels > kMaxPixels)
        return false;
    if (m_rows.empty() || m_rows.back().line != placed.line
        || right - m_rows.back().left > kMaxRowWidth || m_rows.back().right - left > kMaxRowWidth)
        m_rows.push_back({placed.line, left, bottom, right, top});
    Row& row = m_rows.back();
    row.left = std::min(row.left, left);
    row.bottom = std::min(row.bottom, bottom);
    row.right = std::max(row.right, right);
    row.top = std::max(row.top, top);
    m_stamps.push_back(
        {m_rows.size() - 1, left, bottom, drawn.width, drawn.height, std::move(drawn.values)});
    return true;
}

bool PixelText::paint(const TextLayout& text)
{
    bool isWhole = true;
    text.place(
        [&](const PlacedGlyph& placed) { isWhole = isWhole && add(placed, text.font.size); });
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        Row& row = m_rows[i];
        row.left -= kMargin;
        row.bottom -= kMargin;
        row.right += kMargin;
        row.top += kMargin;
        row.y = m_height;
        const int width = std::max(m_width, row.right - row.left);
        const int height = m_height + row.top - row.bottom + kGap;
        if (static_cast<std::size_t>(width) * static_cast<std::size_t>(height) > kMaxPixels) {
            m_rows.resize(i);
            isWhole = false;
            break;
        }
        m_width = width;
        m_height = height;
    }
    compose();
    m_stamps.clear();
    return isWhole;
}

void PixelText::compose()
{
    if (m_rows.empty() || !m_image.setValue(SbVec2i32(m_width, m_height), 2)) {
        m_rows.clear();
        return;
    }
    unsigned char* pixels = m_image.edit();
    for (std::size_t i = 0; i < m_image.getByteCount(); i += 2) {
        pixels[i] = 255;
        pixels[i + 1] = 0;
    }
    for (const Stamp& stamp : m_stamps) {
        if (stamp.row >= m_rows.size())
            continue;
        const Row& row = m_rows[stamp.row];
        for (int y = 0; y < stamp.height; ++y) {
            const int at = row.y + stamp.bottom - row.bottom + y;
            const std::size_t first =
                static_cast<std::size_t>(at) * static_cast<std::size_t>(m_width)
                + static_cast<std::size_t>(stamp.left - row.left);
            for (int x = 0; x < stamp.width; ++x) {
                unsigned char& alpha = pixels[2 * (first + static_cast<std::size_t>(x)) + 1];
                const int sum = alpha
                                + stamp.values[static_cast<std::size_t>(y)
                                                   * static_cast<std::size_t>(stamp.width)
                                               + static_cast<std::size_t>(x)];
                alpha = static_cast<unsigned char>(std::min(sum, 255));
            }
        }
    }
}

void PixelText::write(SoGeometry& geometry) const
{
    for (const Row& row : m_rows) {
        const auto first = static_cast<std::uint32_t>(geometry.positions.size());
        const auto left = static_cast<float>(row.left), right = static_cast<float>(row.right);
        const auto bottom = static_cast<float>(row.bottom), top = static_cast<float>(row.top);
        const float s = (right - left) / static_cast<float>(m_width);
        const float t = static_cast<float>(row.y) / static_cast<float>(m_height);
        const float t1 = t + (top - bottom) / static_cast<float>(m_height);
        geometry.positions.resize(first + 4);
        geometry.pixelOffsets.insert(geometry.pixelOffsets.end(),
                                     {{left, bottom}, {right, bottom}, {right, top}, {left, top}});
        geometry.texCoords.insert(geometry.texCoords.end(), {{0, t}, {s, t}, {s, t1}, {0, t1}});
        geometry.triangles.insert(geometry.triangles.end(),
                                  {first, first + 1, first + 2, first, first + 2, first + 3});
        geometry.triangleFaces.insert(geometry.triangleFaces.end(), 2, row.line);
    }
    geometry.coverage = m_image;
}

} // namespace kalmyr::detail
