#include <kalmyr/io/SoOutput.h>

#include <kalmyr/base/SbFileReplacement.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoError.h>

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr std::string_view kHeaderEnd = "\n\n";

} // namespace

/// Takes bytes; once it has failed it stays failed.
class SoOutput::Target {
public:
    virtual ~Target() = default;
    virtual bool write(std::string_view bytes) = 0;
    /// Called once, after the last bytes.
    virtual bool finish() = 0;

    SbString reason; ///< why it failed
};

class SoOutput::FileTarget final : public SoOutput::Target {
public:
    bool open(const SbString& name) { return m_file.open(name, &reason); }
    bool write(std::string_view bytes) override
    {
        if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.getFile()) == bytes.size())
            return true;
        reason = std::strerror(errno);
        return false;
    }
    bool finish() override { return m_file.commit(&reason); }

private:
    SbFileReplacement m_file;
};

class SoOutput::StandardTarget final : public SoOutput::Target {
public:
    bool write(std::string_view bytes) override
    {
        return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() || fail();
    }
    bool finish() override { return std::fflush(stdout) == 0 || fail(); }

private:
    bool fail()
    {
        reason = std::strerror(errno);
        return false;
    }
};

class SoOutput::MemoryTarget final : public SoOutput::Target {
public:
    MemoryTarget(void* bytes, std::size_t size, SoOutputReallocCB* reallocate, std::size_t offset,
                 bool own)
        : m_bytes(static_cast<char*>(bytes)),
          m_size(bytes ? size : 0),
          m_at(offset),
          m_realloc(reallocate),
          m_own(own)
    {
    }
    ~MemoryTarget() override
    {
        if (m_own)
            std::free(m_bytes);
    }
    bool write(std::string_view bytes) override
    {
        const std::size_t needed = m_at + bytes.size() + 1;
        if (needed > m_size && !grow(std::max(needed, m_size * 2)))
            return false;
        std::memcpy(m_bytes + m_at, bytes.data(), bytes.size());
        m_at += bytes.size();
        m_bytes[m_at] = 0;
        return true;
    }
    bool finish() override { return true; }
    char* data() const { return m_bytes; }
    std::size_t count() const { return m_at; }

private:
    bool grow(std::size_t size)
    {
        void* grown = m_realloc ? m_realloc(m_bytes, size) : nullptr;
        if (!grown) {
            reason = "out of memory";
            return false;
        }
        m_bytes = static_cast<char*>(grown);
        m_size = size;
        return true;
    }

    char* m_bytes;
    std::size_t m_size;
    std::size_t m_at;
    SoOutputReallocCB* m_realloc;
    bool m_own;
};

class SoOutput::ZipTarget final : public SoOutput::Target {
public:
    ZipTarget(std::unique_ptr<Target> to, int level) : m_to(std::move(to))
    {
        m_ready = deflateInit2(&m_z, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) == Z_OK;
    }
    ~ZipTarget() override
    {
        if (m_ready)
            deflateEnd(&m_z);
    }
    bool write(std::string_view bytes) override
    {
        while (!bytes.empty()) {
            const std::size_t n = std::min<std::size_t>(bytes.size(), std::size_t(1) << 30);
            m_z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
            m_z.avail_in = static_cast<uInt>(n);
            if (!run(Z_NO_FLUSH))
                return false;
            bytes.remove_prefix(n);
        }
        return true;
    }
    bool finish() override
    {
        if (run(Z_FINISH) && m_to->finish())
            return true;
        if (reason.isEmpty())
            reason = m_to->reason;
        return false;
    }

private:
    bool run(int flush)
    {
        if (!m_ready) {
            reason = "out of memory";
            return false;
        }
        char packed[1 << 15];
        do {
            m_z.next_out = reinterpret_cast<Bytef*>(packed);
            m_z.avail_out = sizeof packed;
            deflate(&m_z, flush);
            if (!m_to->write({packed, sizeof packed - m_z.avail_out})) {
                reason = m_to->reason;
                return false;
            }
        } while (m_z.avail_out == 0);
        return true;
    }

    std::unique_ptr<Target> m_to;
    z_stream m_z{};
    bool m_ready;
};

SoOutput::SoOutput() = default;

SoOutput::~SoOutput()
{
    closeFile();
}

void SoOutput::begin(std::unique_ptr<Target> target)
{
    m_target = std::move(target);
    if (m_compress)
        m_target = std::make_unique<ZipTarget>(std::move(m_target), m_level);
    m_headerWritten = false;
    m_failed = false;
    m_numBytes = 0;
}

std::size_t SoOutput::getNumBytesBefore() const
{
    const std::size_t header = getHeaderString().getLength();
    return m_numBytes + (header > 0 ? header + kHeaderEnd.size() : 0);
}

bool SoOutput::openFile(const SbString& name)
{
    closeFile();
    m_memory = nullptr;
    auto file = std::make_unique<FileTarget>();
    if (!file->open(name)) {
        SoError::post("%s: cannot be created: %s", name.getString(), file->reason.getString());
        return false;
    }
    m_fileName = name;
    begin(std::move(file));
    return true;
}

bool SoOutput::isFileOpen() const
{
    return m_target && !m_fileName.isEmpty();
}

bool SoOutput::closeFile()
{
    if (!m_target)
        return true;
    if (m_failed && !m_memory) {
        m_target.reset();
    } else if (!m_failed && !m_target->finish()) {
        noteFailure(m_target->reason);
    }
    // Memory stays readable until the next use.
    const std::unique_ptr<Target> done = m_memory ? nullptr : std::move(m_target);
    m_fileName.makeEmpty();
    return !m_failed;
}

void SoOutput::noteFailure(const SbString& reason)
{
    m_failed = true;
    const SbString name =
        m_fileName.isEmpty() ? SbString(m_memory ? "<memory>" : "<stdout>") : m_fileName;
    SoError::post("%s: cannot be written: %s", name.getString(), reason.getString());
}

void SoOutput::setBuffer(void* bytes, std::size_t size, SoOutputReallocCB* reallocate,
                         std::size_t offset)
{
    if (!kalmyr::holds((bytes || size == 0) && offset <= size, "size bytes, and offset <= size"))
        return;
    closeFile();
    auto memory = std::make_unique<MemoryTarget>(bytes, size, reallocate, offset, false);
    m_memory = memory.get();
    begin(std::move(memory));
}

void SoOutput::setBuffer()
{
    closeFile();
    auto memory = std::make_unique<MemoryTarget>(nullptr, 0, std::realloc, 0, true);
    m_memory = memory.get();
    begin(std::move(memory));
}

bool SoOutput::getBuffer(void*& bytes, std::size_t& count) const
{
    if (!m_memory || m_failed)
        return false;
    bytes = m_memory->data();
    count = m_memory->count();
    return true;
}

std::string_view SoOutput::getText() const
{
    if (!m_memory || !m_memory->data())
        return {};
    return {m_memory->data(), m_memory->count()};
}

void SoOutput::setHeaderString(const SbString& header)
{
    m_header = header;
    m_customHeader = true;
}

void SoOutput::resetHeader()
{
    m_customHeader = false;
    m_headerWritten = false;
}

SbString SoOutput::getHeaderString() const
{
    if (m_customHeader)
        return m_header;
    return m_binary ? getDefaultBinaryHeader() : getDefaultASCIIHeader();
}

void SoOutput::setCompression(bool on, int level)
{
    if (!kalmyr::holds(level >= 1 && level <= 9, "a level from 1 to 9"))
        return;
    m_compress = on;
    m_level = level;
}

bool SoOutput::write(std::string_view bytes)
{
    if (!m_target)
        begin(std::make_unique<StandardTarget>());
    if (m_failed)
        return false;
    bool ok = true;
    if (!m_headerWritten) {
        m_headerWritten = true;
        const SbString header = getHeaderString();
        ok = header.isEmpty() || m_target->write(header + kHeaderEnd.data());
    }
    ok = ok && m_target->write(bytes);
    m_numBytes += bytes.size();
    if (!ok)
        noteFailure(m_target->reason);
    return ok;
}
