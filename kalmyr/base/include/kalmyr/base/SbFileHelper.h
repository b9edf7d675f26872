#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/// File names and whole files. Names are UTF-8; both `/` and `\` (on Windows) separate folders.
class KALMYRBASE_API SbFileHelper {
public:
    /// Rights for isAccessible(), to be added up.
    enum Access { EXISTS = 0, EXECUTABLE = 1, WRITABLE = 2, READABLE = 4 };

    SbFileHelper() = delete;

    /// Replaces `$NAME`, `${NAME}` (as preferences know them) and a leading `~`. Unknown names stay
    /// as they are.
    static SbString expandString(const SbString& text);
    static bool isAccessible(const SbString& path, int access = READABLE);
    static bool isDirectory(const SbString& path);

    /// The folder part with its final separator, as it stands; empty without a folder.
    static SbString getDirName(const SbString& path);
    /// The file part.
    static SbString getBaseName(const SbString& path);
    /// Returns the text behind the last dot of the file part; empty without one, and for names that
    /// only begin with a dot.
    static SbString getExtension(const SbString& path);
    /// With `/` for every separator of the system.
    static SbString toUnixPath(const SbString& path);
    static bool isAbsolute(const SbString& path);
    /// `name` inside `directory`; `name` alone when it is absolute or there is no directory.
    static SbString join(const SbString& directory, const SbString& name);
    /// The absolute path without `.` and `..`; need not exist.
    static SbString toAbsolute(const SbString& path);

    /// As fopen; null when it fails, with the reason in `error`. Refuses folders.
    static std::FILE* open(const SbString& path, const char* mode, SbString* error = nullptr);
    /// The whole file. False when it fails; `bytes` is then empty.
    static bool readFile(const SbString& path, std::vector<char>& bytes, SbString* error = nullptr);
    /// Replaces the file's content, by SbFileReplacement, so that no half file is left behind.
    /// False when it fails; the old file is as it was then.
    static bool writeFile(const SbString& path, std::string_view bytes, SbString* error = nullptr);
};

/// A file's bytes, read-only, mapped into memory where the system can and read where it cannot.
/// Another program that shortens the file while it is mapped ends this process: a rule of the
/// system.
class KALMYRBASE_API SbFileMapping {
public:
    SbFileMapping() = default;
    ~SbFileMapping() { close(); }
    SbFileMapping(SbFileMapping&& other) noexcept;
    SbFileMapping& operator=(SbFileMapping&& other) noexcept;

    /// Closes what was open before. Pipes and devices are read to their end.
    bool open(const SbString& path, SbString* error = nullptr);
    void close();
    bool isOpen() const { return m_open; }
    /// Null for an empty file.
    const char* data() const { return m_data; }
    std::size_t size() const { return m_size; }
    std::string_view view() const { return {m_data, m_size}; }

private:
    bool map(std::FILE* file);
    void swap(SbFileMapping& other) noexcept;

    const char* m_data = nullptr;
    std::size_t m_size = 0;
    bool m_open = false;
    bool m_mapped = false;
    std::vector<char> m_bytes;
};
