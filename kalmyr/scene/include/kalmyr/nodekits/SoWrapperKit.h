#pragma once

#include <kalmyr/nodekits/SoSeparatorKit.h>

/// Any graph as `contents`, with the properties of a separator kit around it.
class KALMYR_API SoWrapperKit : public SoSeparatorKit {
    SO_KIT_HEADER(SoWrapperKit)

public:
    SoWrapperKit();
    static void initClass();

    SoSFNode localTransform;
    SoSFNode contentsSeparator; ///< private
    SoSFNode contents;

protected:
    ~SoWrapperKit() override;
};
