#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Says how what follows is compared with what was drawn before, and whether it hides what is drawn
/// later. Opaque things are drawn in no defined order: what depends on the order belongs under an
/// SoAnnotation, or is transparent.
class KALMYR_API SoDepthBuffer : public SoNode {
    SO_NODE_HEADER(SoDepthBuffer)

public:
    enum Function { NEVER, ALWAYS, LESS, LEQUAL, EQUAL, GEQUAL, GREATER, NOTEQUAL };

    SoDepthBuffer();
    static void initClass();

    SoSFBool test;     ///< false: nothing that is nearer hides it
    SoSFBool write;    ///< false: it hides nothing that is farther
    SoSFEnum function; ///< of the new depth and that of the pixel
    SoSFVec2f range;   ///< of depths, from 0 at the nearest

    void doAction(SoAction* action) override;

protected:
    ~SoDepthBuffer() override;
};
