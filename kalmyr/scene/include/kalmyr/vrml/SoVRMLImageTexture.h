#pragma once

#include <kalmyr/vrml/SoVRMLTexture.h>

#include <span>
#include <vector>

class SoNodeCopier;

/// A picture from the first of its files that can be read. It is read when it is first needed; when
/// no file can be read an error is posted once, and the shape shows no texture.
class KALMYR_API SoVRMLImageTexture : public SoVRMLTexture {
    SO_NODE_HEADER(SoVRMLImageTexture)

public:
    SoVRMLImageTexture();
    static void initClass();

    SoMFString url;

    const SbImage& getPicture() override;
    /// The folder that relative urls start from; set by readers of scene files.
    void setDirectory(const SbString& directory);
    /// Whether one of the urls names a file that is there, or there are no urls. Those that are not
    /// are not asked for again until the urls change.
    bool findPicture();
    const SbString& getDirectory() const { return m_directory; }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoVRMLImageTexture() override;

private:
    bool load(std::span<const SbString> urls, SbString& reason);

    SbString m_directory;
    std::vector<SbString> m_loadedUrls; ///< that m_loaded belongs to
    SbImage m_loaded;
    bool m_tried = false;
};
