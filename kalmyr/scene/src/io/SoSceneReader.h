#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class SoMFNode;
class SoUnknownNode;

namespace kalmyr::detail {

/// Reads the nodes of one file. A dialect says how type names are found and what a node's body is.
///
/// The first fault ends reading: the tokenizer keeps it, and postError() makes it known. Nodes are
/// owned by what holds them; those that were given names are held here until reading ends.
class SceneReader : public SoFieldReader {
public:
    /// Nodes nested deeper are refused: readers, writers and traversals need stack for each level.
    static constexpr int kMaxNesting = 6000;
    /// Longer names are refused (bytes).
    static constexpr std::size_t kMaxNameLength = 4096;

    /// The reader for the input's format; null after a posted error when there is none.
    /// A text without a header is Kalmyr text if `headerNeeded` is false.
    static std::unique_ptr<SceneReader> make(SoInput& in, bool headerNeeded);

    ~SceneReader() override;

    bool readNode(SoNode*& node) override;
    /// Next node of the file itself; null with `true` at its end.
    virtual bool readTop(SoNode*& node);
    /// The rest of the file.
    bool readAll(std::vector<SoRef<SoNode>>& nodes);
    /// "Path { head NODE indices [ ... ] }"
    bool readPath(SoRef<SoPath>& path);

    /// Posts the fault as a read error, once.
    void postError();

protected:
    struct TypeEntry {
        SoType type; ///< bad when nobody knows it
        SoDB::ReadHook hook = nullptr;
    };

    explicit SceneReader(SoInput& in);

    virtual SoType findType(std::string_view name) const = 0;
    /// Reads up to and including the closing brace.
    virtual bool readBody(SoNode* node, std::string_view typeName) = 0;
    /// The same for a node whose type is not known; `node` is new.
    virtual bool readUnknownBody(SoUnknownNode* node, std::string_view typeName) = 0;
    /// A name as the file has it is legal here; and the node's own part of it.
    virtual bool isLegalName(std::string_view name) const = 0;
    virtual std::string_view ownName(std::string_view name) const { return name; }

    /// Goes on after `word`, which is the first of a node.
    bool readNodeFrom(std::string_view word, SoNode*& node);
    /// 1 a field was read, 0 the node has no such field, -1 fault.
    int tryField(SoNode* node, std::string_view word, std::string_view typeName);
    virtual void afterValue(SoField&) {}
    /// 1 a statement that is no node was skipped, 0 `word` begins none, -1 fault.
    virtual int tryStatement(std::string_view) { return 0; }
    /// One node or a list; what is left out (NULL, statements) leaves no gap.
    bool readNodeList(SoMFNode& field);
    /// Records that the brace that closes `typeName` is missing, or what else stands there.
    bool failInBody(std::string_view typeName, const char* wanted);
    /// Skips "{ ... }" or "[ ... ]". DEF names inside stand for nothing afterwards if `keepNames`.
    bool skipBlock(char open, bool keepNames, std::string_view* inside = nullptr);
    bool readSkippedBody(SoUnknownNode* node, bool keepNames);

    /// A remark on what stands at `at`, once for every different `key`.
    void warnOnce(const std::string& key, const char* at, const std::string& message);

    SoInput& m_in;

private:
    struct Definition {
        SoRef<SoNode> node; ///< null for a node that was skipped
        bool open;          ///< its body is being read
    };

    bool readDefinition(std::string_view type, std::string_view name, SoNode*& node);
    bool readName(std::string_view& name);
    /// Goes on with a stack of its own where nodes nest deeply.
    bool readBodySafely(SoNode* node, std::string_view type, bool known);
    bool readUse(SoNode*& node);
    const TypeEntry& entryOf(std::string_view type);

    std::unordered_map<std::string_view, Definition> m_definitions; ///< names point into the text
    std::unordered_map<std::string_view, TypeEntry> m_types;
    std::unordered_set<std::string> m_warned;
    std::size_t m_bodyAt =
        0; ///< the brace that opened the innermost body, before anything in it was read
    const char* m_stackLimit = nullptr; ///< reading changes stacks below this address
    int m_depth = 0;
    bool m_posted = false;
};

/// Kalmyr text, and VRML 1.0, which it follows.
class KalmyrReader final : public SceneReader {
public:
    explicit KalmyrReader(SoInput& in) : SceneReader(in) {}

protected:
    SoType findType(std::string_view name) const override;
    bool readBody(SoNode* node, std::string_view typeName) override;
    bool readUnknownBody(SoUnknownNode* node, std::string_view typeName) override;
    bool isLegalName(std::string_view name) const override;
    std::string_view ownName(std::string_view name) const override;
    void afterValue(SoField& field) override;

private:
    bool readDeclaration(SoUnknownNode* node);
};

/// VRML97 (ISO/IEC 14772-1:1997), static content.
class Vrml97Reader final : public SceneReader {
public:
    explicit Vrml97Reader(SoInput& in) : SceneReader(in) {}
    bool readTop(SoNode*& node) override;

protected:
    SoType findType(std::string_view name) const override;
    bool readBody(SoNode* node, std::string_view typeName) override;
    bool readUnknownBody(SoUnknownNode* node, std::string_view typeName) override;
    bool isLegalName(std::string_view name) const override;

    int tryStatement(std::string_view word) override;

private:
    bool skipRoute(std::string_view word);
    bool skipPrototype(bool external);

    std::unordered_set<std::string_view> m_prototypes;
};

} // namespace kalmyr::detail
