#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoTextureUnits.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Chooses the texture unit that the texture nodes after it set: texture, transform, coordinates
/// and their function. Units from 0 to 7 lie over each other in the order of their numbers.
///
/// Units without coordinates of their own take those of the first. How a texture is mixed with what
/// the units before gave is said by its own model or, in front of that, by `mode` and `alphaMode`:
/// "arg1" is the texture, "arg2" what `source` names. Other numbers than 0 to 7 are taken as the
/// nearest.
class KALMYR_API SoTextureUnit : public SoNode {
    SO_NODE_HEADER(SoTextureUnit)

public:
    /// Numbers as SoTextureStage has them.
    enum Mode { MODEL = SoTextureStage::AS_MODEL }; ///< and the others there
    enum Source {
        CURRENT = SoTextureStage::CURRENT,
        DIFFUSE = SoTextureStage::DIFFUSE,
        SPECULAR = SoTextureStage::SPECULAR,
        FACTOR = SoTextureStage::FACTOR
    };
    enum Function {
        NONE = SoTextureStage::NONE,
        COMPLEMENT = SoTextureStage::COMPLEMENT,
        ALPHAREPLICATE = SoTextureStage::ALPHAREPLICATE
    };

    SoTextureUnit();
    static void initClass();

    SoSFInt32 unit;
    SoSFEnum mode;      ///< of the colors
    SoSFEnum alphaMode; ///< of the opacity; MODEL: as `mode`
    SoSFEnum source;
    SoSFEnum function;    ///< of the result
    SoSFColorRGBA factor; ///< the color that FACTOR and BLENDFACTORALPHA name

    void doAction(SoAction* action) override;

protected:
    ~SoTextureUnit() override;
};
