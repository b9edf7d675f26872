#pragma once

#include <kalmyr/elements/SoState.h>
#include <kalmyr/elements/SoTextureUnits.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A value that a shader program gets by its name.
struct SoUniformValue {
    enum Kind { FLOATS, INTEGERS, MATRICES, TEXTURE };
    std::string name;
    Kind kind = FLOATS;
    int components = 1; ///< of floats and integers
    std::vector<float> floats;
    std::vector<std::int32_t> integers;
    SoTextureStage texture;

    friend KALMYR_API bool operator==(const SoUniformValue& a, const SoUniformValue& b);
};

/// A shader program with the values of its parameters.
struct SoProgramValues {
    enum Stage { VERTEX, GEOMETRY, FRAGMENT, NUM_STAGES };
    struct Source {
        std::string text; ///< empty: the standard stage
        std::string name; ///< of the node or file, for messages
    };
    Source stages[NUM_STAGES];
    std::vector<SoUniformValue> uniforms;
    std::string name; ///< of the node, for messages
};

/// Holds the settings that few looks have. Copied from the state, never changed afterwards.
struct SoLookExtras {
    enum DepthFunction { NEVER, ALWAYS, LESS, LEQUAL, EQUAL, GEQUAL, GREATER, NOTEQUAL };
    /// The primitives that an offset applies to, as bits.
    enum OffsetStyle { OFFSET_FILLED = 1, OFFSET_LINES = 2, OFFSET_POINTS = 4 };

    std::vector<SoTextureStage> stages; ///< by unit

    float offsetFactor = 0; ///< times the slope of the surface
    float offsetUnits = 0;  ///< times the smallest step of depth; positive: away from the eye
    unsigned offsetStyles = 0;

    bool depthTest = true;
    bool depthWrite = true;
    DepthFunction depthFunction = LEQUAL;
    float depthRange[2] = {0, 1};

    DepthFunction alphaFunction = ALWAYS; ///< of the opacity and the value: what passes is drawn
    float alphaValue = 0.5f;

    std::shared_ptr<const SoProgramValues> program;

    bool hasDepthSettings() const
    {
        return !depthTest || !depthWrite || depthFunction != LEQUAL || depthRange[0] != 0
               || depthRange[1] != 1;
    }
    bool hasOffset() const { return offsetStyles != 0 && (offsetFactor != 0 || offsetUnits != 0); }
    /// Whether textures are to be drawn in another way than the first one by its model.
    KALMYR_API bool hasStages() const;
    /// Whether some unit but the first has an image.
    KALMYR_API bool hasMoreImages() const;
    friend KALMYR_API bool operator==(const SoLookExtras& a, const SoLookExtras& b);
};

class KALMYR_API SoLookExtrasElement final
    : public SoValueElement<SoLookExtrasElement, std::shared_ptr<const SoLookExtras>> {
public:
    static int getStackIndex();
    /// Null for plain looks.
    static const SoLookExtras* get(SoState* state)
    {
        return state->get<SoLookExtrasElement>().value().get();
    }
    /// A copy that is in force from now on, for `node` to change at once.
    static SoLookExtras& edit(SoState* state, const SoNode* node);
    /// The stage of a unit in such a copy.
    static SoTextureStage& editStage(SoState* state, const SoNode* node, int unit);
    /// Sets the texture of the present unit.
    static void setTexture(SoState* state, const SoNode* node, const SoTextureValues& values,
                           SoTextureStage::Kind kind = SoTextureStage::FLAT,
                           SoTextureValues::Wrap wrapR = SoTextureValues::REPEAT);
    /// Multiplies the texture matrix of the present unit.
    static void multTextureMatrix(SoState* state, const SoNode* node, const SbMatrix& matrix);
    /// Says where the coordinates of the present unit come from; GIVEN removes a plane.
    static void setCoordinates(SoState* state, const SoNode* node,
                               SoTextureStage::Coordinates coordinates);
    /// No texture in any unit, and the first unit as the present one.
    static void clearTextures(SoState* state, const SoNode* node);
    /// Whether what follows takes texture coordinates.
    static bool isTextured(SoState* state);
};
