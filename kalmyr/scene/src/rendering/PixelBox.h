#pragma once

class SbViewportRegion;

namespace kalmyr::detail {

struct FrameItem;
struct RenderView;

/// A part of the picture, in pixels; the ends are not in it.
struct PixelBox {
    int left = 0;
    int bottom = 0;
    int right = 0;
    int top = 0;

    bool isEmpty() const { return right <= left || top <= bottom; }
    int width() const { return right - left; }
    int height() const { return top - bottom; }
    PixelBox intersection(const PixelBox& other) const;
    /// The smallest box around both; an empty one counts for nothing.
    PixelBox unionWith(const PixelBox& other) const;
};

/// The viewport of a region.
PixelBox boxOf(const SbViewportRegion& region);
/// The pixels that an item may cover; all of the view when it reaches behind the eye.
PixelBox boxOf(const FrameItem& item, const RenderView& view);

} // namespace kalmyr::detail
