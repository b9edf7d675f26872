#include <kalmyr/draggers/SoTranslate3Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoTranslate3Dragger)

SoTranslate3Dragger::SoTranslate3Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoTranslateDragger);
    SO_KIT_MAKE_PARTS();
    const struct {
        const char* arrow;
        const char* plate;
        SbVec3f axis, color;
    } axes[] = {{"xArrow", "xPlate", kX, kRed},
                {"yArrow", "yPlate", kY, kGreen},
                {"zArrow", "zPlate", kZ, kBlue}};
    for (int i = 0; i < 3; ++i) {
        addArrow({axes[i].arrow, SoDragHandle::MOVE_LINE, axes[i].axis, axes[i].color}, CONE,
                 axes[i].axis);
        const Part plate{axes[i].plate, SoDragHandle::MOVE_PLANE, axes[i].axis, axes[i].color};
        addFaces(plate, {cornerSquare(i, 0.3f, 0.6f)});
        addLines(plate, {closed(cornerSquare(i, 0.3f, 0.6f))});
    }
    addKnob({"ball", SoDragHandle::MOVE_VIEW, kZ, kNeutral}, BALL, SbVec3f(), kY, 0.14f);
}

SoTranslate3Dragger::~SoTranslate3Dragger() = default;

void SoTranslate3Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoTranslate3Dragger, SoTranslateDragger, "Translate3Dragger");
}
