#pragma once

#include <kalmyr/vrml/SoVRMLParent.h>

/// Children without any effect of its own.
class KALMYR_API SoVRMLGroup : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLGroup)

public:
    SoVRMLGroup();
    static void initClass();

protected:
    ~SoVRMLGroup() override;
};
