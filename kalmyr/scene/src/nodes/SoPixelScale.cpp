#include <kalmyr/nodes/SoPixelScale.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

#include <cmath>

SO_NODE_SOURCE(SoPixelScale)

SoPixelScale::SoPixelScale()
{
    SO_NODE_CONSTRUCTOR(SoTransformation);
    SO_ADD_FIELD(pixels, (100.0f));
}

SoPixelScale::~SoPixelScale() = default;

void SoPixelScale::initClass()
{
    SO_NODE_INIT_CLASS(SoPixelScale, SoTransformation, "PixelScale");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoGetBoundingBoxAction*>(action)->doNotCache();
        static_cast<SoPixelScale*>(node)->doAction(action);
    });
}

float SoPixelScale::getFactor(SoState* state) const
{
    const SoView& view = SoViewElement::get(state);
    const float wanted = pixels.getValue();
    if (!view.valid || pixels.isIgnored() || !(wanted > 0) || !std::isfinite(wanted))
        return 1;
    const SbMatrix& toWorld = SoModelMatrixElement::get(state);
    const SbVec3f eye = (toWorld * view.viewing).point(SbVec3f(0, 0, 0));
    const SbMatrix& projection = view.projection;
    const float w = eye[2] * projection[2][3] + projection[3][3];
    const int high = SoViewportRegionElement::get(state).getViewportSizePixels()[1];
    // Half the picture is high / 2 pixels and, at that depth, w / projection[1][1] units.
    const float unitsPerPixel = 2 * w / (projection[1][1] * static_cast<float>(high));
    const float above = std::cbrt(std::abs(toWorld.det3()));
    const float factor = wanted * unitsPerPixel / above;
    return w > 0 && factor > 0 && std::isfinite(factor) ? factor : 1;
}

void SoPixelScale::doAction(SoAction* action)
{
    const float factor = getFactor(action->getState());
    SbMatrix matrix;
    matrix.setScale(SbVec3f(factor, factor, factor));
    SoModelMatrixElement::mult(action->getState(), this, matrix);
}
