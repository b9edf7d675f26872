#include "ConvertedLook.h"

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/elements/SoState.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoCylinder.h>
#include <kalmyr/shapes/SoGeometry.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLImageTexture.h>

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

SbString textureFile(SoState* state)
{
    const SoNode* node = state->get<SoTextureElement>().getNode();
    if (!node)
        return {};
    if (node->isOfType(SoTexture2::getClassTypeId()))
        return static_cast<const SoTexture2*>(node)->filename.getValue();
    if (!node->isOfType(SoVRMLImageTexture::getClassTypeId()))
        return {};
    const auto* image = static_cast<const SoVRMLImageTexture*>(node);
    return image->url.getNum() > 0 ? image->url[0] : SbString();
}

SbString textureFolder(SoState* state)
{
    const SoNode* node = state->get<SoTextureElement>().getNode();
    if (node && node->isOfType(SoTexture2::getClassTypeId()))
        return static_cast<const SoTexture2*>(node)->getDirectory();
    if (node && node->isOfType(SoVRMLImageTexture::getClassTypeId()))
        return static_cast<const SoVRMLImageTexture*>(node)->getDirectory();
    return {};
}

TextureTransform factorTextureMatrix(const SbMatrix& m)
{
    TextureTransform result{};
    result.scale[0] = std::hypot(m[0][0], m[1][0]);
    result.scale[1] = std::hypot(m[0][1], m[1][1]);
    const float determinant = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    if (determinant < 0)
        result.scale[1] = -result.scale[1];
    result.rotation = std::atan2(-m[1][0], m[0][0]);
    // The offset is moved in front of rotation and scale.
    if (determinant != 0) {
        result.translation[0] = (m[3][0] * m[1][1] - m[3][1] * m[1][0]) / determinant;
        result.translation[1] = (m[3][1] * m[0][0] - m[3][0] * m[0][1]) / determinant;
    }
    return result;
}

TextureTransform factorOldTextureMatrix(const SbMatrix& m)
{
    TextureTransform result{};
    result.scale[0] = std::hypot(m[0][0], m[0][1]);
    result.scale[1] = std::hypot(m[1][0], m[1][1]);
    if (m[0][0] * m[1][1] - m[0][1] * m[1][0] < 0)
        result.scale[1] = -result.scale[1];
    result.rotation = std::atan2(m[0][1], m[0][0]);
    result.translation[0] = m[3][0];
    result.translation[1] = m[3][1];
    return result;
}

bool isPlainSolid(const SoShape* shape, const SoGeometry& geometry)
{
    const SoType types[] = {SoCube::getClassTypeId(), SoSphere::getClassTypeId(),
                            SoCone::getClassTypeId(), SoCylinder::getClassTypeId()};
    return geometry.colors.empty() && !geometry.extras
           && std::find(std::begin(types), std::end(types), shape->getTypeId()) != std::end(types);
}

std::vector<std::int32_t> faceIndices(const SoGeometry& geometry)
{
    std::vector<std::int32_t> result;
    result.reserve(geometry.triangles.size() / 3 * 4);
    for (std::size_t i = 0; i < geometry.triangles.size(); i += 3) {
        for (std::size_t k = 0; k < 3; ++k)
            result.push_back(static_cast<std::int32_t>(geometry.triangles[i + k]));
        result.push_back(-1);
    }
    return result;
}

std::vector<std::int32_t> lineIndices(const SoGeometry& geometry)
{
    std::vector<std::int32_t> result;
    for (std::size_t i = 0; i < geometry.lines.size(); i += 2) {
        const auto a = static_cast<std::int32_t>(geometry.lines[i]);
        const auto b = static_cast<std::int32_t>(geometry.lines[i + 1]);
        // Segments that follow each other make one line.
        if (result.size() > 1 && result[result.size() - 2] == a)
            result.pop_back();
        else
            result.push_back(a);
        result.push_back(b);
        result.push_back(-1);
    }
    return result;
}

} // namespace kalmyr::detail
