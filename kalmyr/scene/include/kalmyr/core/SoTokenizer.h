#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Reads tokens of scene text from a memory buffer: names, numbers, strings, punctuation.
///
/// White space, commas and comments ("#" to the end of the line) separate tokens. All reads skip
/// them first. A read that fails leaves the position at the offending token; fail() records the
/// first error with its position, and every later read fails too. The buffer must end in a zero
/// byte that is not part of the text, so that number scanning needs no bounds test.
class KALMYR_API SoTokenizer {
public:
    SoTokenizer() = default;
    /// `text[size]` must be readable and zero. The buffer must outlive the tokenizer.
    SoTokenizer(const char *text, std::size_t size, std::string_view sourceName = {});

    bool atEnd();               ///< skips separators; true when nothing follows
    char peek();                ///< next significant character, 0 at the end
    bool accept(char c);        ///< takes `c` if it is next
    bool expect(char c);        ///< takes `c` or fails with "expected 'c'"
    std::string_view peekWord();///< next identifier without taking it; empty if none
    /// Takes an identifier as names of nodes and fields have it (VRML97 rules: anything but
    /// controls, blank, and "#',.[]\{}); false without an error when something else follows.
    bool readWord(std::string_view &word);
    bool acceptWord(std::string_view word);

    bool readFloat(float &value);
    bool readDouble(double &value);
    bool readInt(std::int32_t &value);
    bool readUInt(std::uint32_t &value);
    bool readBool(bool &value);         ///< TRUE FALSE, or 1 and 0
    /// A double-quoted string with escapes \" and \\, or a bare word.
    bool readString(std::string &value);
    /// Reads floats until something else than a number follows; appends to `values` in one pass.
    /// The fast path of every multiple-value field. Returns the number read.
    std::size_t readFloats(std::vector<float> &values);
    std::size_t readInts(std::vector<std::int32_t> &values);

    /// Records "expected ..." at the next token; returns false for use in return statements.
    bool fail(const std::string &message);
    bool failAt(std::size_t offset, const std::string &message);
    bool hasFailed() const { return m_failed; }
    const std::string &getError() const { return m_error; }
    int getErrorLine() const { return m_errorLine; }
    int getErrorColumn() const { return m_errorColumn; }

    std::size_t getOffset() const { return static_cast<std::size_t>(m_at - m_begin); }
    void setOffset(std::size_t offset) { m_at = m_begin + offset; }
    std::size_t getSize() const { return static_cast<std::size_t>(m_end - m_begin); }
    const char *getText() const { return m_begin; }
    const std::string &getSourceName() const { return m_source; }
    /// 1-based line and column of an offset. Linear in the offset: for messages only.
    void getPosition(std::size_t offset, int &line, int &column) const;

    /// Called about every `kProgressStep` bytes while reading, with offset and size.
    using Progress = void (*)(void *data, std::size_t offset, std::size_t size);
    static constexpr std::size_t kProgressStep = 1 << 20;
    void setProgress(Progress function, void *data);
    void reportProgress();

private:
    const char *m_begin = "";
    const char *m_at = m_begin;
    const char *m_end = m_begin;
    std::string m_source;
    std::string m_error;
    int m_errorLine = 0;
    int m_errorColumn = 0;
    bool m_failed = false;
    Progress m_progress = nullptr;
    void *m_progressData = nullptr;
    std::size_t m_nextProgress = 0;
};
