#pragma once

#include <kalmyr/nodes/SoGroup.h>

/// A group that keeps only the transformations of its children to itself.
class KALMYR_API SoTransformSeparator : public SoGroup {
    SO_NODE_HEADER(SoTransformSeparator)

public:
    SoTransformSeparator();
    static void initClass();

    void doAction(SoAction* action) override;

protected:
    ~SoTransformSeparator() override;
};
