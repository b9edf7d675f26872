#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Values for an input of the shader programs that draw the vertex shapes that follow: one for each
/// coordinate, as normals and colors of indexed shapes go by coordinate. The input is declared by
/// the toolkit, float or vec2 to vec4, and HAS_ and its name is defined. Up to four inputs are
/// passed on.
class KALMYR_API SoVertexAttribute : public SoNode {
    SO_NODE_HEADER(SoVertexAttribute)

public:
    SoVertexAttribute();
    static void initClass();

    SoSFString name;      ///< of the input, a word of letters, digits and _
    SoSFInt32 components; ///< of each value, 1 to 4
    SoMFFloat value;      ///< all components one after another

    void doAction(SoAction* action) override;

protected:
    ~SoVertexAttribute() override;
};
