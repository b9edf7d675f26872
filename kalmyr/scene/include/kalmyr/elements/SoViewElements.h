#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/elements/SoState.h>

class SoCamera;

/// A camera's view: view volume in world space, viewing (world to eye) and projection matrix.
struct SoView {
    bool valid = false; ///< false before any camera
    SbViewVolume volume;
    SbMatrix viewing = SbMatrix::identity();
    SbMatrix projection = SbMatrix::identity();
    float focalDistance = 5;
};

class KALMYR_API SoViewElement final : public SoValueElement<SoViewElement, SoView> {
public:
    static int getStackIndex();
    static const SoView& get(SoState* state) { return state->get<SoViewElement>().value(); }
};

class KALMYR_API SoViewportRegionElement final
    : public SoValueElement<SoViewportRegionElement, SbViewportRegion> {
public:
    static int getStackIndex();
    static const SbViewportRegion& get(SoState* state)
    {
        return state->get<SoViewportRegionElement>().value();
    }
};
