#pragma once

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

class SoNodeCopier;

/// Shows the content of a url.
///
/// The first child stands for the box that is known before the content is; the content, when there
/// is one, comes second. Children are not written with the scene.
class KALMYR_API SoWWWInline : public SoNode {
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
    /// Asks the callback. False when there is none.
    static bool fetch(const SbString& url, SoWWWInline* node);

    /// Reads the local file of an inline; installed by whoever reads scene files.
    using Loader = bool(SoWWWInline* node);
    static void setLoader(Loader* loader);
    /// Reads the content again. False when it cannot be had.
    bool requestURLData();

    /// The content, or null.
    SoNode* getChildData() const;
    void setChildData(SoNode* data);

    /// The folder that relative urls start from; set by readers of scene files.
    void setDirectory(const SbString& directory) { m_directory = directory; }
    const SbString& getDirectory() const { return m_directory; }

    SoChildList* getChildren() const override { return &m_children; }
    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoWWWInline() override;

private:
    mutable SoChildList m_children;
    SbString m_directory;
};
