#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SoContract.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Reads tokens of scene text from a memory buffer: names, numbers, strings, punctuation.
///
/// White space, commas and comments ("#" to the end of the line) separate tokens. All reads skip
/// them first. A read that fails leaves the position at the offending token; fail() records the
/// first error with its position, and every later read fails too. The buffer must end in a zero
/// byte that is not part of the text, so that scanning needs few bounds tests.
class KALMYR_API SoTokenizer {
public:
    /// Longer strings and names are refused.
    static constexpr std::size_t kMaxStringLength = std::size_t(1) << 28;
    static constexpr std::size_t kMaxWordLength = std::size_t(1) << 16;

    SoTokenizer() = default;
    /// `text[size]` must be readable and zero. The buffer must outlive the tokenizer. Null stands
    /// for the empty text.
    SoTokenizer(const char* text, std::size_t size, std::string_view sourceName = {});

    bool atEnd();                ///< skips separators; true when nothing follows
    char peek();                 ///< next significant character, 0 at the end
    bool accept(char c);         ///< takes `c` if it is next
    bool expect(char c);         ///< takes `c` or fails with "expected 'c'"
    std::string_view peekWord(); ///< next identifier without taking it; empty if none
    /// Takes an identifier as names of nodes and fields have it (VRML97 rules: anything but
    /// controls, blank, and "#',.[]\{}, not beginning with a digit or sign); false without an
    /// error when something else follows.
    bool readWord(std::string_view& word);
    /// The same, and the first character may be a digit or a sign: what follows DEF and USE.
    bool readName(std::string_view& name);
    /// Takes letters, digits and underscores only, not beginning with a digit: names of enums,
    /// which may touch punctuation such as "(A|B)".
    bool readIdentifier(std::string_view& identifier);
    /// Takes `word` if it is the next identifier.
    bool acceptWord(std::string_view word);

    /// Numbers may begin with '+'; whole numbers may be hexadecimal ("0xFF"); floats may be "nan"
    /// and "inf". A float beyond its type's range becomes an infinity or zero, a whole number
    /// beyond its type's range is an error.
    bool readFloat(float& value);
    bool readDouble(double& value);
    bool readInt(std::int32_t& value);
    bool readUInt(std::uint32_t& value);
    bool readShort(std::int16_t& value);
    bool readUShort(std::uint16_t& value);
    bool readBool(bool& value); ///< TRUE FALSE, true false, or 1 and 0
    /// A double-quoted string with escapes \" and \\, or a bare word.
    bool readString(std::string& value);

    /// Reads numbers until something else follows; appends to `values` in one pass. Returns the
    /// number read.
    std::size_t readFloats(std::vector<float>& values);
    std::size_t readInts(std::vector<std::int32_t>& values);
    /// Reads at most `max` numbers to `to` and stops in front of whatever is no number of the
    /// type. Returns the number read. The fast path of every multiple-value field.
    std::size_t readNumbers(float* to, std::size_t max);
    std::size_t readNumbers(double* to, std::size_t max);
    std::size_t readNumbers(std::int32_t* to, std::size_t max);
    std::size_t readNumbers(std::uint32_t* to, std::size_t max);
    std::size_t readNumbers(std::int16_t* to, std::size_t max);
    std::size_t readNumbers(std::uint16_t* to, std::size_t max);

    /// Records an error at the next token unless there is one already; returns false for use in
    /// return statements. Messages say what was expected.
    bool fail(const std::string& message);
    bool failAt(std::size_t offset, const std::string& message);
    bool hasFailed() const { return m_failed; }
    const std::string& getError() const { return m_error; }
    /// Position of the error, counting from 1; 0 without an error.
    int getErrorLine() const;
    int getErrorColumn() const;
    std::size_t getErrorOffset() const { return m_errorOffset; }

    std::size_t getOffset() const { return static_cast<std::size_t>(m_at - m_begin); }
    /// Goes to a place, at most getSize().
    void setOffset(std::size_t offset)
    {
        if (kalmyr::holds(offset <= getSize(), "offset <= getSize()"))
            m_at = m_begin + offset;
    }
    std::size_t getSize() const { return static_cast<std::size_t>(m_end - m_begin); }
    /// Bytes not yet read.
    std::size_t getRemaining() const { return static_cast<std::size_t>(m_end - m_at); }
    const char* getText() const { return m_begin; }
    const std::string& getSourceName() const { return m_source; }
    /// 1-based line and column of an offset, the column in bytes. Linear in the offset: for
    /// messages only.
    void getPosition(std::size_t offset, int& line, int& column) const;

    /// Called about every `kProgressStep` bytes while reading, with offset and size.
    using Progress = void (*)(void* data, std::size_t offset, std::size_t size);
    static constexpr std::size_t kProgressStep = 1 << 20;
    void setProgress(Progress function, void* data);
    /// Called by whoever reads much, between values.
    void reportProgress()
    {
        if (m_progress && getOffset() >= m_nextProgress) {
            callProgress();
        }
    }

    /// Called with text that was read and is not looked at again, at least `kDiscardStep` bytes of
    /// it; its owner may give the memory back, keeping the addresses.
    using Discard = void (*)(void* data, std::size_t begin, std::size_t end);
    static constexpr std::size_t kDiscardStep = std::size_t(1) << 18;
    void setDiscard(Discard function, void* data);
    /// Called by whoever reads long lists: nothing from `begin` to the present place is needed any
    /// more, except for the positions of what follows. Moves `begin` on when it was given back.
    void discardFrom(std::size_t& begin)
    {
        if (m_discard && m_numHolds == 0 && getOffset() >= begin + kDiscardStep) {
            callDiscard(begin);
        }
    }
    /// While one lives everything read is kept: the text is wanted once more.
    class Hold {
    public:
        explicit Hold(SoTokenizer& text) : m_text(text) { ++text.m_numHolds; }
        ~Hold() { --m_text.m_numHolds; }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        SoTokenizer& m_text;
    };

private:
    /// Text that was given back, and what it says about positions behind it.
    struct Gap {
        std::size_t begin;
        std::size_t end;
        int lines;             ///< that end inside
        std::size_t lineStart; ///< behind the last of them
    };
    void skip();
    void callProgress();
    void callDiscard(std::size_t& begin);
    void countLines(std::size_t begin, std::size_t end, int& lines, std::size_t& lineStart) const;
    bool takeWhile(unsigned char firstClass, unsigned char restClass, std::string_view& word);
    bool readQuoted(std::string& value);
    template <class T>
    bool readNumber(T& value, const char* what);
    template <class T>
    std::size_t readMany(T* to, std::size_t max);

    const char* m_begin = "";
    const char* m_at = m_begin;
    const char* m_end = m_begin;
    std::string m_source;
    std::string m_error;
    std::size_t m_errorOffset = 0;
    bool m_failed = false;
    Progress m_progress = nullptr;
    void* m_progressData = nullptr;
    std::size_t m_nextProgress = 0;
    Discard m_discard = nullptr;
    void* m_discardData = nullptr;
    int m_numHolds = 0;
    std::vector<Gap> m_gaps; ///< in order
};
