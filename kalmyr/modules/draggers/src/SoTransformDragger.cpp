#include <kalmyr/draggers/SoTransformDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoTransformDragger)

SoTransformDragger::SoTransformDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(minTranslation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(maxTranslation, (-1.0f, -1.0f, -1.0f));
    useTranslation(translation, minTranslation, maxTranslation);
    SO_ADD_FIELD(rotation, (SbRotation()));
    useRotation(rotation);
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(minScaleFactor, (0.001f));
    SO_ADD_FIELD(maxScaleFactor, (0.0f));
    useScale(scaleFactor, minScaleFactor, maxScaleFactor);
    SO_ADD_FIELD(scaleOrientation, (SbRotation()));
    SO_ADD_FIELD(center, (0.0f, 0.0f, 0.0f));
    useCenter(center, scaleOrientation);
    SO_KIT_MAKE_PARTS();
    const struct {
        const char* faces;
        const char* edges;
        SbVec3f axis, color;
    } axes[] = {{"xFaces", "xEdges", kX, kRed},
                {"yFaces", "yEdges", kY, kGreen},
                {"zFaces", "zEdges", kZ, kBlue}};
    for (int i = 0; i < 3; ++i) {
        const Part face{axes[i].faces, SoDragHandle::MOVE_PLANE, axes[i].axis, kNeutral};
        addFaces(face, {square(i, 1, 1), square(i, -1, 1)});
        const Part edge{axes[i].edges, SoDragHandle::TURN_CYLINDER, axes[i].axis, axes[i].color};
        addLines(edge, boxEdges(i));
        for (const std::vector<SbVec3f>& line : boxEdges(i))
            addKnob(edge, BALL, (line[0] + line[1]) / 2.0f, axes[i].axis, 0.07f);
    }
    for (int i = 0; i < 8; ++i)
        addKnob({"corners", SoDragHandle::SCALE_EVENLY, kZ, kNeutral}, CUBE, boxCorner(i));
}

SoTransformDragger::~SoTransformDragger() = default;

void SoTransformDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoTransformDragger, SoMotionDragger, "TransformDragger");
}
