#include <kalmyr/io/SoInput.h>

#include "FilePlaces.h"
#include "SceneReader.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/base/SoReadError.h>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

using kalmyr::detail::lookUp;
using kalmyr::detail::memoryFile;

namespace {

struct KnownHeader {
    std::string_view text;
    SoInput::Format format;
};
constexpr std::array kKnownHeaders{
    KnownHeader{"#Kalmyr V1.0 ascii", SoInput::KALMYR_ASCII},
    KnownHeader{"#Kalmyr V1.0 binary", SoInput::KALMYR_BINARY},
    KnownHeader{"#VRML V1.0 ascii", SoInput::VRML1},
    KnownHeader{"#VRML V2.0 utf8", SoInput::VRML2},
};

/// Spellings that programs use for the same.
constexpr std::array kOddHeaders{
    KnownHeader{"#VRML V1.0 utf8", SoInput::VRML1},
    KnownHeader{"#VRML V2.0 utf-8", SoInput::VRML2},
    KnownHeader{"#VRML V2.0 ascii", SoInput::VRML2},
};

constexpr std::size_t kReadStep = std::size_t(1) << 20;
/// Files are brought in and inflated in pieces of this size, so that it can be stopped.
constexpr std::size_t kPiece = 4 * kReadStep;
constexpr char kStopped[] = "reading was stopped";
/// No deflate stream grows by more than this factor.
constexpr std::size_t kMaxInflateRatio = 1032;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

/// Whether the line begins with the header; blanks count as one, whatever their number.
bool beginsWith(std::string_view line, std::string_view header)
{
    const bool exact = header.starts_with("#K");
    std::size_t at = 0;
    for (const char wanted : header) {
        const char found = at < line.size() ? line[at] : '\0';
        if (wanted == ' ' ? !isBlank(found)
                          : found != wanted && (exact || lower(found) != lower(wanted)))
            return false;
        ++at;
        while (wanted == ' ' && at < line.size() && isBlank(line[at]))
            ++at;
    }
    return at == line.size() || isBlank(line[at]);
}

/// The known header that the line begins with.
const KnownHeader* findHeader(std::string_view line)
{
    for (const KnownHeader& known : kKnownHeaders)
        if (beginsWith(line, known.text))
            return &known;
    for (const KnownHeader& odd : kOddHeaders)
        if (beginsWith(line, odd.text))
            return std::find_if(kKnownHeaders.begin(), kKnownHeaders.end(),
                                [&](const KnownHeader& k) { return k.format == odd.format; });
    return nullptr;
}

/// Lets the system have the memory of what was read, except for the ends that share pages with
/// other things; it reads as zeros afterwards.
void giveBack(char* data, std::size_t size)
{
#if defined(__linux__)
    static const auto s_page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto first = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t begin = (first + s_page) / s_page * s_page;
    const std::uintptr_t end = (first + size) / s_page * s_page;
    if (begin < end)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
#else
    static_cast<void>(data);
    static_cast<void>(size);
#endif
}

/// At most one piece; 0 at the end. Signals that stop nothing end nothing.
std::size_t readPiece(std::FILE* file, char* to, std::size_t size, const SoInput& in)
{
    for (;;) {
        errno = 0;
        const std::size_t n = std::fread(to, 1, std::min(size, kPiece), file);
        if (!std::ferror(file) || errno != EINTR)
            return n;
        std::clearerr(file);
        if (n > 0 || in.isStopped())
            return n;
    }
}

/// Why inflating stopped.
std::string whatIsWrong(const z_stream& z)
{
    const std::string_view found = z.msg ? z.msg : "";
    if (found == "incorrect data check")
        return "the compressed text is damaged: its checksum is wrong";
    if (found == "incorrect length check")
        return "the compressed text is damaged: its length is not the one it tells";
    constexpr std::size_t kShortestHeader = 10;
    if (z.total_out == 0
        && (z.total_in < kShortestHeader || found.find("header") != std::string_view::npos))
        return "what follows is no member of a gzip file";
    return "the compressed text is damaged" + (found.empty() ? "" : ": " + std::string(found));
}

/// What may come out of a compressed text of that size.
std::size_t maxUnpacked(std::size_t packed)
{
    const int ratio =
        std::max(1, SoPreferences::getInt("KMR_MAX_UNPACK_RATIO", SoInput::kMaxUnpackRatio));
    return std::clamp(packed * static_cast<std::size_t>(ratio), SoInput::kMinUnpacked,
                      SoInput::kMaxSize);
}

bool isGzip(std::string_view bytes)
{
    return bytes.size() >= 2 && bytes[0] == '\x1f' && bytes[1] == '\x8b';
}

} // namespace

/// A growing block that ends in a zero byte beyond its size.
struct SoInput::Bytes {
    char* data = nullptr;
    std::size_t size = 0;
    std::size_t capacity = 0;

    Bytes() = default;
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;
    ~Bytes() { std::free(data); }

    std::string_view view() const { return {data, size}; }
    bool reserve(std::size_t wanted)
    {
        if (wanted + 1 <= capacity)
            return true;
        void* grown = std::realloc(data, wanted + 1);
        if (!grown)
            return false;
        data = static_cast<char*>(grown);
        capacity = wanted + 1;
        return true;
    }
};

SoInput::SoInput() = default;
SoInput::SoInput(SoInput* parent) : m_parent(parent) {}
SoInput::~SoInput() = default;

bool SoInput::isStopped() const noexcept
{
    for (const SoInput* in = this; in; in = in->m_parent) {
        if (in->m_stopped.load(std::memory_order_relaxed))
            return true;
    }
    return false;
}

/// Makes a stop known, once: by the outermost input that was stopped. False when none was.
bool SoInput::tellStop()
{
    if (!isStopped())
        return false;
    if (!m_stopTold && !(m_parent && m_parent->isStopped()))
        SoReadError::post(m_fileName, 0, 0, "%s", kStopped);
    m_stopTold = true;
    return true;
}

bool SoInput::refuse(const char* reason)
{
    if (!tellStop())
        SoReadError::post(m_fileName, 0, 0, "%s", reason);
    release();
    return false;
}

/// What is wrong with a compressed text, where it has been inflated up to now.
bool SoInput::refusePacked(const std::string& reason, std::size_t packedAt)
{
    std::string message = reason + " at byte " + std::to_string(packedAt);
    int line = 1, column = 1;
    m_size = m_bytes->size;
    if (m_size > 0 && m_bytes->reserve(m_size)) {
        m_bytes->data[m_size] = 0;
        m_tokens = SoTokenizer(m_bytes->data, m_size, m_fileName);
        readHeader();
        m_tokens.getPosition(m_size, line, column);
    }
    if (m_format == KALMYR_BINARY) {
        message += ", byte " + std::to_string(m_size) + " when inflated";
        line = column = 0; // there are no lines
    }
    SoReadError::post(m_fileName, line, column, "%s", message.c_str());
    release();
    return false;
}

/// Closes what is open. False when a stop came that nobody has heard of yet.
bool SoInput::beginOpening(const SbString& name)
{
    if (m_open || m_stopTold)
        closeFile();
    m_fileName = name;
    m_header.makeEmpty();
    m_format = UNKNOWN_FORMAT;
    return !tellStop();
}

/// Between pieces of a file; false when it was stopped.
bool SoInput::goOnOpening(std::size_t bytes)
{
    tellProgress(0, bytes);
    return !isStopped();
}

bool SoInput::openFile(const SbString& name, bool okIfNotFound)
{
    if (!beginOpening(name))
        return false;
    const SbString found = m_parent ? m_parent->findFile(name) : lookUp(name, {});
    if (found.isEmpty() && okIfNotFound)
        return false;
    return load(found.isEmpty() ? name : found);
}

bool SoInput::load(const SbString& name)
{
    m_fileName = name;
    auto bytes = std::make_unique<Bytes>();
    if (const std::optional<SbString> text = memoryFile(name)) {
        if (!bytes->reserve(text->getLength()))
            return refuse("there is not enough memory for it");
        std::memcpy(bytes->data, text->getString(), text->getLength());
        bytes->size = text->getLength();
        return adopt(std::move(bytes));
    }
    SbString error;
    std::FILE* file = SbFileHelper::open(name, "rb", &error);
    if (!file)
        return refuse(("it cannot be opened: " + error).getString());
    std::size_t expected = kReadStep;
    if (std::fseek(file, 0, SEEK_END) == 0) {
        const long end = std::ftell(file);
        // One byte more lets the end of the file show without another round.
        if (end > 0)
            expected = static_cast<std::size_t>(end) + 1;
        std::rewind(file);
    }
    bool ok = true;
    for (std::size_t n = 1; n > 0;) {
        if (bytes->size == bytes->capacity || bytes->capacity == 0) {
            ok = bytes->size < kMaxSize && bytes->reserve(std::max(expected, bytes->size * 2));
            if (!ok)
                break;
        }
        n = readPiece(file, bytes->data + bytes->size, bytes->capacity - 1 - bytes->size, *this);
        bytes->size += n;
        if (n == kPiece ? !goOnOpening(bytes->size) : isStopped())
            break;
        if (n > 0 && bytes->size + 1 == bytes->capacity) {
            ok = bytes->size < kMaxSize && bytes->reserve(bytes->size * 2);
            if (!ok)
                break;
        }
    }
    const bool readError = std::ferror(file) != 0;
    std::fclose(file);
    if (isStopped())
        return refuse(kStopped);
    if (!ok)
        return refuse("it is too large");
    if (readError)
        return refuse("it cannot be read to its end");
    return adopt(std::move(bytes));
}

bool SoInput::setBuffer(const void* bytes, std::size_t size)
{
    if (!kalmyr::holds(bytes || size == 0, "size bytes"))
        return false;
    if (!beginOpening({}))
        return false;
    auto copy = std::make_unique<Bytes>();
    if (size > kMaxSize || !copy->reserve(size))
        return refuse("there is not enough memory for it");
    if (size > 0)
        std::memcpy(copy->data, bytes, size);
    copy->size = size;
    return adopt(std::move(copy));
}

bool SoInput::adopt(std::unique_ptr<Bytes> bytes)
{
    m_compressed = isGzip(bytes->view());
    m_bytes = std::move(bytes);
    if (m_compressed) {
        const std::unique_ptr<Bytes> packed = std::move(m_bytes);
        m_bytes = std::make_unique<Bytes>();
        if (!inflateText(packed->view()))
            return false;
    }
    if (!m_bytes->reserve(m_bytes->size))
        return refuse("there is not enough memory for it");
    m_bytes->data[m_bytes->size] = 0;
    m_size = m_bytes->size;
    m_open = true;
    m_filesRead = 0;
    m_numWarnings = 0;
    m_isEndCut = false;
    m_aside = m_work = 0;
    m_tokens = SoTokenizer(m_bytes->data, m_size, m_fileName);
    watchProgress();
    giveBackWhatIsRead();
    readHeader();
    return true;
}

void SoInput::watchProgress()
{
    m_tokens.setProgress(
        [](void* self, std::size_t, std::size_t) { static_cast<SoInput*>(self)->reached(); }, this);
}

void SoInput::giveBackWhatIsRead()
{
    m_tokens.setDiscard(
        [](void* self, std::size_t begin, std::size_t end) {
            giveBack(static_cast<SoInput*>(self)->m_bytes->data + begin, end - begin);
        },
        this);
}

void SoInput::reached()
{
    tellProgress(getPlace(), m_size);
    if (isStopped())
        m_tokens.failAt(m_tokens.getOffset(), kStopped);
}

/// To those that wait for this one as well: their hosts want to stay alive, and may stop it.
void SoInput::tellProgress(std::size_t at, std::size_t size)
{
    progress(at, size);
    for (SoInput* in = m_parent; in; in = in->m_parent)
        in->progress(in->getPlace(), in->m_size);
}

/// Bytes of the file that were read. The text of a binary file is but a part of it.
std::size_t SoInput::getPlace() const
{
    if (!m_bytes)
        return m_tokens.getOffset();
    return std::min(getPlaceOf(m_tokens.getOffset()) + m_aside, m_size);
}

/// Where in the file a place in the text is.
std::size_t SoInput::getPlaceOf(std::size_t offset) const
{
    return static_cast<std::size_t>(m_tokens.getText() - m_bytes->data) + offset;
}

/// Counts what takes as long as reading that much text, but moves on in no text.
void SoInput::countWork(std::size_t bytes)
{
    SoInput* top = this;
    while (top->m_parent)
        top = top->m_parent;
    top->m_work += bytes;
    if (top->m_work >= SoTokenizer::kProgressStep) {
        top->m_work = 0;
        tellProgress(getPlace(), m_size);
    }
}

bool SoInput::inflateText(std::string_view packed)
{
    // The last four bytes tell the size of the last member modulo 2^32: a hint, never trusted.
    std::size_t hint = packed.size() * 4;
    if (packed.size() >= 18) {
        const auto* tail =
            reinterpret_cast<const unsigned char*>(packed.data() + packed.size() - 4);
        hint = tail[0] | (std::size_t(tail[1]) << 8) | (std::size_t(tail[2]) << 16)
               | (std::size_t(tail[3]) << 24);
    }
    hint = std::clamp<std::size_t>(hint, 256, packed.size() * kMaxInflateRatio);
    const std::size_t limit = maxUnpacked(packed.size());
    hint = std::min(hint, limit);
    if (!m_bytes->reserve(hint + 1))
        return refuse("there is not enough memory to inflate it");
    z_stream z{};
    if (inflateInit2(&z, 15 + 16) != Z_OK)
        return refuse("it cannot be inflated");
    const char* at = packed.data();
    const char* end = at + packed.size();
    std::string reason;
    while (reason.empty()) {
        if (m_bytes->size > limit) {
            reason = "it grows to more than " + std::to_string(limit)
                     + " bytes when inflated; the preference KMR_MAX_UNPACK_RATIO allows more";
            break;
        }
        if (m_bytes->size + 1 >= m_bytes->capacity
            && (m_bytes->size > kMaxSize
                || !m_bytes->reserve(m_bytes->size + m_bytes->size / 2 + kReadStep))) {
            reason = "it is too large when inflated";
            break;
        }
        const std::size_t room = std::min(m_bytes->capacity - 1 - m_bytes->size, kPiece);
        const std::size_t offer = std::min(static_cast<std::size_t>(end - at), kPiece);
        z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(at));
        z.avail_in = static_cast<uInt>(offer);
        z.next_out = reinterpret_cast<Bytef*>(m_bytes->data + m_bytes->size);
        z.avail_out = static_cast<uInt>(room);
        const int result = inflate(&z, Z_NO_FLUSH);
        at += offer - z.avail_in;
        m_bytes->size += room - z.avail_out;
        if (result == Z_STREAM_END) {
            // Further members follow each other directly; anything else is padding.
            if (!isGzip({at, static_cast<std::size_t>(end - at)}))
                break;
            inflateReset(&z);
        } else if (result == Z_BUF_ERROR || (result == Z_OK && at == end && z.avail_out > 0)) {
            reason = "the compressed text is cut short";
        } else if (result != Z_OK) {
            reason = whatIsWrong(z);
        } else if (!goOnOpening(m_bytes->size)) {
            reason = kStopped;
        }
    }
    inflateEnd(&z);
    if (isStopped())
        return refuse(kStopped);
    return reason.empty() || refusePacked(reason, static_cast<std::size_t>(at - packed.data()));
}

void SoInput::readHeader()
{
    std::string_view text(m_bytes->data, m_size);
    std::size_t start = 0;
    if (text.starts_with("\xef\xbb\xbf"))
        start = 3;
    text = text.substr(start, kMaxHeader);
    m_tokens.setOffset(start);
    // VRML files with blanks or empty lines in front are found, too.
    std::size_t blanks = 0;
    while (blanks < text.size() && isBlank(text[blanks]))
        ++blanks;
    const bool isVrml = text.substr(blanks).starts_with("#VRML");
    if (!text.starts_with('#') && !isVrml)
        return;
    start += isVrml ? blanks : 0;
    text.remove_prefix(isVrml ? blanks : 0);
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    const KnownHeader* known = findHeader(line);
    m_format = known ? known->format : UNKNOWN_FORMAT;
    m_header = SbString(std::string(known ? known->text : trimmed(line)));
    if (m_format == VRML1 || m_format == VRML2)
        cutEnd();
    m_tokens.setOffset(start + line.size());
}

/// Zero bytes and the end mark of old systems are no part of the text.
void SoInput::cutEnd()
{
    constexpr char kEndMark = '\x1a';
    std::size_t size = m_size;
    while (size > 0 && (m_bytes->data[size - 1] == 0 || m_bytes->data[size - 1] == kEndMark))
        --size;
    if (size == m_size)
        return;
    m_bytes->data[size] = 0;
    m_bytes->size = m_size = size;
    m_isEndCut = true;
    m_tokens = SoTokenizer(m_bytes->data, m_size, m_fileName);
    watchProgress();
    giveBackWhatIsRead();
}

void SoInput::closeFile()
{
    release();
    m_stopped = false;
    m_stopTold = false;
}

/// Closes, and remembers a stop.
void SoInput::release()
{
    m_reader.reset();
    m_bytes.reset();
    m_tokens = SoTokenizer();
    m_size = 0;
    m_open = false;
}

bool SoInput::isReading(const SbString& fileName) const
{
    const SbString wanted = SbFileHelper::toAbsolute(fileName);
    for (const SoInput* in = this; in; in = in->m_parent) {
        if (!in->m_fileName.isEmpty() && SbFileHelper::toAbsolute(in->m_fileName) == wanted)
            return true;
    }
    return false;
}

void SoInput::progress(std::size_t, std::size_t) {}

void SoInput::warn(const SbString& fileName, int line, int column, const SbString& text)
{
    if (m_parent) {
        m_parent->warn(fileName, line, column, text);
        return;
    }
    const SbString name = fileName.isEmpty() ? SbString("<memory>") : fileName;
    SoDebugError::postWarning("SoInput", "%s:%d:%d: %s", name.getString(), line, column,
                              text.getString());
}

void SoInput::warnHere(const SbString& text)
{
    int line = 0, column = 0;
    if (isBinary()) // has no lines
        return warnAt(0, 0, text + " at byte " + SbString(std::to_string(getPlace())));
    if (m_numWarnings <= kMaxWarnings) // finding a line takes time
        m_tokens.getPosition(m_tokens.getOffset(), line, column);
    warnAt(line, column, text);
}

void SoInput::warnAt(int line, int column, const SbString& text)
{
    if (++m_numWarnings > kMaxWarnings + 1)
        return;
    warn(m_fileName, line, column,
         m_numWarnings > kMaxWarnings ? SbString("further remarks are left out") : text);
}

bool SoInput::countFile()
{
    SoInput* top = this;
    while (top->m_parent)
        top = top->m_parent;
    return ++top->m_filesRead <= kMaxFiles;
}

SbString SoInput::findFile(const SbString& name) const
{
    return lookUp(name, getFolder());
}

SbString SoInput::getFolder() const
{
    if (!m_fileName.isEmpty())
        return SbFileHelper::getDirName(m_fileName);
    return m_folder.isEmpty() && m_parent ? m_parent->getFolder() : m_folder;
}

SoInput::Format SoInput::formatOfHeader(std::string_view header)
{
    const KnownHeader* known = findHeader(trimmed(header));
    return known ? known->format : UNKNOWN_FORMAT;
}

SbString SoInput::getKnownHeaders()
{
    std::string list;
    for (const KnownHeader& known : kKnownHeaders) {
        if (!list.empty())
            list += ", ";
        list.append("\"").append(known.text).append("\"");
    }
    return list;
}
