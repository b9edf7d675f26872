#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoTokenizer.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kalmyr::detail {
class SceneReader;
class SceneText;
} // namespace kalmyr::detail

/// Scene text from a file, from memory, or compressed by gzip from either.
///
/// The whole text is brought into memory when it is opened; reading takes tokens from it. One
/// input reads one file at a time. Files that a scene refers to are found from the folder of the
/// file that names them, then from the search directories.
class KALMYR_API SoInput {
public:
    /// The format that the first line names.
    enum Format { UNKNOWN_FORMAT = 0, KALMYR_ASCII, KALMYR_BINARY, VRML1, VRML2 };

    /// Text beyond this size, also after inflating, is refused (bytes).
    static constexpr std::size_t kMaxSize = std::size_t(1) << 36;
    /// A compressed text that grows by more than this factor when it is inflated is refused, beyond
    /// kMinUnpacked. The preference KMR_MAX_UNPACK_RATIO sets another factor.
    static constexpr int kMaxUnpackRatio = 100;
    /// As much may come out of any file (bytes).
    static constexpr std::size_t kMinUnpacked = std::size_t(1) << 26;
    /// The first line is looked for within that many bytes.
    static constexpr std::size_t kMaxHeader = 1024;

    SoInput();
    /// An input for a file that `parent`'s file refers to; `parent` must outlive it.
    explicit SoInput(SoInput* parent);
    virtual ~SoInput();
    SoInput(const SoInput&) = delete;
    SoInput& operator=(const SoInput&) = delete;

    /// Opens a file, plain or compressed; what was open before is closed. In-memory text files come
    /// first, then the folder of the parent's file, the name as it stands and the search
    /// directories. False and a read error when it cannot be read or inflated; a file that does not
    /// exist is no error with `okIfNotFound`.
    bool openFile(const SbString& name, bool okIfNotFound = false);

    /// Reads from a copy of these bytes. False and a read error for a broken compressed text; the
    /// error has the place in the inflated text that was reached. Null with a size is a broken
    /// contract: what was open stays open.
    bool setBuffer(const void* bytes, std::size_t size);

    /// Ends reading and forgets a stop. The header, the format and the file name stay known until
    /// the next opening. Not to be called from progress() and warn(), which stop() is for.
    void closeFile();
    bool isOpen() const { return m_open; }

    /// Stops what is being opened or read, the files that the scene refers to included: when
    /// progress() returns, or where it would be called next. May be called from progress() and
    /// warn(), from other threads, and from signal handlers.
    ///
    /// Opening then returns false, and reading null, false or no path, after one read error
    /// "reading was stopped" with the name of this input's file, whichever file was being read.
    /// Everything that was read and not handed out yet is gone, with its names, routes and
    /// prototypes; referenced nodes that SoDB::read() returned before stay. What has ended is not
    /// undone.
    ///
    /// A stop holds until the input is closed. One that comes while nothing is open is not lost:
    /// it refuses the next opening, and the one after that succeeds again.
    void stop() noexcept { m_stopped.store(true, std::memory_order_relaxed); }
    /// Whether this input or one of its parents was stopped: tells a stopped read from a faulty
    /// file. Stays so until this input is closed or opened again.
    bool isStopped() const noexcept;

    /// The header line: one of the known ones when the first line begins with it, else the first
    /// line if it begins with '#', else nothing.
    const SbString& getHeader() const { return m_header; }
    Format getFormat() const { return m_format; }
    bool isFileVRML1() const { return m_format == VRML1; }
    bool isFileVRML2() const { return m_format == VRML2; }
    bool isBinary() const { return m_format == KALMYR_BINARY; }
    bool isCompressed() const { return m_compressed; }

    /// The file as it was found, with its folder; empty for memory.
    const SbString& getCurFileName() const { return m_fileName; }

    /// The text, standing behind the header at first. Valid until the next opening or closing.
    SoTokenizer& getTokenizer() { return m_tokens; }
    /// Size of the whole text, inflated (bytes).
    std::size_t getSize() const { return m_size; }

    SoInput* getParent() const { return m_parent; }
    /// The folder that relative names start from: that of the file, or the one set here, or the
    /// parent's.
    SbString getFolder() const;
    void setFolder(const SbString& folder) { m_folder = folder; }
    /// Whether this input or one of its parents reads that file.
    bool isReading(const SbString& fileName) const;
    /// Counts a file that this one or one below it brings in. False when there are too many.
    bool countFile();
    /// Files that one scene may bring in.
    static constexpr int kMaxFiles = 2000;

    /// Called about every megabyte while reading, and at the end of a file that was read whole.
    /// While other files are read that the scene refers to, it is called as often, with the place
    /// that this one has reached; while a large file is brought into memory or inflated, so that
    /// its size is not known yet, with 0 and the size so far. It may call stop(). The default does
    /// nothing.
    virtual void progress(std::size_t bytesRead, std::size_t total);

    /// Something in the file, or in one that it refers to, that is left out or read differently,
    /// with its place (line and column from 1; an empty file name stands for memory). The default
    /// passes it on to the parent, and without one posts a debug warning "FILE:LINE:COLUMN: TEXT".
    virtual void warn(const SbString& fileName, int line, int column, const SbString& text);
    /// The same at the place that was reached; only the first kMaxWarnings of a file are given.
    void warnHere(const SbString& text);
    /// The same at another place in the text (from 1).
    void warnAt(int line, int column, const SbString& text);
    static constexpr int kMaxWarnings = 50;

    /// A name as a scene has it, looked up as openFile() does. Empty when there is no such file.
    SbString findFile(const SbString& name) const;

    /// Folders in which files are looked for, in their order; process-wide.
    static void addDirectoryFirst(const SbString& directory);
    static void addDirectoryLast(const SbString& directory);
    static void removeDirectory(const SbString& directory);
    static void clearDirectories();
    static const std::vector<SbString>& getDirectories();

    /// Keeps a text under a file name for the life of the process; a second text replaces the
    /// first.
    static void addInMemoryTextFile(const SbString& name, const SbString& text);
    static void removeInMemoryTextFile(const SbString& name);
    /// The content of an in-memory text file or of a file on disk. False when there is neither.
    static bool readTextFile(const SbString& name, SbString& text);

    /// The format that a header line stands for; surrounding white space does not matter.
    static Format formatOfHeader(std::string_view header);
    /// The headers that can be read, for messages.
    static SbString getKnownHeaders();

private:
    struct Bytes;
    bool load(const SbString& name);
    bool inflateText(std::string_view packed);
    void release();
    bool beginOpening(const SbString& name);
    bool goOnOpening(std::size_t bytes);
    bool adopt(std::unique_ptr<Bytes> bytes);
    void readHeader();
    void cutEnd();
    void giveBackWhatIsRead();
    void watchProgress();
    void reached();
    void tellProgress(std::size_t at, std::size_t size);
    std::size_t getPlace() const;
    std::size_t getPlaceOf(std::size_t offset) const;
    void countWork(std::size_t bytes);
    bool tellStop();
    bool refuse(const char* reason);
    bool refusePacked(const std::string& reason, std::size_t packedAt);

    SoInput* m_parent = nullptr; // Not owned; reads the file that refers to ours.
    SbString m_fileName;
    SbString m_folder;
    SbString m_header;
    std::unique_ptr<Bytes> m_bytes;
    std::size_t m_size = 0;
    SoTokenizer m_tokens;
    Format m_format = UNKNOWN_FORMAT;
    bool m_open = false;
    bool m_compressed = false;
    bool m_isEndCut = false; ///< bytes behind the text were left out

    friend class SoDB;
    friend class kalmyr::detail::SceneReader;
    friend class kalmyr::detail::SceneText;
    std::unique_ptr<kalmyr::detail::SceneReader> m_reader; ///< goes on where the last reading ended
    int m_filesRead = 0; ///< files that this input's file brought in, at all levels
    int m_numWarnings = 0;
    std::size_t m_aside = 0; ///< bytes read beside the text
    std::size_t m_work = 0;  ///< bytes since the last progress that the place does not show
    bool m_stopTold = false;
    std::atomic<bool> m_stopped = false;
    static_assert(std::atomic<bool>::is_always_lock_free, "stop() is for signal handlers, too");
};
