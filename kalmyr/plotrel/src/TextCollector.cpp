#include "TextCollector.h"

#include <kalmyr/base/SbBox.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoTextShape.h>
#include <kalmyr/vrml/SoVRMLText.h>

#include <cmath>

namespace kalmyr::detail {

namespace {

/// The boxes of the lines in object space, or in pixels about the position of a text that faces the
/// screen.
std::vector<SbBox3f> boxesOf(const SoGeometry& geometry, std::size_t numLines)
{
    std::vector<SbBox3f> boxes(numLines);
    for (std::size_t t = 0; t < geometry.getNumTriangles(); ++t) {
        const auto line = static_cast<std::size_t>(geometry.triangleFaces[t]);
        for (std::size_t k = 0; line < boxes.size() && k < 3; ++k) {
            const std::uint32_t corner = geometry.triangles[3 * t + k];
            const bool hasOffset = corner < geometry.pixelOffsets.size();
            boxes[line].extendBy(hasOffset ? SbVec3f(geometry.pixelOffsets[corner][0],
                                                     geometry.pixelOffsets[corner][1], 0)
                                           : geometry.positions[corner]);
        }
    }
    return boxes;
}

/// A corner of such a box as it is seen.
ClipPoint clipOf(const FacetContext& context, const SbVec3f& corner)
{
    const SbMatrix& toEye = context.item.toEye;
    if (context.geometry.pixelOffsets.empty())
        return context.projection.toClip(toEye.point(corner));
    const SbVec3f eye = toEye.point(context.geometry.positions[0]);
    const ClipPoint origin = context.projection.toClip(eye);
    if (!(origin.w > 0))
        return origin;
    const SbVec3f offset = corner * static_cast<float>(context.run.options.pixelSize);
    return context.projection.toClip(eye
                                     + context.projection.onPage(offset[0], offset[1], origin.w));
}

} // namespace

std::vector<std::string> stringsOf(const SoNode* node)
{
    std::vector<std::string> strings;
    if (!node
        || (!node->isOfType(SoTextShape::getClassTypeId())
            && !node->isOfType(SoVRMLText::getClassTypeId())))
        return strings;
    for (const SbString& one :
         static_cast<const SoMFString*>(node->getField(SbName("string")))->values())
        strings.emplace_back(one.getString());
    return strings;
}

void collectTexts(const FacetContext& context, const std::vector<std::string>& strings,
                  std::vector<VectorText>& texts)
{
    const SoGeometry& geometry = context.geometry;
    if (geometry.triangleFaces.size() < geometry.getNumTriangles())
        return;
    const std::vector<SbBox3f> boxes = boxesOf(geometry, strings.size());
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (boxes[i].isEmpty())
            continue;
        const SbVec3f low = boxes[i].getMin(), high = boxes[i].getMax();
        Corner places[3];
        bool isSeen = true;
        std::size_t k = 0;
        // The front of letters that have a depth.
        for (const SbVec3f& corner :
             {SbVec3f(low[0], low[1], high[2]), SbVec3f(high[0], low[1], high[2]),
              SbVec3f(low[0], high[1], high[2])}) {
            const ClipPoint clip = clipOf(context, corner);
            isSeen = isSeen && outsideOf(clip) == 0;
            places[k++] = context.projection.toPage(clip);
        }
        const double length = std::hypot(places[1].x - places[0].x, places[1].y - places[0].y);
        const double size = std::hypot(places[2].x - places[0].x, places[2].y - places[0].y);
        if (!isSeen || !(length > 0) || !(size > 0))
            continue;
        texts.push_back({strings[i], static_cast<float>(places[0].x),
                         static_cast<float>(places[0].y),
                         static_cast<float>((places[1].x - places[0].x) / length),
                         static_cast<float>((places[1].y - places[0].y) / length),
                         static_cast<float>(size), static_cast<float>(length)});
    }
}

} // namespace kalmyr::detail
