#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/core/SoPictureFile.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

/// A picture that faces the screen, at the origin of object space and of a fixed size in pixels.
///
/// In its own size every pixel of the picture is one of the screen. The colours are the picture's
/// own, alpha included; nothing of light and material changes them. The picture is from `filename`,
/// or from `image` when that is empty; a file is read when first needed, as for SoTexture2.
///
/// A pick meets the rectangle. The box is that of the pixels where a camera says where they are,
/// else the origin.
class KALMYR_API SoImage : public SoShape {
    SO_NODE_HEADER(SoImage)

public:
    enum HorAlignment { LEFT, CENTER, RIGHT };
    enum VertAlignment { BOTTOM, HALF, TOP };

    SoImage();
    static void initClass();

    SoSFString filename;
    SoSFImage image;
    /// Pixels; -1: as many as the picture has. 0 or more than kMaxSize: nothing is drawn.
    SoSFInt32 width;
    SoSFInt32 height;
    SoSFEnum horAlignment; ///< which part of the picture is at the origin
    SoSFEnum vertAlignment;

    static constexpr int kMaxSize = 65536;

    /// The picture that the node shows now; a null image when there is none.
    const SbImage& getPicture();
    /// The folder in which relative file names are looked for; set by readers of scene files.
    void setDirectory(const SbString& directory) { m_file.setDirectory(directory); }
    const SbString& getDirectory() const { return m_file.getDirectory(); }
    /// Whether the file that `filename` names is there, or none is named. A file that is not is not
    /// asked for again until the name changes.
    bool findPicture() { return m_file.find(filename.getValue()); }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoImage() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;

private:
    SoPictureFile m_file;
};
