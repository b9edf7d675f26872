#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Tessellation effort of the curved shapes that follow.
class KALMYR_API SoComplexity : public SoNode {
    SO_NODE_HEADER(SoComplexity)

public:
    SoComplexity();
    static void initClass();

    SoSFFloat value; ///< 0 coarsest to 1 finest

    void doAction(SoAction* action) override;

protected:
    ~SoComplexity() override;
};
