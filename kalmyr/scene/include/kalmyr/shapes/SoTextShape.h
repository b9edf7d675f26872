#pragma once

#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

namespace kalmyr::detail {
struct TextLayout;
}

/// Base of lines of text in the font that is set; the first line stands on the x axis.
///
/// Characters are UTF-8. Each line is laid out by the Unicode bidirectional algorithm in the
/// direction of its first letter, shaped as its scripts want, and what the font lacks comes from
/// the nearest font of the system that has it. What no font has is a box. Texts of more than 10,000
/// characters are cut.
class KALMYR_API SoTextShape : public SoShape {
    SO_NODE_HEADER(SoTextShape)

public:
    enum Justification { LEFT = 1, RIGHT = 2, CENTER = 3 };

    static void initClass();

    SoMFString string;
    SoSFFloat spacing;      ///< of lines, in heights of the font
    SoSFEnum justification; ///< which end of each line is at the origin

    /// An SoTextDetail.
    std::unique_ptr<SoDetail> createDetail(SoState* state, const SoGeometry& geometry,
                                           Primitive primitive, std::size_t index,
                                           const SbVec3f& point) override;

protected:
    SoTextShape();
    ~SoTextShape() override;

    /// The text as the fields and the state have it.
    virtual void fillLayout(SoState* state, kalmyr::detail::TextLayout& text) const;
    std::uint64_t stateKey(SoState* state) const override;
};
