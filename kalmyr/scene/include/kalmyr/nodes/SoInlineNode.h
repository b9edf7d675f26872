#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/sensors/SoDelayQueueSensor.h>

class SoNodeCopier;

/// Base of the nodes that show the content of another file. No type of its own.
///
/// The first child stands for the box that is known before the content is; the content, when there
/// is one, comes second. Children are not written with the scene.
class KALMYR_API SoInlineNode : public SoNode {
public:
    /// When the files of inlines are read: with the file that holds them, or when something first
    /// traverses them; then the content comes with the next processing of the delay queue.
    enum Loading { WITH_FILE, ON_DEMAND };
    static void setLoading(Loading loading);
    static Loading getLoading();

    /// The content, or null.
    SoNode* getChildData() const;
    void setChildData(SoNode* data);

    /// The folder that relative urls start from; set by readers of scene files.
    void setDirectory(const SbString& directory) { m_directory = directory; }
    const SbString& getDirectory() const { return m_directory; }

    /// For readers: the content is to be read when it is first needed.
    void setPending() { m_pending = true; }
    bool isPending() const { return m_pending; }

    SoChildList* getChildren() const override { return &m_children; }
    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    SoInlineNode();
    ~SoInlineNode() override;
    /// To be called at the end of the constructor of the concrete class.
    void addBox();
    /// Reads the content again; false when it cannot be had.
    virtual bool load() = 0;
    /// Method of the bounding box action: `box` counts while there is no content.
    void measure(SoAction* action, const SbBox3f& box);

private:
    mutable SoChildList m_children;
    SbString m_directory;
    SoOneShotSensor m_loader; ///< runs when the content has been asked for
    bool m_pending = false;
};
