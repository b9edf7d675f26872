#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoInlineNode.h>

/// Shows the content of a url.
class KALMYR_API SoWWWInline : public SoInlineNode {
    SO_NODE_HEADER(SoWWWInline)

public:
    SoWWWInline();
    static void initClass();

    SoSFString name; ///< the url
    SoSFVec3f bboxSize;
    SoSFVec3f bboxCenter;

    /// Gets the content of a url that is no local file; hands it to setChildData() when it has it.
    using FetchURLCallBack = void(const SbString& url, void* data, SoWWWInline* node);
    static void setFetchURLCallBack(FetchURLCallBack* callback, void* data);
    /// Null when there is none.
    static FetchURLCallBack* getFetchURLCallBack();
    static void* getFetchURLData();
    /// Asks the callback. False when there is none.
    static bool fetch(const SbString& url, SoWWWInline* node);

    /// Reads the local file of an inline; installed by whoever reads scene files.
    using Loader = bool(SoWWWInline* node);
    static void setLoader(Loader* loader);
    /// Reads the content again. False when it cannot be had.
    bool requestURLData();

protected:
    ~SoWWWInline() override;
    bool load() override;
};
