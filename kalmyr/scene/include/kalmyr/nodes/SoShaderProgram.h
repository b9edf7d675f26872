#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoValueFields.h>

/// Draws what follows with stages of its own, in place of the standard ones; an empty
/// `shaderObject` ends that. docs/toolkit/rendering.md lists what texts find: attributes, blocks of
/// view and lights, and the functions of the standard look.
///
/// Errors of the compiler are told once, with the node's type, name and the line in its own text,
/// and the standard look is drawn. Wide and dashed lines, and vector drawings, keep the standard
/// look.
class KALMYR_API SoShaderProgram : public SoNode {
    SO_NODE_HEADER(SoShaderProgram)

public:
    SoShaderProgram();
    static void initClass();

    SoMFNode shaderObject; ///< at most one for each stage counts: the last

    void doAction(SoAction* action) override;

protected:
    ~SoShaderProgram() override;
};
