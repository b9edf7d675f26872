#pragma once

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

class SoNodeCopier;

/// Shows the content of another scene file, which is read together with the file that names it.
///
/// The content is not written with the scene.
class KALMYR_API SoFile : public SoNode {
    SO_NODE_HEADER(SoFile)

public:
    SoFile();
    static void initClass();

    SoSFString name; ///< of the file; relative to the file that holds the node

    /// Lets searches look at the content of all file nodes; they do not at first. Process-wide.
    static void setSearchOK(bool on);
    static bool getSearchOK();

    /// Replaces the content; null takes it away.
    void setChildData(SoNode* data);

    SoChildList* getChildren() const override { return &m_children; }
    bool affectsState() const override { return true; }
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoFile() override;

private:
    mutable SoChildList m_children;
};
