#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>

/// Base of nodes that change the space of what follows them in their group.
class KALMYR_API SoTransformation : public SoNode {
    SO_NODE_HEADER(SoTransformation)

public:
    static void initClass();

protected:
    SoTransformation();
    ~SoTransformation() override;
};
