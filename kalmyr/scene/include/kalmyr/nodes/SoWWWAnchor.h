#pragma once

#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoSeparator.h>

/// A separator that leads to another scene when it is clicked.
class KALMYR_API SoWWWAnchor : public SoSeparator {
    SO_NODE_HEADER(SoWWWAnchor)

public:
    enum Map { NONE, POINT };

    SoWWWAnchor();
    static void initClass();

    SoSFString name; ///< the url
    SoSFString description;
    SoSFEnum map; ///< POINT: the picked point is added to the url

    /// Called by whoever lets people click, with the url.
    using FetchURLCallBack = void(const SbString& url, void* data, SoWWWAnchor* node);
    static void setFetchURLCallBack(FetchURLCallBack* callback, void* data);
    /// Asks the callback for the node's url. False when there is none.
    bool follow();

protected:
    ~SoWWWAnchor() override;
};
