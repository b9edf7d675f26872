#include <kalmyr/vrml/SoVRMLExtrusion.h>

#include "Extruder.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/shapes/ShapeSource.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLExtrusion)

SoVRMLExtrusion::SoVRMLExtrusion()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_FIELD(beginCap, (true));
    SO_VRML_FIELD(ccw, (true));
    SO_VRML_FIELD(convex, (true));
    SO_VRML_FIELD(creaseAngle, (0.0f));
    SO_VRML_EMPTY_FIELD(crossSection);
    SO_VRML_FIELD(endCap, (true));
    SO_VRML_EMPTY_FIELD(orientation);
    SO_VRML_EMPTY_FIELD(scale);
    SO_VRML_FIELD(solid, (true));
    SO_VRML_EMPTY_FIELD(spine);
    SO_VRML_EVENT_IN(set_crossSection);
    SO_VRML_EVENT_IN(set_orientation);
    SO_VRML_EVENT_IN(set_scale);
    SO_VRML_EVENT_IN(set_spine);
    crossSection.initValues({{1, 1}, {1, -1}, {-1, -1}, {-1, 1}, {1, 1}});
    orientation.initValues({SbRotation()});
    scale.initValues({{1, 1}});
    spine.initValues({{0, 0, 0}, {0, 1, 0}});
}

SoVRMLExtrusion::~SoVRMLExtrusion() = default;

void SoVRMLExtrusion::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLExtrusion, SoVRMLGeometry, "VRMLExtrusion");
}

void SoVRMLExtrusion::fillSource(SoState*, kalmyr::ShapeSource& source) const
{
    const auto numRings = static_cast<std::size_t>(spine.getNum());
    if (numRings * static_cast<std::size_t>(crossSection.getNum())
        > kalmyr::detail::Extruder::kMaxPoints) {
        SoDebugError::postWarning("SoVRMLExtrusion",
                                  "%s: %d spine points by %d of the cross section are too many",
                                  getName().getString(), spine.getNum(), crossSection.getNum());
        return;
    }
    kalmyr::FaceInput& in = source.input;
    in.node = this;
    in.coordField = "spine";
    in.convex = convex.getValue();
    in.clockwise = !ccw.getValue();
    in.solid = solid.getValue();
    in.creaseAngle = creaseAngle.getValue();
    source.kind = kalmyr::ShapeSource::FACES;
    if (!source.wantsLists())
        return;
    kalmyr::detail::Extruder extruder;
    extruder.crossSection = crossSection.values();
    extruder.spine = spine.values();
    extruder.scale = scale.values();
    extruder.orientation = orientation.values();
    extruder.beginCap = beginCap.getValue();
    extruder.endCap = endCap.getValue();
    if (!extruder.run())
        source.kind = kalmyr::ShapeSource::NONE;
    source.positions = std::move(extruder.points);
    source.coordIndex = std::move(extruder.faces);
    in.positions = source.positions;
    in.coordIndex = source.coordIndex;
}
