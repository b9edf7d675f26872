#include "rendering/PixelBox.h"

#include "rendering/FrameBuilder.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

PixelBox PixelBox::intersection(const PixelBox& other) const
{
    return {std::max(left, other.left), std::max(bottom, other.bottom),
            std::min(right, other.right), std::min(top, other.top)};
}

PixelBox PixelBox::unionWith(const PixelBox& other) const
{
    if (isEmpty() || other.isEmpty()) {
        return isEmpty() ? other : *this;
    }
    return {std::min(left, other.left), std::min(bottom, other.bottom),
            std::max(right, other.right), std::max(top, other.top)};
}

PixelBox boxOf(const SbViewportRegion& region)
{
    const SbVec2s& origin = region.getViewportOriginPixels();
    const SbVec2s& size = region.getViewportSizePixels();
    return {origin[0], origin[1], origin[0] + size[0], origin[1] + size[1]};
}

PixelBox boxOf(const FrameItem& item, const RenderView& view)
{
    const PixelBox all = boxOf(view.region);
    const SbBox3f& box = item.entry->geometry->getBox();
    const Matrix4 toClip =
        Matrix4::product(SbMatrix(item.toEye.m), Matrix4::from(view.view.projection));
    const float* m = toClip.m;
    float low[2] = {1, 1};
    float high[2] = {-1, -1};
    for (int i = 0; i < 8; ++i) {
        const float p[3] = {(i & 1 ? box.getMax() : box.getMin())[0],
                            (i & 2 ? box.getMax() : box.getMin())[1],
                            (i & 4 ? box.getMax() : box.getMin())[2]};
        const auto row = [&](int c) {
            return p[0] * m[c] + p[1] * m[4 + c] + p[2] * m[8 + c] + m[12 + c];
        };
        const float w = row(3);
        if (!(w > 0)) {
            return all;
        }
        for (int c = 0; c < 2; ++c) {
            const float at = std::clamp(row(c) / w, -1.0f, 1.0f);
            low[c] = std::min(low[c], at);
            high[c] = std::max(high[c], at);
        }
    }
    const auto pixel = [](float at, int size) {
        return (at * 0.5f + 0.5f) * static_cast<float>(size);
    };
    const SoDrawStyleValues& style = item.entry->appearance->drawStyle;
    const int beside = static_cast<int>(std::ceil(std::max(style.lineWidth, style.pointSize))) + 1;
    return PixelBox{all.left + static_cast<int>(std::floor(pixel(low[0], all.width()))) - beside,
                    all.bottom + static_cast<int>(std::floor(pixel(low[1], all.height()))) - beside,
                    all.left + static_cast<int>(std::ceil(pixel(high[0], all.width()))) + beside,
                    all.bottom + static_cast<int>(std::ceil(pixel(high[1], all.height()))) + beside}
        .intersection(all);
}

} // namespace kalmyr::detail
