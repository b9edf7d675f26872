#pragma once

#include "rendering/RenderList.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
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

/// Entries of a list that were put in place of as many others, all of the same kind as those.
/// `isSameKind` is false when anything but places and the colours of looks changed.
struct ListPatch {
    RenderList* list; // Not owned; part of the lists of the frame.
    std::size_t first;
    std::size_t count;
    bool isSameKind;
    bool hasNewLook;
};

/// An item that moved, and may have other colours.
struct ItemPatch {
    std::uint32_t item;
    bool hasNewLook;
};

/// Where one list is seen.
struct ListPlace {
    Matrix4 toEye;
    SbMatrix toWorld;
    std::uint32_t surroundings;
    std::uint16_t view;
    std::uint8_t layer;
    bool visible; ///< wholly in view: nothing below needs a test
};

/// The list of a frame with everything in the place where it is seen.
struct Frame {
    /// One place of a list whose entries may be exchanged.
    struct Occurrence {
        ListPlace place;
        std::vector<std::uint32_t> firstItems; ///< by entry, and the end; empty: out of view
    };

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
    std::vector<ItemPatch> patches;        ///< items that changed since then, in order
    SoRef<const RenderList> list;          ///< what the items point into
    std::uint64_t traversal = 0;           ///< number of the traversal that it shows
    std::unordered_map<const RenderList*, std::vector<Occurrence>> occurrences;

    void clear();
    static std::uint64_t nextNumber();
};

/// Fills `frame` from a list, leaving out what is out of view. `frame` keeps its memory from one
/// frame to the next.
void buildFrame(const RenderList& list, const std::vector<RenderView>& views, Frame& frame);

/// Brings a frame from one traversal to the next. Where the lists are the same but for those
/// patches, and the views are, only the items concerned are placed again.
void updateFrame(const RenderList& list, const std::vector<RenderView>& views,
                 std::uint64_t traversal, const std::vector<ListPatch>& patches, Frame& frame);

} // namespace kalmyr::detail
