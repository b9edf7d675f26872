#include <kalmyr/shapes/SoMarkerSet.h>

#include "MarkerBuilder.h"

#include <kalmyr/actions/SoRayPickAction.h>

SO_NODE_SOURCE(SoMarkerSet)

SoMarkerSet::SoMarkerSet()
{
    SO_NODE_CONSTRUCTOR(SoPointSet);
    SO_ADD_FIELD(markerIndex, (0));
}

SoMarkerSet::~SoMarkerSet() = default;

void SoMarkerSet::initClass()
{
    SO_NODE_INIT_CLASS(SoMarkerSet, SoPointSet, "MarkerSet");
    kalmyr::detail::addMarkerMethods(getClassTypeId());
    SoRayPickAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        kalmyr::detail::MarkerIndices indices;
        indices.start = static_cast<SoMarkerSet*>(node)->startIndex.getValue();
        kalmyr::detail::pickMarkers(action, node, indices);
    });
}

void SoMarkerSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::VertexInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    const std::int32_t count = numPoints.getValue();
    const std::vector<std::int32_t> indices =
        makeIndices({&count, 1}, static_cast<int>(input.positions.size()));
    input.coordIndex = indices;
    input.coordField = "numPoints: position";
    kalmyr::detail::buildMarkers(input, markerIndex.values(), geometry);
}
