#pragma once

#include "rendering/RenderList.h"

#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// A matrix for the frame's inner loops: rows of floats as in SbMatrix.
struct Matrix4 {
    float m[16];

    static Matrix4 from(const SbMatrix& matrix);
    /// `a` happens before `b`. The row of the translation is summed in double, where large
    /// coordinates cancel.
    static Matrix4 product(const SbMatrix& a, const Matrix4& b);
};

/// A light in the space of the eye, laid out as the shaders read it (std140).
struct EyeLight {
    float position[4];    ///< place, or direction to the light; then 0 directional, 1 point, 2 spot
    float color[4];       ///< times intensity; then the ambient part
    float direction[4];   ///< as long as the light shines far; then the cosine of the cut-off angle
    float attenuation[4]; ///< constant, linear, quadratic; then the spot's exponent, or, below 0,
                          ///< the width of the beam as -1 - width
};

/// What shines on and cuts some items, in the space of the eye.
struct EyeSurroundings {
    std::vector<EyeLight> lights;
    std::vector<SbVec4f> clipPlanes;
};

/// One item in view.
struct FrameItem {
    const RenderList::Entry* entry; // Not owned; the list is.
    Matrix4 toEye;
    float depth = 0; ///< of the middle of its box, along the line of sight; far is negative
    std::uint32_t surroundings = 0;
    std::uint16_t view = 0;
    std::uint8_t layer = 0;
    bool mirrored = false; ///< the matrix turns the orientation of faces
};

/// A selection node in view.
struct FrameSelection {
    const SoNode* node;
    SbMatrix toWorld;
    std::uint16_t view;
};

/// The list of a frame with everything in the place where it is seen.
struct Frame {
    std::vector<RenderView> views;
    std::vector<EyeSurroundings> surroundings; ///< the first one is without anything
    std::vector<FrameItem> items;              ///< in order of traversal
    std::vector<FrameSelection> selections;
    SoFogValues fog; ///< in front of that of the items' own environment
    RenderList::Background background;
    bool hasBackground = false;
    std::size_t culled = 0;
    int numLayers = 1;
    float nearDepth = 0; ///< range of the items' depths
    float farDepth = 0;

    const std::uint64_t id = nextNumber(); ///< unique in the process
    std::uint64_t generation = 0;          ///< a new one, unique in the process, with new items
    std::vector<std::uint32_t> patches;    ///< items that changed in place since then, in order

    void clear();
    static std::uint64_t nextNumber();
};

/// Fills `frame` from a list, leaving out what is out of view. `frame` keeps its memory from one
/// frame to the next.
void buildFrame(const RenderList& list, const std::vector<RenderView>& views, Frame& frame);

} // namespace kalmyr::detail
