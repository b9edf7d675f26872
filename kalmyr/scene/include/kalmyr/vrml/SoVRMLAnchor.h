#pragma once

#include <kalmyr/vrml/SoVRMLParent.h>

#include <string_view>

/// Children that lead to a file when they are clicked.
class KALMYR_API SoVRMLAnchor : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLAnchor)

public:
    SoVRMLAnchor();
    static void initClass();

    SoSFString description;
    SoMFString parameter;
    SoMFString url;

    /// Called with each url in order, until it returns true: it followed that one. Null: links to
    /// other files lead nowhere, and clicks on them pass by.
    using FetchURLCallBack = bool(const SbString& url, void* data, SoVRMLAnchor* node);
    static void setFetchURLCallBack(FetchURLCallBack* callback, void* data);
    /// Follows the first url that the callback takes, or that is "#" and the name of a viewpoint of
    /// the same world, which is bound. False when there is none.
    bool follow();

protected:
    ~SoVRMLAnchor() override;

private:
    bool bindViewpoint(std::string_view address) const;
};
