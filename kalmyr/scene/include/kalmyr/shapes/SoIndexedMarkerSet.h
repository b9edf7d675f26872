#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoIndexedPointSet.h>

/// Markers, as of SoMarkerSet, at indexed positions; a -1 in coordIndex is passed over.
class KALMYR_API SoIndexedMarkerSet : public SoIndexedPointSet {
    SO_NODE_HEADER(SoIndexedMarkerSet)

public:
    SoIndexedMarkerSet();
    static void initClass();

    /// A number of the SoMarkerTable for each point, or SoMarkerTable::kNone; the last one counts
    /// for all further points.
    SoMFInt32 markerIndex;

protected:
    ~SoIndexedMarkerSet() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
};
