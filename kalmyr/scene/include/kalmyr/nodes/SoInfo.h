#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Carries a text, such as a comment or an author, through files; it has no effect.
class KALMYR_API SoInfo : public SoNode {
    SO_NODE_HEADER(SoInfo)

public:
    SoInfo();
    static void initClass();

    SoSFString string;

protected:
    ~SoInfo() override;
};
