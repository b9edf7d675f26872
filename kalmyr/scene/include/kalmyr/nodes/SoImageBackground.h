#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/core/SoPictureFile.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoBackground.h>

/// Fills the view behind the scene with a picture: from `filename`, or from `image` when that is
/// empty. Where the picture does not reach, the background color of the view stays.
///
/// The file is read when the picture is first needed; the fault is posted once.
class KALMYR_API SoImageBackground : public SoBackground {
    SO_NODE_HEADER(SoImageBackground)

public:
    enum Style {
        STRETCH, ///< to the size of the view
        FIT,     ///< as large as it is seen whole, in its own proportions
        FILL,    ///< as small as it fills the view, in its own proportions
        CENTER,  ///< pixel by pixel, in the middle
        TILE     ///< pixel by pixel, repeated from the lower left corner on
    };

    SoImageBackground();
    static void initClass();

    SoSFString filename;
    SoSFImage image;
    SoSFEnum style;

    /// The picture that the node shows now; a null image when there is none.
    const SbImage& getPicture();
    /// The folder in which relative file names are looked for; set by readers of scene files.
    void setDirectory(const SbString& directory) { m_file.setDirectory(directory); }
    const SbString& getDirectory() const { return m_file.getDirectory(); }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoImageBackground() override;

private:
    SoPictureFile m_file;
};
