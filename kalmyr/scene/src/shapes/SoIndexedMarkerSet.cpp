#include <kalmyr/shapes/SoIndexedMarkerSet.h>

#include "MarkerBuilder.h"

#include <kalmyr/actions/SoRayPickAction.h>

SO_NODE_SOURCE(SoIndexedMarkerSet)

SoIndexedMarkerSet::SoIndexedMarkerSet()
{
    SO_NODE_CONSTRUCTOR(SoIndexedPointSet);
    SO_ADD_FIELD(markerIndex, (0));
}

SoIndexedMarkerSet::~SoIndexedMarkerSet() = default;

void SoIndexedMarkerSet::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedMarkerSet, SoIndexedPointSet, "IndexedMarkerSet");
    kalmyr::detail::addMarkerMethods(getClassTypeId());
    SoRayPickAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        const auto* markers = static_cast<SoIndexedMarkerSet*>(node);
        kalmyr::detail::MarkerIndices indices;
        indices.coord = markers->coordIndex.values();
        indices.material = markers->materialIndex.values();
        indices.indexed = true;
        kalmyr::detail::pickMarkers(action, node, indices);
    });
}

void SoIndexedMarkerSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::VertexInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, getIndices(), input, colors);
    input.coordIndex = coordIndex.values();
    kalmyr::detail::buildMarkers(input, markerIndex.values(), geometry);
}
