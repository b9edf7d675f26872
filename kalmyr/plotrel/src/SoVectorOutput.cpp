#include <kalmyr/plotrel/SoVectorOutput.h>

#include "ByteWriter.h"
#include "Flattening.h"
#include "VectorDrawing.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace {

constexpr float kMaxPageSide = 10000;
/// How much farther colours may be off where triangles are flat.
constexpr float kFlatTolerance = 4;

bool isLength(float value)
{
    return std::isfinite(value) && value >= 0 && value <= kMaxPageSide;
}

} // namespace

SoVectorOutput::SoVectorOutput() = default;

SoVectorOutput::~SoVectorOutput()
{
    if (isOpen())
        closeFile();
}

bool SoVectorOutput::openFile(const char* fileName)
{
    discardFile();
    if (!kalmyr::holds(fileName, "a file name"))
        return false;
    SbString reason;
    if (!m_file.open(fileName, &reason)) {
        SoError::post("Can not open file %s: %s", fileName, reason.getString());
        return false;
    }
    m_fileName = fileName;
    return true;
}

bool SoVectorOutput::closeFile()
{
    if (!isOpen())
        return false;
    if (!m_hasDrawing) {
        discardFile();
        return false;
    }
    m_hasDrawing = false;
    SbString reason;
    if (m_file.commit(&reason))
        return true;
    SoError::post("%s: cannot be written: %s", m_fileName.c_str(), reason.getString());
    return false;
}

void SoVectorOutput::discardFile()
{
    m_file.discard();
    m_hasDrawing = false;
}

bool SoVectorOutput::writeDrawing(kalmyr::detail::VectorDrawing& drawing, float tolerance)
{
    using namespace kalmyr::detail;
    const Abilities abilities = getAbilities();
    const auto& all = drawing.primitives;
    const bool hasImages = std::any_of(all.begin(), all.end(),
                                       [](const VectorPrimitive& one) { return one.image >= 0; });
    if (hasImages && !abilities.images) {
        SoDebugError::postInfo("SoVectorOutput", "%s: textures become their average colours",
                               m_fileName.c_str());
        averageImages(drawing);
    }
    const bool isTransparent = std::any_of(
        all.begin(), all.end(), [](const VectorPrimitive& one) { return one.opacity < 1; });
    if (isTransparent && (!abilities.transparency || m_colorMode == BLACK_AND_WHITE)) {
        SoDebugError::postInfo("SoVectorOutput", "%s: transparency becomes mixed colours",
                               m_fileName.c_str());
        mixTransparency(drawing);
    }
    if (!abilities.shading)
        divideShading(drawing, std::min(1.0f, kFlatTolerance * tolerance));
    if (m_colorMode != COLOR)
        convertColors(drawing, m_colorMode);
    errno = 0;
    kalmyr::detail::ByteWriter bytes(m_file.getFile());
    write(drawing, bytes);
    m_hasDrawing = bytes.flush();
    if (!m_hasDrawing)
        SoError::post("%s: cannot be written: %s", m_fileName.c_str(),
                      std::strerror(errno ? errno : EIO));
    return m_hasDrawing;
}

void SoVectorOutput::setPageSize(const SbVec2f& size)
{
    if (kalmyr::holds(isLength(size[0]) && isLength(size[1]) && size[0] >= 1 && size[1] >= 1,
                      "a page of 1 to 10000 mm"))
        m_pageSize = size;
}

SbVec2f SoVectorOutput::getOrientedPageSize() const
{
    const auto [shorter, longer] = std::minmax(m_pageSize[0], m_pageSize[1]);
    return m_orientation == LANDSCAPE ? SbVec2f(longer, shorter) : m_pageSize;
}

void SoVectorOutput::setMargin(float margin)
{
    if (kalmyr::holds(isLength(margin), "a margin of 0 mm or more"))
        m_margin = margin;
}

void SoVectorOutput::setDrawingSize(const SbVec2f& size)
{
    if (kalmyr::holds(isLength(size[0]) && isLength(size[1]), "a size of 0 mm or more"))
        m_drawingSize = size;
}

void SoVectorOutput::setPixelSize(float millimetres)
{
    if (kalmyr::holds(isLength(millimetres), "a size of 0 mm or more"))
        m_pixelSize = millimetres;
}

void SoVectorOutput::setMinLineWidth(float millimetres)
{
    if (kalmyr::holds(isLength(millimetres), "a width of 0 mm or more"))
        m_minLineWidth = millimetres;
}
