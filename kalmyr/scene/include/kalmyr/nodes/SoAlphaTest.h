#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Leaves out the pixels of what follows whose opacity does not pass a comparison with a value:
/// holes in leaves and fences that hide nothing, in place of transparency.
class KALMYR_API SoAlphaTest : public SoNode {
    SO_NODE_HEADER(SoAlphaTest)

public:
    enum Function { NEVER, ALWAYS, LESS, LEQUAL, EQUAL, GEQUAL, GREATER, NOTEQUAL };

    SoAlphaTest();
    static void initClass();

    SoSFEnum function;
    SoSFFloat value;

    void doAction(SoAction* action) override;

protected:
    ~SoAlphaTest() override;
};
