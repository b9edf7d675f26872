#pragma once

#include <kalmyr/vrml/SoVRMLParent.h>

/// Children that lead to a file when they are clicked.
class KALMYR_API SoVRMLAnchor : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLAnchor)

public:
    SoVRMLAnchor();
    static void initClass();

    SoSFString description;
    SoMFString parameter;
    SoMFString url;

    /// Called with each url in order, until it returns true: it followed that one. Null: links
    /// lead nowhere, and clicks pass by.
    using FetchURLCallBack = bool(const SbString& url, void* data, SoVRMLAnchor* node);
    static void setFetchURLCallBack(FetchURLCallBack* callback, void* data);
    /// False when there is no callback, or when it followed no url.
    bool follow();

protected:
    ~SoVRMLAnchor() override;
};
