#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbString.h>

/// The picture in a file that a node names, for nodes to hold. The file is read when the picture is
/// first asked for, and again when the name or the folder has changed; several threads may ask.
class KALMYR_API SoPictureFile {
public:
    /// The folder in which relative names are looked for besides.
    void setDirectory(const SbString& directory);
    const SbString& getDirectory() const { return m_directory; }
    /// Returns whether the file is there, or the name is empty. A file that is not is not asked for
    /// again until the name changes.
    bool find(const SbString& name);
    /// Returns the picture in the file; `otherwise` for an empty name, or when the file cannot be
    /// read: that is posted once, as an error of `kind`.
    const SbImage& get(const SbString& name, const SbImage& otherwise, const char* kind);

private:
    SbString m_directory;
    SbString m_loadedName; ///< that m_loaded belongs to
    SbImage m_loaded;
};
