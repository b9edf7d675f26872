#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Font of the texts that follow.
class KALMYR_API SoFont : public SoNode {
    SO_NODE_HEADER(SoFont)

public:
    SoFont();
    static void initClass();
    void doAction(SoAction* action) override;

    SoSFName name;
    SoSFFloat size; ///< points for flat text, object units for solid text

protected:
    ~SoFont() override;
};
