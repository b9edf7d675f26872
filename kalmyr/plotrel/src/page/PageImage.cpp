#include "PageImage.h"

namespace kalmyr::detail {

PageImage::PageImage(const SbImage& image, bool onWhite)
{
    const int components = image.getComponents();
    const bool hasAlpha = image.hasTransparency();
    for (int y = image.getHeight(); y-- > 0;)
        for (int x = 0; x < image.getWidth(); ++x) {
            const unsigned char* pixel = image.getPixel(x, y);
            const int alpha = hasAlpha ? pixel[components - 1] : 255;
            for (int i = 0; i < 3; ++i) {
                int value = pixel[components < 3 ? 0 : i];
                if (onWhite)
                    value = (value * alpha + 255 * (255 - alpha) + 127) / 255;
                colors += static_cast<char>(value);
            }
            if (hasAlpha && !onWhite)
                this->alpha += static_cast<char>(alpha);
        }
}

} // namespace kalmyr::detail
