#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <cstddef>
#include <memory>
#include <string_view>

/// Enlarges a memory block as std::realloc() does.
using SoOutputReallocCB = void*(void* bytes, std::size_t size);

/// Where scenes are written to: the standard output, a file, or memory; compressed if asked for.
///
/// A file comes into being under its name only when it is closed without an error, so that a failed
/// save leaves the old file as it was; see SbFileReplacement. The header is written in front of the
/// first bytes.
class KALMYR_API SoOutput {
public:
    SoOutput();
    /// Closes; an error is then only posted.
    virtual ~SoOutput();
    SoOutput(const SoOutput&) = delete;
    SoOutput& operator=(const SoOutput&) = delete;

    /// Begins a file. False and an error when it cannot be created; nothing has changed then.
    bool openFile(const SbString& name);
    /// Ends the file. False and an error when any part of it could not be written.
    bool closeFile();
    /// Ends what was begun: a file does not come into being, and counts as failed.
    void discard() { m_failed = true; }
    bool isFileOpen() const;
    /// The file that is written, as it was given; empty for other targets.
    const SbString& getFileName() const { return m_fileName; }

    /// Writes to a memory block from `offset` on. A block that is too small is enlarged by
    /// `reallocate`, without which writing fails. A zero byte that does not count follows the text.
    /// Null with a size, and an offset beyond it, are broken contracts: the target stays.
    void setBuffer(void* bytes, std::size_t size, SoOutputReallocCB* reallocate = nullptr,
                   std::size_t offset = 0);
    /// Writes to memory that the output owns.
    void setBuffer();
    /// The memory block as it is now, and how many bytes were written. False when not writing to
    /// memory or after a failure. Compressed text is complete after closeFile() only.
    bool getBuffer(void*& bytes, std::size_t& count) const;
    std::string_view getText() const;

    /// Replaces the header line; it is not checked, and an empty one is left out. Takes effect
    /// until resetHeader().
    void setHeaderString(const SbString& header);
    /// Back to the default header of the chosen form.
    void resetHeader();
    SbString getHeaderString() const;
    static SbString getDefaultASCIIHeader() { return "#Kalmyr V1.0 ascii"; }
    static SbString getDefaultBinaryHeader() { return "#Kalmyr V1.0 binary"; }

    /// Binary or text form; text at first. To be set before the first bytes.
    void setBinary(bool on) { m_binary = on; }
    bool isBinary() const { return m_binary; }
    /// Compresses by gzip; `level` from 1 (fast) to 9 (small), others change nothing. To be set
    /// before the file is opened or the buffer set.
    void setCompression(bool on, int level = 6);
    bool isCompressed() const { return m_compress; }

    /// Writes bytes, after the header if they are the first. False once anything failed.
    bool write(std::string_view bytes);
    bool hasFailed() const { return m_failed; }
    /// Bytes that stand in front of what is written next, the header among them.
    std::size_t getNumBytesBefore() const;

private:
    class Target;
    class FileTarget;
    class StandardTarget;
    class MemoryTarget;
    class ZipTarget;
    void begin(std::unique_ptr<Target> target);
    void noteFailure(const SbString& reason);

    std::unique_ptr<Target> m_target;
    MemoryTarget* m_memory = nullptr; // Not owned; part of m_target.
    SbString m_header;
    SbString m_fileName;
    int m_level = 6;
    bool m_customHeader = false;
    bool m_headerWritten = false;
    bool m_binary = false;
    bool m_compress = false;
    bool m_failed = false;
    std::size_t m_numBytes = 0; ///< written behind the header
};
