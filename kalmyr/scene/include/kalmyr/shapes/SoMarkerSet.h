#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoPointSet.h>

/// Points that are drawn as markers, small pictures of one colour and a fixed size in pixels that
/// face the screen. The middle pixel of a marker covers its point. Markers are unlit.
///
/// A pick meets what is drawn, with a SoPointDetail. The box is that of the pixels where a camera
/// says where they are, else that of the points. Counts and primitives are points. A number that no
/// marker has is reported, and the point left out.
class KALMYR_API SoMarkerSet : public SoPointSet {
    SO_NODE_HEADER(SoMarkerSet)

public:
    SoMarkerSet();
    static void initClass();

    /// A number of the SoMarkerTable for each point, or SoMarkerTable::kNone; the last one counts
    /// for all further points.
    SoMFInt32 markerIndex;

protected:
    ~SoMarkerSet() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
};
