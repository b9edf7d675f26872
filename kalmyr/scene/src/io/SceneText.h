#pragma once

#include "DefinitionTable.h"
#include "Dialect.h"

#include <kalmyr/io/SoInput.h>

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace kalmyr::detail {

/// "'text'", cut where it is long, for messages.
std::string quoted(std::string_view text);

/// The text that is being read, and what all its readers share: the names that DEF gave, remarks,
/// and stops.
class SceneText {
public:
    /// Longer names are refused (bytes).
    static constexpr std::size_t kMaxNameLength = 4096;

    SceneText(SoInput& in, const Dialect& dialect);
    /// A part of the text of `file`, which begins there at `at`; `file` may be null.
    SceneText(SoInput& in, const Dialect& dialect, SceneText* file, std::size_t at);

    SoInput& getInput() const { return m_in; }
    const Dialect& getDialect() const { return m_dialect; }
    SoTokenizer& getTokens() const { return m_text; }
    DefinitionTable& getDefinitions() { return m_definitions; }

    bool isDefined(std::string_view name) const { return m_definitions.find(name) != nullptr; }
    /// The node of that name; null when there is none, and for one that was skipped.
    SoNode* findNode(std::string_view name) const;

    /// Whether reading was stopped; the text has failed then.
    bool isStopped();
    /// After work that moves on in no text, as long as reading that many bytes of it: reports
    /// progress. False when reading was stopped.
    bool countWork(std::size_t bytes);
    /// Between nodes: reports progress. False after a fault and after a stop.
    bool goesOn();
    /// Remarks on a header that is not written as it should be, and on bytes behind the text.
    void warnOfEnds();
    /// Lets the host know that all of it was read.
    void tellEnd();
    /// Makes the fault or the stop that ended reading known.
    void tellFault();

    /// The text of the file that this one is a part of; null when that is not at hand.
    SceneText* getFile() const { return m_file; }
    /// Where a part of this text stands in the file.
    std::size_t toFileOffset(std::size_t offset) const { return m_fileAt + offset; }

    /// Where a part of the text stands.
    std::size_t offsetOf(std::string_view part) const
    {
        return static_cast<std::size_t>(part.data() - m_text.getText());
    }
    /// Records a fault at the word, which was taken.
    bool failAt(std::string_view word, const std::string& message);
    /// Records that the brace that closes `typeName` is missing, or what else stands there.
    bool failInBody(std::string_view typeName, const char* wanted);
    /// A remark on what stands at `at`, once for every different `key`.
    void warnOnce(const std::string& key, const char* at, const std::string& message);

    /// A remark on what stands `line` and `column` into the text that begins at `begin`, once.
    void warnInPart(std::size_t begin, int line, int column, const std::string& message);

    /// A name behind DEF or USE.
    bool readName(std::string_view& name);
    /// Remarks on a name that the format does not allow.
    void warnOddName(std::string_view name);
    /// Takes a name with characters that are no part of names, as some programs write them.
    bool takeOddName(std::string_view& name);

    /// The place of "{ ... }" in the text.
    struct Block {
        std::size_t open = 0;
        std::size_t close = 0;
    };
    /// Skips "{ ... }" or "[ ... ]". DEF names inside stand for nothing afterwards if `keepNames`.
    /// Adds all "{ ... }" in it, itself included, to `blocks`, sorted by where they open.
    bool skipBlock(char open, bool keepNames, std::vector<Block>* blocks = nullptr);
    /// Skips one value of unknown type.
    bool skipValue(bool keepNames = true);

    /// Reads on in another text, which must live as long.
    void setText(const char* text, std::size_t size);
    /// Counts bytes that were read beside the text.
    void countAside(std::size_t bytes);
    /// Lets `in` read a text that belongs to no file. Reports progress when it is long.
    static void openText(SoInput& in, const std::string& text, const std::string& name);

private:
    /// False when there is no number.
    bool skipNumbers();

    SoInput& m_in;
    SoTokenizer& m_text; // The input's.
    const Dialect& m_dialect;
    SceneText* m_file = this; // Not owned.
    std::size_t m_fileAt = 0; ///< where this text begins in the file's
    DefinitionTable m_definitions;
    std::unordered_set<std::string> m_warned;
};

} // namespace kalmyr::detail
