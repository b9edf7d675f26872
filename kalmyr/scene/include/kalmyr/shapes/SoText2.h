#pragma once

#include <kalmyr/shapes/SoTextShape.h>

/// Lines of text that face the screen: the origin is where the shape stands, and the size of the
/// font is in pixels whatever the distance.
///
/// Drawn smooth, pixel by pixel, in the material's diffuse colour without light. A pick meets the
/// rectangles of the lines. The box is that of the pixels where a camera says where they are, else
/// the origin. Fonts of more than kMaxSize pixels show nothing, with a warning; a text that comes
/// to more than 16 million pixels is cut.
class KALMYR_API SoText2 : public SoTextShape {
    SO_NODE_HEADER(SoText2)

public:
    static constexpr float kMaxSize = 1000;

    SoText2();
    static void initClass();

    std::unique_ptr<SoDetail> createDetail(SoState* state, const SoGeometry& geometry,
                                           Primitive primitive, std::size_t index,
                                           const SbVec3f& point) override;

protected:
    ~SoText2() override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
};
