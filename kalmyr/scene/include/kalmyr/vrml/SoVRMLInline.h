#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoInlineNode.h>

/// Shows the content of another file, which is read together with the file that holds the inline.
class KALMYR_API SoVRMLInline : public SoInlineNode {
    SO_NODE_HEADER(SoVRMLInline)

public:
    SoVRMLInline();
    static void initClass();

    SoMFString url;
    SoSFVec3f bboxCenter;
    SoSFVec3f bboxSize; ///< -1: unknown

    /// Gets the content of a url that is no local file; hands it to setChildData() when it has it.
    using FetchURLCallBack = void(const SbString& url, void* data, SoVRMLInline* node);
    static void setFetchURLCallBack(FetchURLCallBack* callback, void* data);
    /// Null when there is none.
    static FetchURLCallBack* getFetchURLCallBack();
    static void* getFetchURLData();
    /// Asks the callback. False when there is none.
    static bool fetch(const SbString& url, SoVRMLInline* node);

    /// Reads the local file of an inline; installed by whoever reads scene files.
    using Loader = bool(SoVRMLInline* node);
    static void setLoader(Loader* loader);
    /// Reads the content again. False, with an error posted, when it cannot be had.
    bool requestChildrenFromURL();

protected:
    ~SoVRMLInline() override;
    bool load() override;
};
