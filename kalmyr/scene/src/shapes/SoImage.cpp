#include <kalmyr/shapes/SoImage.h>

#include "ShapeActions.h"

#include <kalmyr/base/SoDebugError.h>

namespace {

constexpr SoEnumEntry kHorAlignments[] = {
    {"LEFT", SoImage::LEFT},
    {"CENTER", SoImage::CENTER},
    {"RIGHT", SoImage::RIGHT},
};
constexpr SoEnumEntry kVertAlignments[] = {
    {"BOTTOM", SoImage::BOTTOM},
    {"HALF", SoImage::HALF},
    {"TOP", SoImage::TOP},
};

/// How far left of or below the origin the picture begins; whole pixels.
int shareBefore(int alignment, int size)
{
    return alignment == 0 ? 0 : alignment == 1 ? size / 2 : size;
}

} // namespace

SO_NODE_SOURCE(SoImage)

SoImage::SoImage()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(filename, (""));
    SO_ADD_EMPTY_FIELD(image);
    SO_ADD_FIELD(width, (-1));
    SO_ADD_FIELD(height, (-1));
    SO_ADD_FIELD(horAlignment, (LEFT));
    horAlignment.setEnums(kHorAlignments);
    SO_ADD_FIELD(vertAlignment, (BOTTOM));
    vertAlignment.setEnums(kVertAlignments);
}

SoImage::~SoImage() = default;

void SoImage::initClass()
{
    SO_NODE_INIT_CLASS(SoImage, SoShape, "Image");
    kalmyr::detail::addPixelShapeMethods(getClassTypeId());
}

void SoImage::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoShape::copyContents(from, copier);
    setDirectory(static_cast<const SoImage*>(from)->getDirectory());
}

const SbImage& SoImage::getPicture()
{
    const SbString& name = filename.getValue();
    return m_file.get(filename.isIgnored() ? SbString() : name, image.getValue(), "image");
}

void SoImage::buildGeometry(SoState*, SoGeometry& geometry)
{
    const SbImage& picture = getPicture();
    if (picture.isNull())
        return;
    const int wide = width.getValue() == -1 ? picture.getWidth() : width.getValue();
    const int high = height.getValue() == -1 ? picture.getHeight() : height.getValue();
    if (wide < 0 || high < 0 || wide > kMaxSize || high > kMaxSize)
        SoDebugError::postWarning("Image", "\"%s\": a size of %d by %d pixels is not possible",
                                  getName().getString(), wide, high);
    if (wide <= 0 || high <= 0 || wide > kMaxSize || high > kMaxSize)
        return;
    const int left = -shareBefore(horAlignment.getValue(), wide);
    const int bottom = -shareBefore(vertAlignment.getValue(), high);
    for (const int corner : {0, 1, 2, 3}) {
        const bool isRight = corner == 1 || corner == 2, isTop = corner >= 2;
        geometry.positions.emplace_back(0.0f, 0.0f, 0.0f);
        geometry.pixelOffsets.emplace_back(static_cast<float>(isRight ? left + wide : left),
                                           static_cast<float>(isTop ? bottom + high : bottom));
        geometry.texCoords.emplace_back(isRight ? 1.0f : 0.0f, isTop ? 1.0f : 0.0f);
    }
    geometry.triangles = {0, 1, 2, 0, 2, 3};
    geometry.triangleFaces = {0, 0};
}
