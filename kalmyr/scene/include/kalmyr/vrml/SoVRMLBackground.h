#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

#include <memory>

/// Sky and ground colours and panorama pictures behind the scene.
///
/// The pictures stand on the sides of a box around the eye, over the colours, which show through
/// where pictures are transparent or missing. The files are read when first needed; a fault is
/// posted once.
class KALMYR_API SoVRMLBackground : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLBackground)

public:
    SoVRMLBackground();
    static void initClass();

    SoMFFloat groundAngle;
    SoMFColor groundColor;
    SoMFString backUrl;
    SoMFString bottomUrl;
    SoMFString frontUrl;
    SoMFString leftUrl;
    SoMFString rightUrl;
    SoMFString topUrl;
    SoMFFloat skyAngle;
    SoMFColor skyColor;

    /// Sides of the box, seen from the eye along -z.
    enum Side { FRONT, BACK, LEFT, RIGHT, TOP, BOTTOM, NUM_SIDES };
    /// The picture of a side; a null image when there is none.
    const SbImage& getPicture(int side);
    /// The folder in which relative file names are looked for; set by readers of scene files.
    void setDirectory(const SbString& directory);
    const SbString& getDirectory() const { return m_directory; }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoVRMLBackground() override;

private:
    struct Pictures;

    SbString m_directory;
    std::unique_ptr<Pictures> m_pictures;
};
