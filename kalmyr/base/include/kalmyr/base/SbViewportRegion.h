#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

/// The part of a window that is drawn into: window size and viewport in pixels, origin at the lower
/// left, and how many pixels make an inch. A viewport set in fractions follows the window's size.
class SbViewportRegion {
public:
    static constexpr float kDefaultPixelsPerInch = 72;

    /// A window of 100 by 100 pixels, all of it.
    SbViewportRegion() = default;
    SbViewportRegion(short width, short height) : SbViewportRegion(SbVec2s(width, height)) {}
    explicit SbViewportRegion(const SbVec2s& windowSize) { setWindowSize(windowSize); }

    /// Sizes below 1 become 1. The viewport keeps its fractions.
    KALMYRBASE_API void setWindowSize(const SbVec2s& size);
    void setWindowSize(short width, short height) { setWindowSize(SbVec2s(width, height)); }
    const SbVec2s& getWindowSize() const { return m_windowSize; }

    /// In fractions 0 to 1 of the window.
    KALMYRBASE_API void setViewport(const SbVec2f& origin, const SbVec2f& size);
    void setViewport(float left, float bottom, float width, float height)
    {
        setViewport(SbVec2f(left, bottom), SbVec2f(width, height));
    }
    /// In pixels.
    KALMYRBASE_API void setViewportPixels(const SbVec2s& origin, const SbVec2s& size);
    void setViewportPixels(short left, short bottom, short width, short height)
    {
        setViewportPixels(SbVec2s(left, bottom), SbVec2s(width, height));
    }
    const SbVec2f& getViewportOrigin() const { return m_origin; }
    const SbVec2f& getViewportSize() const { return m_size; }
    const SbVec2s& getViewportOriginPixels() const { return m_originPixels; }
    const SbVec2s& getViewportSizePixels() const { return m_sizePixels; }
    /// Width divided by height; 1 when the viewport has no height.
    KALMYRBASE_API float getViewportAspectRatio() const;
    /// Multiplies width and height about the viewport's middle, clipped to the window.
    KALMYRBASE_API void scaleViewport(float widthFactor, float heightFactor);
    /// A window position in pixels as fractions 0 to 1 of the viewport, seen at the pixel's middle.
    KALMYRBASE_API SbVec2f normalize(const SbVec2s& windowPixel) const;

    void setPixelsPerInch(float ppi) { m_pixelsPerInch = ppi; }
    float getPixelsPerInch() const { return m_pixelsPerInch; }
    /// A point is 1/72 inch.
    float getPixelsPerPoint() const { return m_pixelsPerInch / 72; }

    KALMYRBASE_API friend bool operator==(const SbViewportRegion& a, const SbViewportRegion& b);

private:
    SbVec2s m_windowSize{100, 100};
    SbVec2f m_origin{0, 0};
    SbVec2f m_size{1, 1};
    SbVec2s m_originPixels{0, 0};
    SbVec2s m_sizePixels{100, 100};
    float m_pixelsPerInch = kDefaultPixelsPerInch;
};
