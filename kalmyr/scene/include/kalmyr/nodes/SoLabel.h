#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Marks a place in the graph for programs that search it; it has no effect.
class KALMYR_API SoLabel : public SoNode {
    SO_NODE_HEADER(SoLabel)

public:
    SoLabel();
    static void initClass();

    SoSFName label;

protected:
    ~SoLabel() override;
};
