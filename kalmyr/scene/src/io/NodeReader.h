#pragma once

#include "BinaryPieces.h"
#include "DeclarationReader.h"
#include "EngineReader.h"
#include "IndexCheck.h"
#include "Parsed.h"
#include "PrototypeReader.h"
#include "RouteReader.h"
#include "SceneText.h"
#include "UnknownReader.h"
#include "ValueReader.h"

#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

class SoChildList;

namespace kalmyr::detail {

/// Reads the nodes of one text, and the values of their fields.
///
/// The first fault ends reading; the tokenizer keeps it. Nodes are owned by what holds them; those
/// that were given names are held here until reading ends.
class NodeReader final : public SoFieldReader {
public:
    /// Nodes nested deeper are refused: readers, writers and traversals need stack for each level.
    static constexpr int kMaxNesting = 6000;

    NodeReader(SoInput& in, const Dialect& dialect);
    /// Reads the text of a prototype, a part of that of `file` if not null, for `instance` and on
    /// behalf of `outer`. What was declared before the prototype is known there.
    NodeReader(SoInput& in, NodeReader& outer, SoVRMLProto& proto, SoVRMLProtoInstance* instance,
               SceneText* file);
    /// Makes no nodes of prototypes, and reads no other files: only faults are wanted.
    void setCheckOnly() { m_isCheck = true; }

    SceneText& getScene() { return m_scene; }
    PrototypeReader& getPrototypes() { return m_prototypes; }
    RouteReader& getRoutes() { return m_routes; }
    DeclarationReader& getDeclarations() { return m_declarations; }
    BinaryPieces& getPieces() { return m_pieces; }
    ValueReader& getValues() { return m_values; }
    IndexCheck& getIndexCheck() { return m_indexCheck; }

    bool readNode(SoNode*& node) override;
    bool readEngine(SoEngine*& engine) override;
    bool leaveOut(std::size_t at, const SbString& why) override;

    /// Goes on behind `word`, which is the first of a node.
    bool readNodeFrom(std::string_view word, SoNode*& node);
    /// The same for a node that stands at the top or among the fields of another.
    bool readChildFrom(std::string_view word, SoNode*& node);
    /// A statement that is no node and begins with `word`, which was taken.
    Parsed tryStatement(std::string_view word);
    /// All statements that stand here. False after a fault.
    bool readStatements();
    /// The body of a node, up to and including its closing brace.
    bool readBody(SoNode* node, std::string_view typeName);

    /// Where the innermost body began, before anything in it was read: its opening brace.
    std::size_t getBodyOffset() const { return m_bodyAt; }
    /// Levels of prototypes that what is read stands in.
    int getProtoDepth() const { return m_protoDepth; }
    /// Levels of nodes that what is read stands in.
    int getDepth() const { return m_depth; }
    /// How often nodes were given names, or used by name, up to here.
    std::size_t getNumNamed() const { return m_numNamed; }
    bool isInPrototype() const { return m_protoDepth > 0; }
    /// The type name may mean something else from here on.
    void forgetType(std::string_view name)
    {
        m_types.erase(name);
        m_lastTypes = {};
    }
    /// The names in the text so far are none in what follows.
    void forgetNames();
    /// Lets go of nodes, prototypes and all else that has a name in the text.
    void release();

private:
    struct TypeEntry {
        SoType type; ///< bad when nobody knows it
        SoDB::ReadHook hook = nullptr;
        SoVRMLProto* proto = nullptr; ///< held by the prototype reader
    };

    bool readUse(SoNode*& node);
    bool readDefinition(std::string_view type, std::string_view name, SoNode*& node);
    const TypeEntry& entryOf(std::string_view type);
    static SoNode* makeNode(const TypeEntry& entry);
    /// Goes on with a stack of its own where nodes nest deeply.
    bool readBodySafely(SoNode* node, std::string_view type, bool known);
    bool finishNode(SoNode* node, const TypeEntry& entry, std::size_t typeAt);
    Parsed tryField(SoNode* node, std::string_view word, std::string_view typeName);
    Parsed readChild(SoChildList& children, std::string_view word);
    /// The field's place in the node's table, also under other names; negative when there is none.
    int findField(const SoNode* node, std::string_view word, std::string_view typeName);
    int findOtherName(const SoNode* node, std::string_view word, std::string_view typeName);
    /// Where what was found for a word is looked for first.
    static std::size_t slotOf(std::string_view word)
    {
        const auto at = [&](std::size_t i) { return static_cast<unsigned char>(word[i]); };
        return (word.size() + at(0) * 7u + at(word.size() / 2) * 13u + at(word.size() - 1) * 3u)
               % kNumSlots;
    }

    SceneText m_scene;
    EngineReader m_engines;
    RouteReader m_routes;
    PrototypeReader m_prototypes;
    DeclarationReader m_declarations;
    UnknownReader m_unknown;
    BinaryPieces m_pieces;
    ValueReader m_values;
    IndexCheck m_indexCheck;
    std::unordered_map<std::string_view, TypeEntry> m_types;
    /// What a few words were found to be, so that most need no search.
    static constexpr std::size_t kNumSlots = 64;
    std::array<std::pair<std::string_view, const TypeEntry*>, kNumSlots> m_lastTypes{};
    std::array<std::uint16_t, kNumSlots> m_lastFields{}; ///< places in tables, to be made sure of
    std::size_t m_bodyAt = 0;
    std::size_t m_numNamed = 0;
    const char* m_stackLimit = nullptr; ///< reading changes stacks below this address
    int m_depth = 0;
    int m_protoDepth = 0;
    bool m_isCheck = false;
    int m_ownExpanded = 0;
    int* m_expanded = &m_ownExpanded; ///< nodes made of prototypes in the whole scene
};

} // namespace kalmyr::detail
