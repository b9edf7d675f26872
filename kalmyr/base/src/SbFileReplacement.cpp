#include <kalmyr/base/SbFileReplacement.h>

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoError.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace {

constexpr int kMaxLinks = 40;
constexpr int kMaxWriters = 100;          ///< of one file at the same time
constexpr std::size_t kMaxNameUsed = 200; ///< of the file's name; a name may have 255 bytes

bool fail(SbString* error, int reason)
{
    if (error)
        *error = std::generic_category().message(reason);
    return false;
}

/// Where the file itself is: links are followed, to files that do not exist yet as well.
fs::path resolve(const SbString& path)
{
    std::error_code ignored;
    fs::path target(std::u8string(path.begin(), path.end()));
    for (int i = 0; i < kMaxLinks && fs::is_symlink(fs::symlink_status(target, ignored)); ++i)
        target = target.parent_path() / fs::read_symlink(target, ignored);
    const fs::path whole = fs::weakly_canonical(target, ignored);
    return whole.empty() ? target : whole;
}

std::string nameBeside(const fs::path& target, int number)
{
    std::string name = '.' + target.filename().string().substr(0, kMaxNameUsed) + ".saving";
    if (number > 0)
        name += '-' + std::to_string(number);
    return (target.parent_path() / name).string();
}

#if !defined(_WIN32)

/// Whether the name still leads to the open file.
bool isNamed(int file, const std::string& name)
{
    struct stat opened {
    }, named{};
    return fstat(file, &opened) == 0 && lstat(name.c_str(), &named) == 0
           && opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

/// Removes a file that nobody is writing any more. False when somebody is, or it is not ours.
bool removeStray(const std::string& name)
{
    const int file = ::open(name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return errno == ENOENT;
    struct stat status {};
    const bool isStray = fstat(file, &status) == 0 && S_ISREG(status.st_mode)
                         && status.st_uid == geteuid() && flock(file, LOCK_EX | LOCK_NB) == 0;
    // A file is removed or renamed only under its lock, so the name cannot move on in between.
    if (isStray && isNamed(file, name))
        unlink(name.c_str());
    ::close(file);
    return isStray;
}

/// A new locked file, or -1. `taken` tells whether the name is in use by another writer.
int createLocked(const std::string& name, bool& taken)
{
    taken = false;
    for (;;) {
        const int file = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file < 0 && errno == EEXIST) {
            if (removeStray(name))
                continue;
            taken = true;
            return -1;
        }
        if (file < 0)
            return -1;
        // File systems without locks: nobody takes the file for a stray there either.
        const bool locked = flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
        if (locked && isNamed(file, name))
            return file;
        ::close(file); // taken for a stray before it was locked
    }
}

void syncFolder(const fs::path& folder)
{
    const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file >= 0) {
        fsync(file);
        ::close(file);
    }
}

#endif

} // namespace

bool SbFileReplacement::write(const SbString& path, const std::function<bool(std::FILE*)>& put)
{
    SbFileReplacement file;
    SbString reason;
    if (!file.open(path, &reason)) {
        SoError::post("%s: cannot be created: %s", path.getString(), reason.getString());
        return false;
    }
    if (!put(file.getFile()))
        return false;
    if (file.commit(&reason))
        return true;
    SoError::post("%s: cannot be written: %s", path.getString(), reason.getString());
    return false;
}

bool SbFileReplacement::open(const SbString& path, SbString* error)
{
    discard();
    const fs::path target = resolve(path);
    std::error_code failed;
    const fs::file_status status = fs::status(target, failed);
    const bool isThere = fs::exists(status);
    if (isThere && !fs::is_regular_file(status)) {
        m_file = SbFileHelper::open(path, "wb", error); // refuses folders
        return m_file != nullptr;
    }
    if (isThere && !SbFileHelper::isAccessible(SbString(target.string()), SbFileHelper::WRITABLE))
        return fail(error, errno); // that of the system: also a file system that is read-only
    m_target = target.string();
    if (!openBeside(m_target, error)) {
        m_target.clear();
        return false;
    }
    return true;
}

#if defined(_WIN32)

bool SbFileReplacement::openBeside(const std::string& target, SbString* error)
{
    for (int number = 0; number < kMaxWriters; ++number) {
        m_temporary = nameBeside(target, number);
        m_file = SbFileHelper::open(SbString(m_temporary), "wbx", error);
        if (m_file || errno != EEXIST)
            break;
    }
    if (!m_file)
        m_temporary.clear();
    return m_file != nullptr;
}

#else

bool SbFileReplacement::openBeside(const std::string& target, SbString* error)
{
    int file = -1;
    bool taken = true;
    for (int number = 0; taken && number < kMaxWriters; ++number) {
        m_temporary = nameBeside(target, number);
        file = createLocked(m_temporary, taken);
    }
    if (file < 0) {
        const int reason = taken ? EBUSY : errno;
        m_temporary.clear();
        return fail(error, reason);
    }
    struct stat old {};
    if (stat(target.c_str(), &old) == 0) {
        // The owner can be kept by the administrator only; losing it is no reason not to save.
        if (fchown(file, old.st_uid, old.st_gid) != 0)
            errno = 0;
        fchmod(file, old.st_mode & 07777);
    }
    m_file = fdopen(file, "wb");
    return true;
}

#endif

bool SbFileReplacement::commit(SbString* error)
{
    if (!m_file)
        return fail(error, EBADF);
    bool written = std::fflush(m_file) == 0 && !std::ferror(m_file);
#if !defined(_WIN32)
    if (written && !m_temporary.empty())
        written = fsync(fileno(m_file)) == 0;
#endif
    if (!written) {
        const int reason = errno ? errno : EIO;
        discard();
        return fail(error, reason);
    }
    if (m_temporary.empty())
        return std::fclose(std::exchange(m_file, nullptr)) == 0 || fail(error, errno);
    std::error_code failed;
    fs::rename(m_temporary, m_target, failed); // under the lock, which ends with the file
    if (failed) {
        discard();
        return fail(error, failed.value());
    }
    m_temporary.clear();
    std::fclose(std::exchange(m_file, nullptr));
#if !defined(_WIN32)
    syncFolder(fs::path(m_target).parent_path());
#endif
    return true;
}

void SbFileReplacement::discard()
{
    if (!m_temporary.empty()) {
        std::error_code ignored;
        fs::remove(m_temporary, ignored); // under the lock
        m_temporary.clear();
    }
    if (m_file)
        std::fclose(std::exchange(m_file, nullptr));
}
