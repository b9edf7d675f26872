#pragma once

#include <kalmyr/nodes/SoSeparator.h>

/// A separator whose content is drawn on top of everything else, without being hidden by depth.
class KALMYR_API SoAnnotation : public SoSeparator {
    SO_NODE_HEADER(SoAnnotation)

public:
    SoAnnotation();
    static void initClass();

protected:
    ~SoAnnotation() override;
};
