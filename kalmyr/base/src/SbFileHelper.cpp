#include <kalmyr/base/SbFileHelper.h>

#include <kalmyr/base/SbFileReplacement.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoPreferences.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <io.h>
#else
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace {

#if defined(_WIN32)
constexpr const char* kSeparators = "/\\";
#else
constexpr const char* kSeparators = "/";
#endif
constexpr std::size_t kReadBlock = 1 << 16;

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

fs::path toPath(const SbString& text)
{
    return {std::u8string(text.begin(), text.end())};
}

SbString fromPath(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}

void setError(SbString* error, const SbString& text)
{
    if (error) {
        *error = text;
    }
}

bool failWithErrno(SbString* error)
{
    setError(error, std::generic_category().message(errno));
    return false;
}

std::size_t fileStart(std::string_view path)
{
    const std::size_t at = path.find_last_of(kSeparators);
    return at == std::string_view::npos ? 0 : at + 1;
}

// Takes "$NAME" or "${NAME}" off the front; the name is empty when there is none.
std::string_view takeVariable(std::string_view& text)
{
    if (text.starts_with("${")) {
        const std::size_t close = text.find('}');
        if (close == std::string_view::npos) {
            return {};
        }
        const std::string_view name = text.substr(2, close - 2);
        text.remove_prefix(close + 1);
        return name;
    }
    std::size_t end = 1;
    while (end < text.size()
           && (end == 1 ? SbName::isIdentStartChar(text[end]) : SbName::isIdentChar(text[end]))) {
        ++end;
    }
    const std::string_view name = text.substr(1, end - 1);
    text.remove_prefix(end);
    return name;
}

bool readAll(std::FILE* file, std::vector<char>& bytes)
{
    std::size_t filled = 0;
    for (;;) {
        if (bytes.size() < filled + kReadBlock) {
            bytes.resize(std::max(filled + kReadBlock, filled * 2));
        }
        const std::size_t got = std::fread(bytes.data() + filled, 1, bytes.size() - filled, file);
        filled += got;
        if (got == 0) {
            bytes.resize(std::ferror(file) ? 0 : filled);
            return !std::ferror(file);
        }
    }
}

} // namespace

SbString SbFileHelper::expandString(const SbString& text)
{
    std::string_view rest = text;
    SbString out;
    if (rest.starts_with('~') && (rest.size() == 1 || std::strchr(kSeparators, rest[1]))) {
        const std::optional<SbString> home = SoPreferences::findValue("HOME");
        out = home ? *home : SbString("~");
        rest.remove_prefix(1);
    }
    while (!rest.empty()) {
        const std::size_t dollar = std::min(rest.find('$'), rest.size());
        out += rest.substr(0, dollar);
        rest.remove_prefix(dollar);
        if (rest.empty()) {
            break;
        }
        const std::string_view before = rest;
        const std::string_view name = takeVariable(rest);
        const std::optional<SbString> value = SoPreferences::findValue(name);
        if (before.size() == rest.size()) {
            rest.remove_prefix(1);
        }
        out += value ? value->view() : before.substr(0, before.size() - rest.size());
    }
    return out;
}

bool SbFileHelper::isAccessible(const SbString& path, int access)
{
#if defined(_WIN32)
    return _access(path.getString(), access & (READABLE | WRITABLE)) == 0;
#else
    const int mode = (access & READABLE ? R_OK : 0) | (access & WRITABLE ? W_OK : 0)
                     | (access & EXECUTABLE ? X_OK : 0);
    return ::access(path.getString(), mode ? mode : F_OK) == 0;
#endif
}

bool SbFileHelper::isDirectory(const SbString& path)
{
    std::error_code ignored;
    return fs::is_directory(toPath(path), ignored);
}

SbString SbFileHelper::getDirName(const SbString& path)
{
    return path.view().substr(0, fileStart(path));
}

SbString SbFileHelper::getBaseName(const SbString& path)
{
    return path.view().substr(fileStart(path));
}

SbString SbFileHelper::getExtension(const SbString& path)
{
    const std::string_view name = path.view().substr(fileStart(path));
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

SbString SbFileHelper::toUnixPath(const SbString& path)
{
#if defined(_WIN32)
    return path.replaced("\\", "/");
#else
    return path;
#endif
}

bool SbFileHelper::isAbsolute(const SbString& path)
{
    return toPath(path).is_absolute();
}

SbString SbFileHelper::join(const SbString& directory, const SbString& name)
{
    if (directory.isEmpty() || isAbsolute(name)) {
        return name;
    }
    const bool separated = std::strchr(kSeparators, directory.view().back());
    return directory + (separated ? "" : "/") + name;
}

SbString SbFileHelper::toAbsolute(const SbString& path)
{
    std::error_code failed;
    const fs::path absolute = fs::absolute(toPath(path), failed);
    return failed ? path : fromPath(absolute.lexically_normal());
}

std::FILE* SbFileHelper::open(const SbString& path, const char* mode, SbString* error)
{
    setError(error, SbString());
    if (isDirectory(path)) {
        // Reading could be started on some systems and would fail later, without a reason.
        errno = EISDIR;
        failWithErrno(error);
        return nullptr;
    }
#if defined(_WIN32)
    std::FILE* file =
        _wfopen(toPath(path).c_str(), std::wstring(mode, mode + std::strlen(mode)).c_str());
#else
    std::FILE* file = std::fopen(path.getString(), mode);
#endif
    if (!file) {
        failWithErrno(error);
    }
    return file;
}

bool SbFileHelper::readFile(const SbString& path, std::vector<char>& bytes, SbString* error)
{
    bytes.clear();
    const File file(open(path, "rb", error));
    return file && (readAll(file.get(), bytes) || failWithErrno(error));
}

bool SbFileHelper::writeFile(const SbString& path, std::string_view bytes, SbString* error)
{
    SbFileReplacement file;
    if (!file.open(path, error)) {
        return false;
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.getFile()) != bytes.size()) {
        return failWithErrno(error);
    }
    if (!file.commit(error)) {
        return false;
    }
    setError(error, SbString());
    return true;
}

SbFileMapping::SbFileMapping(SbFileMapping&& other) noexcept
{
    swap(other);
}

SbFileMapping& SbFileMapping::operator=(SbFileMapping&& other) noexcept
{
    SbFileMapping taken(std::move(other));
    swap(taken);
    return *this;
}

void SbFileMapping::swap(SbFileMapping& other) noexcept
{
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_open, other.m_open);
    std::swap(m_mapped, other.m_mapped);
    m_bytes.swap(other.m_bytes);
}

bool SbFileMapping::open(const SbString& path, SbString* error)
{
    close();
    const File file(SbFileHelper::open(path, "rb", error));
    if (!file) {
        return false;
    }
    if (!map(file.get())) {
        if (!readAll(file.get(), m_bytes)) {
            return failWithErrno(error);
        }
        m_data = m_bytes.empty() ? nullptr : m_bytes.data();
        m_size = m_bytes.size();
    }
    m_open = true;
    return true;
}

bool SbFileMapping::map(std::FILE* file)
{
#if defined(_WIN32)
    (void)file;
    return false;
#else
    struct stat info {};
    if (fstat(fileno(file), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size <= 0) {
        return false;
    }
    const auto size = static_cast<std::size_t>(info.st_size);
    void* address = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fileno(file), 0);
    if (address == MAP_FAILED) {
        return false;
    }
    madvise(address, size, MADV_SEQUENTIAL);
    m_data = static_cast<const char*>(address);
    m_size = size;
    m_mapped = true;
    return true;
#endif
}

void SbFileMapping::close()
{
#if !defined(_WIN32)
    if (m_mapped) {
        munmap(const_cast<char*>(m_data), m_size);
    }
#endif
    m_data = nullptr;
    m_size = 0;
    m_open = false;
    m_mapped = false;
    m_bytes.clear();
}
