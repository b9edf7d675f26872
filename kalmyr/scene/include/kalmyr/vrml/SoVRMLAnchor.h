#pragma once

#include <kalmyr/vrml/SoVRMLParent.h>

/// Children that lead to a file when they are clicked. The link is kept; nothing follows it here.
class KALMYR_API SoVRMLAnchor : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLAnchor)

public:
    SoVRMLAnchor();
    static void initClass();

    SoSFString description;
    SoMFString parameter;
    SoMFString url;

protected:
    ~SoVRMLAnchor() override;
};
