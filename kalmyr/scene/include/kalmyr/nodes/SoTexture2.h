#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/core/SoPictureFile.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Puts a picture on the shapes that follow: from `filename`, or from `image` when that is empty or
/// its file cannot be read.
///
/// The file is read when the picture is first needed; the fault is posted once as a read error. The
/// name is looked for as it stands, then beside the scene file.
class KALMYR_API SoTexture2 : public SoNode {
    SO_NODE_HEADER(SoTexture2)

public:
    enum Wrap { REPEAT = 0x2901, CLAMP = 0x2900 };
    enum Model { MODULATE = 0x2100, DECAL = 0x2101, BLEND = 0x0be2, REPLACE = 0x1e01 };

    SoTexture2();
    static void initClass();

    SoSFString filename;
    SoSFImage image;
    SoSFEnum wrapS;
    SoSFEnum wrapT;
    SoSFEnum model;
    SoSFColor blendColor;

    void doAction(SoAction* action) override;

    /// The picture that the node shows now; a null image when there is none.
    const SbImage& getPicture();
    /// The folder in which relative file names are looked for; set by readers of scene files.
    void setDirectory(const SbString& directory) { m_file.setDirectory(directory); }
    /// Whether the file that `filename` names is there, or none is named. A file that is not is not
    /// asked for again until the name changes.
    bool findPicture() { return m_file.find(filename.getValue()); }
    const SbString& getDirectory() const { return m_file.getDirectory(); }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoTexture2() override;

private:
    SoPictureFile m_file;
};
