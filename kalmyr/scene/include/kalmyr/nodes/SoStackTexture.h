#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoTextureUnits.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

#include <vector>

/// Base of the textures that consist of several pictures: from `filenames`, or from the slices of
/// `images` when those are empty.
///
/// The files are read when the pictures are first needed; a fault is posted once, and the shapes
/// show no texture. All pictures must have one size and number of components.
class KALMYR_API SoStackTexture : public SoNode {
    SO_NODE_HEADER(SoStackTexture)

public:
    enum Wrap { REPEAT = 0x2901, CLAMP = 0x2900 };
    enum Model { MODULATE = 0x2100, DECAL = 0x2101, BLEND = 0x0be2, REPLACE = 0x1e01 };

    static void initClass();

    SoMFString filenames;
    SoSFImage images; ///< a volume
    SoSFEnum model;
    SoSFColor blendColor;

    /// Returns the pictures that the node shows now, as a volume; a null image when there are none.
    const SbImage& getPictures();
    /// The folder in which relative file names are looked for; set by readers of scene files.
    void setDirectory(const SbString& directory);
    const SbString& getDirectory() const { return m_directory; }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    SoStackTexture();
    ~SoStackTexture() override;

    /// Sets the texture of the present unit.
    void set(SoAction* action, SoTextureStage::Kind kind, int wrapS, int wrapT, int wrapR);
    /// Whether pictures of this size and number will do; says in `reason` why not.
    virtual bool isUsable(const SbImage& image, SbString& reason) const = 0;

private:
    bool load(SbString& reason);

    SbString m_directory;
    std::vector<SbString> m_loadedNames;
    SbImage m_loaded;
    bool m_tried = false;
    const unsigned char* m_given = nullptr; ///< pixels of `images` that were looked at
};
