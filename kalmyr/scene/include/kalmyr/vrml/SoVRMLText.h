#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

namespace kalmyr::detail {
struct TextLayout;
}

/// Lines of text, flat at z = 0, in the look that `fontStyle` describes.
///
/// Rows whose style runs from left to right are laid out by the Unicode bidirectional algorithm;
/// where it runs from right to left every character does, Latin ones too. Characters of columns
/// stand one by one, with their marks. Each line is stretched to its `length`, and all of them
/// shrink when the longest exceeds `maxExtent`.
class KALMYR_API SoVRMLText : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLText)

public:
    SoVRMLText();
    static void initClass();

    SoSFNode fontStyle;
    SoMFFloat length;
    SoSFFloat maxExtent;
    SoMFString string;

    /// An SoTextDetail.
    std::unique_ptr<SoDetail> createDetail(SoState* state, const SoGeometry& geometry,
                                           Primitive primitive, std::size_t index,
                                           const SbVec3f& point) override;

protected:
    ~SoVRMLText() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;

private:
    void fillLayout(kalmyr::detail::TextLayout& text) const;
};
