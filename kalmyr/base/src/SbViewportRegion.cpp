#include <kalmyr/base/SbViewportRegion.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

short toPixels(float fraction, short size)
{
    constexpr float kEnd = std::numeric_limits<short>::max();
    return static_cast<short>(std::lround(std::clamp(fraction * size, -kEnd, kEnd)));
}

} // namespace

void SbViewportRegion::setWindowSize(const SbVec2s& size)
{
    for (int i = 0; i < 2; ++i) {
        m_windowSize[i] = std::max<short>(size[i], 1);
    }
    setViewport(m_origin, m_size);
}

void SbViewportRegion::setViewport(const SbVec2f& origin, const SbVec2f& size)
{
    m_origin = origin;
    m_size = size;
    for (int i = 0; i < 2; ++i) {
        m_originPixels[i] = toPixels(origin[i], m_windowSize[i]);
        m_sizePixels[i] = toPixels(size[i], m_windowSize[i]);
    }
}

void SbViewportRegion::setViewportPixels(const SbVec2s& origin, const SbVec2s& size)
{
    m_originPixels = origin;
    m_sizePixels = size;
    for (int i = 0; i < 2; ++i) {
        m_origin[i] = static_cast<float>(origin[i]) / m_windowSize[i];
        m_size[i] = static_cast<float>(size[i]) / m_windowSize[i];
    }
}

float SbViewportRegion::getViewportAspectRatio() const
{
    return m_sizePixels[1] ? static_cast<float>(m_sizePixels[0]) / m_sizePixels[1] : 1;
}

void SbViewportRegion::scaleViewport(float widthFactor, float heightFactor)
{
    const SbVec2f factor(widthFactor, heightFactor);
    SbVec2f origin;
    SbVec2f size;
    for (int i = 0; i < 2; ++i) {
        const float middle = m_origin[i] + m_size[i] / 2;
        const float low = std::max(0.f, middle - m_size[i] * factor[i] / 2);
        const float high = std::min(1.f, middle + m_size[i] * factor[i] / 2);
        origin[i] = low;
        size[i] = std::max(0.f, high - low);
    }
    setViewport(origin, size);
}

SbVec2f SbViewportRegion::normalize(const SbVec2s& windowPixel) const
{
    SbVec2f r;
    for (int i = 0; i < 2; ++i) {
        const float size = std::max<short>(m_sizePixels[i], 1);
        r[i] = (static_cast<float>(windowPixel[i] - m_originPixels[i]) + 0.5f) / size;
    }
    return r;
}

bool operator==(const SbViewportRegion& a, const SbViewportRegion& b)
{
    return a.m_windowSize == b.m_windowSize && a.m_originPixels == b.m_originPixels
           && a.m_sizePixels == b.m_sizePixels && a.m_pixelsPerInch == b.m_pixelsPerInch;
}
