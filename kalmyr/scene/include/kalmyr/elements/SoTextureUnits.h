#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoState.h>
#include <kalmyr/elements/SoTextureElement.h>

#include <span>
#include <string>
#include <vector>

/// Number of the texture unit that texture nodes set; 0 until a node chooses another.
class KALMYR_API SoTextureUnitElement final : public SoValueElement<SoTextureUnitElement, int> {
public:
    /// Units from 0 to this less 1.
    static constexpr int kMaxUnits = 8;
    static int getStackIndex();
    static int get(SoState* state) { return state->get<SoTextureUnitElement>().value(); }
};

/// One of several textures that lie over each other: how it is looked up, and how it is mixed with
/// what the units before it gave ("current"; of the first unit the lit colour).
struct SoTextureStage {
    /// Whether the image is a picture, a volume, or the six sides of a cube (a volume of depth 6:
    /// +x, -x, +y, -y, +z, -z).
    enum Kind { FLAT, VOLUME, CUBE };
    /// Arg1 is the texture, arg2 the current colour or what `source` names.
    enum Mode {
        AS_MODEL, ///< as the texture's own model says
        MODULATE,
        REPLACE, ///< the texture
        MODULATE2X,
        MODULATE4X,
        ADD,
        ADDSIGNED,
        ADDSIGNED2X,
        SUBTRACT,
        ADDSMOOTH,
        BLENDDIFFUSEALPHA,
        BLENDTEXTUREALPHA,
        BLENDFACTORALPHA,
        BLENDCURRENTALPHA,
        MODULATEALPHA_ADDCOLOR,
        MODULATEINVALPHA_ADDCOLOR,
        MODULATEINVCOLOR_ADDALPHA,
        DOTPRODUCT3,
        SELECTARG1,
        SELECTARG2,
        OFF, ///< the unit changes nothing
        NUM_MODES
    };
    enum Source { CURRENT, DIFFUSE, SPECULAR, FACTOR };
    /// The function that is applied to the result.
    enum Function { NONE, COMPLEMENT, ALPHAREPLICATE };
    /// Where the coordinates come from: the geometry, or the direction of view on the surface.
    enum Coordinates { GIVEN, SPHERE, REFLECTION };

    SoTextureValues texture; ///< of the first unit empty: SoTextureElement has it
    SbMatrix matrix;         ///< of the first unit unused: SoTextureMatrixElement has it
    Kind kind = FLAT;
    SoTextureValues::Wrap wrapR = SoTextureValues::REPEAT;
    Mode mode = AS_MODEL;
    Mode alphaMode = AS_MODEL; ///< AS_MODEL: the same as of the colours
    Source source = CURRENT;
    Function function = NONE;
    SbColorRGBA factor{1, 1, 1, 1};
    Coordinates coordinates = GIVEN;

    /// Whether the unit says nothing but which flat texture there is.
    KALMYR_API bool isPlain() const;
    friend KALMYR_API bool operator==(const SoTextureStage& a, const SoTextureStage& b);

    /// By the words of scene files, in any case; AS_MODEL for none, false for an unknown one.
    KALMYR_API static bool findMode(const std::string& word, Mode& mode);
    KALMYR_API static const char* nameOf(Mode mode);
};

/// Texture coordinates of one unit beside SoTextureCoordinateElement, which has the flat ones of
/// the first unit. The arrays belong to the nodes that set them, which live while traversed.
struct SoTextureCoordinateSet {
    int unit = 0;
    std::span<const SbVec2f> flat;
    std::span<const SbVec3f> solid;
    bool isPlane = false; ///< computed from positions: s, t, r are their products with these
    SbVec3f planes[3] = {};
};

/// The sets that are in force, at most one a unit.
class KALMYR_API SoTextureCoordinateSetsElement final
    : public SoValueElement<SoTextureCoordinateSetsElement, std::vector<SoTextureCoordinateSet>> {
public:
    static int getStackIndex();
    /// Puts a set in place of that of its unit.
    static void add(SoState* state, const SoNode* node, const SoTextureCoordinateSet& set);
    static void remove(SoState* state, const SoNode* node, int unit);
};

/// Values of an input of a shader program, one for each coordinate. The array belongs to the node
/// that set it.
struct SoVertexAttributeValues {
    std::string name;
    int components = 1; ///< 1 to 4
    std::span<const float> values;
};
class KALMYR_API SoVertexAttributeElement final
    : public SoValueElement<SoVertexAttributeElement, std::vector<SoVertexAttributeValues>> {
public:
    static int getStackIndex();
    static void add(SoState* state, const SoNode* node, const SoVertexAttributeValues& values);
};
