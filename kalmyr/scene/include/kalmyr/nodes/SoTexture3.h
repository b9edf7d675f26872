#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoStackTexture.h>

/// Puts a volume of pixels on the shapes that follow: coordinate r goes from the first picture to
/// the last. Coordinates come from SoTextureCoordinate3 or a function; flat ones show the first
/// pictures.
class KALMYR_API SoTexture3 : public SoStackTexture {
    SO_NODE_HEADER(SoTexture3)

public:
    SoTexture3();
    static void initClass();

    SoSFEnum wrapR;
    SoSFEnum wrapS;
    SoSFEnum wrapT;

    void doAction(SoAction* action) override;

protected:
    ~SoTexture3() override;
    bool isUsable(const SbImage& image, SbString& reason) const override;
};
