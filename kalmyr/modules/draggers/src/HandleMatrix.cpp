#include "HandleMatrix.h"

#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/nodes/SoComplexity.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoNormalBinding.h>
#include <kalmyr/nodes/SoPickStyle.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTexture2.h>

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

float pixelSize(SoState* state, const SbVec3f& place)
{
    const SoView& view = SoViewElement::get(state);
    const SbVec2s pixels = SoViewportRegionElement::get(state).getViewportSizePixels();
    const float smaller = static_cast<float>(std::min(pixels[0], pixels[1]));
    if (!view.valid || !(smaller > 0))
        return 0;
    return view.volume.getWorldToScreenScale(place, 1 / smaller);
}

void fitBox(const SbBox3f& box, bool isRound, SbMatrix& matrix)
{
    constexpr float kMargin = 1.05f;
    if (isRound) {
        float radius = 0;
        for (int i = 0; i < 8; ++i)
            radius = std::max(radius, box.getCorner(i).length());
        matrix.setScale(radius > 0 ? radius * kMargin : 1);
        return;
    }
    SbVec3f half = (box.getMax() - box.getMin()) * (kMargin / 2);
    const float largest = std::max({half[0], half[1], half[2]});
    for (int i = 0; i < 3;
         ++i) // flat things are held by a flat box, which has an inside all the same
        half[i] = std::max(half[i], largest > 0 ? largest * 0.02f : 1.0f);
    matrix.setScale(half);
    SbMatrix place;
    place.setTranslate(box.getCenter());
    matrix.multRight(place);
}

SbMatrix knobMatrix(const SbMatrix& toSpace, const SbVec3f& position, const SbVec3f& direction,
                    float size)
{
    SbVec3f y = toSpace.direction(direction).normalized();
    if (y == SbVec3f(0, 0, 0))
        y = SbVec3f(0, 1, 0);
    // The image of the axis that is most square to it.
    int across = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(direction[i]) < std::abs(direction[across]))
            across = i;
    SbVec3f x = SbVec3f(toSpace[across]).normalized();
    x = (x - y * x.dot(y)).normalized();
    if (x == SbVec3f(0, 0, 0))
        x = (std::abs(y[0]) < 0.9f ? SbVec3f(1, 0, 0) : SbVec3f(0, 1, 0)).cross(y).normalized();
    const SbVec3f z = x.cross(y);
    const SbVec3f at = toSpace.point(position);
    SbMatrix matrix;
    for (int i = 0; i < 3; ++i) {
        matrix[0][i] = x[i] * size;
        matrix[1][i] = y[i] * size;
        matrix[2][i] = z[i] * size;
        matrix[3][i] = at[i];
    }
    return matrix;
}

void fillSetup(SoGroup* group)
{
    auto* style = new SoDrawStyle;
    style->lineWidth = 2;
    auto* complexity = new SoComplexity;
    complexity->value = 0.4f;
    auto* normals = new SoNormalBinding;
    const std::initializer_list<SoNode*> looks = {style,
                                                  complexity,
                                                  normals,
                                                  new SoLightModel,
                                                  new SoTexture2,
                                                  new SoShapeHints,
                                                  new SoMaterialBinding,
                                                  new SoPickStyle};
    for (SoNode* node : looks)
        group->addChild(node);
}

} // namespace kalmyr::detail
