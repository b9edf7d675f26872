#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <cstdio>
#include <functional>
#include <string>

/// A file that is written anew and takes its name only when it is complete: until commit() the old
/// file stands as it was, whatever happens to the program.
///
/// The bytes go into a hidden file in the same folder, `.NAME.saving`, which is renamed at the end.
/// It is locked while it is written: what a killed program left behind is recognised by the missing
/// lock, and removed by the next one that writes the same file. Permissions of the old file are
/// kept, and symbolic links are followed and stay. Pipes and devices cannot be replaced and are
/// written in place. Where a new file cannot be made beside the old one, opening fails: nothing is
/// ever written into an old file.
class KALMYRBASE_API SbFileReplacement {
public:
    /// A whole file, written by `put`, which posts an error itself when it returns false; whatever
    /// else fails is posted with the file's name and the system's reason. False when the file was
    /// not replaced.
    static bool write(const SbString& path, const std::function<bool(std::FILE*)>& put);

    SbFileReplacement() = default;
    /// Discards what was not committed.
    ~SbFileReplacement() { discard(); }
    SbFileReplacement(const SbFileReplacement&) = delete;
    SbFileReplacement& operator=(const SbFileReplacement&) = delete;

    /// Begins; discards what was open before. False, with the system's reason, when it cannot.
    bool open(const SbString& path, SbString* error = nullptr);
    bool isOpen() const { return m_file != nullptr; }
    /// To write to; null when not open. Not to be closed.
    std::FILE* getFile() const { return m_file; }
    /// Brings the bytes to the disk and the file to its name. False, with the reason, when any of
    /// it failed: the old file is as it was then.
    bool commit(SbString* error = nullptr);
    /// Ends without changing the old file.
    void discard();

private:
    bool openBeside(const std::string& target, SbString* error);

    std::FILE* m_file = nullptr;
    std::string m_target;
    std::string m_temporary; ///< empty when written in place
};
