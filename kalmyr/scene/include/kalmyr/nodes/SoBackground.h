#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>

/// Base of what is drawn behind the scene. Where it stands in the graph does not matter; the last
/// one that is reached wins.
class KALMYR_API SoBackground : public SoNode {
    SO_NODE_HEADER(SoBackground)

public:
    static void initClass();

protected:
    SoBackground();
    ~SoBackground() override;
};
