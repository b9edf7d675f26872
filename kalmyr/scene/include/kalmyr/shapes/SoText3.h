#pragma once

#include <kalmyr/shapes/SoTextShape.h>

/// Lines of solid text in the font that is set. Fronts lie at z = 0 and face +z, backs lie `depth`
/// behind. Material parts: fronts, sides, backs.
///
/// A profile shapes the sides in place of the depth, for edges that are bevelled or round. Where
/// it goes inwards by more than the strokes are wide, surfaces cross. What comes to more than
/// 4,000,000 faces is cut, with a warning.
class KALMYR_API SoText3 : public SoTextShape {
    SO_NODE_HEADER(SoText3)

public:
    enum Part { FRONT = 1, SIDES = 2, BACK = 4, ALL = 7 };

    SoText3();
    static void initClass();

    SoMFFloat width; ///< of each line in object units, 0: as the font has it
    SoSFBitMask parts;
    SoSFFloat depth; ///< object units; 0 or less: flat, without sides
    /// From the fronts to the backs, object units: how far behind z = 0, and how far outwards from
    /// the letter (negative: inwards). Fewer than two points: straight over the depth.
    SoMFVec2f profile;

protected:
    ~SoText3() override;
    void fillLayout(SoState* state, kalmyr::detail::TextLayout& text) const override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};
