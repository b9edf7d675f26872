#pragma once

#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

/// Lines of solid text in the font that is set. Fronts lie at z = 0 and face +z, backs lie `depth`
/// behind; the first line stands on the x axis. Material parts: fronts, sides, backs.
///
/// A profile shapes the sides in place of the depth, for edges that are bevelled or round. Where
/// it goes inwards by more than the strokes are wide, surfaces cross. What comes to more than
/// 4,000,000 faces is cut, with a warning.
class KALMYR_API SoText3 : public SoShape {
    SO_NODE_HEADER(SoText3)

public:
    enum Part { FRONT = 1, SIDES = 2, BACK = 4, ALL = 7 };
    enum Justification { LEFT = 1, RIGHT = 2, CENTER = 3 };

    SoText3();
    static void initClass();

    SoMFString string;
    SoSFFloat spacing; ///< of lines, in heights of the font
    SoSFEnum justification;
    SoMFFloat width; ///< of each line in object units, 0: as the font has it
    SoSFBitMask parts;
    SoSFFloat depth; ///< object units; 0 or less: flat, without sides
    /// From the fronts to the backs, object units: how far behind z = 0, and how far outwards from
    /// the letter (negative: inwards). Fewer than two points: straight over the depth.
    SoMFVec2f profile;

protected:
    ~SoText3() override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};
