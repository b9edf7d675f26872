#pragma once

#include "DefinitionTable.h"
#include "IndexCheck.h"
#include "SoBlocks.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/vrml/SoVRMLProto.h>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class SoMNodeField;
class SoUnknownNode;
class SoVRMLScript;

namespace kalmyr::detail {

class Vrml97Reader;

/// Reads the nodes of one file. A dialect says how type names are found and what a node's body is.
///
/// The first fault ends reading: the tokenizer keeps it, and abandon() makes it known. Nodes are
/// owned by what holds them; those that were given names are held here until reading ends.
class SceneReader : public SoFieldReader {
public:
    /// Nodes nested deeper are refused: readers, writers and traversals need stack for each level.
    static constexpr int kMaxNesting = 6000;
    /// Longer names are refused (bytes).
    static constexpr std::size_t kMaxNameLength = 4096;
    /// Instances of prototypes may stand in the bodies of others that deep.
    static constexpr int kMaxProtoNesting = 200;
    /// Nodes that all prototypes of a scene may expand to.
    static constexpr int kMaxExpandedNodes = 1'000'000;

    /// The reader for the input's format; null after a posted error when there is none.
    /// A text without a header is Kalmyr text if `headerNeeded` is false.
    static std::unique_ptr<SceneReader> make(SoInput& in, bool headerNeeded);

    ~SceneReader() override;

    bool readNode(SoNode*& node) override;
    /// Statements and other text here that is no node.
    bool readStatements();
    /// Next node of the file itself; null with `true` at its end.
    virtual bool readTop(SoNode*& node);
    /// The rest of the file.
    bool readAll(std::vector<SoRef<SoNode>>& nodes);
    /// "Path { head NODE indices [ ... ] }"
    bool readPath(SoRef<SoPath>& path);

    /// Lets the root of the scene keep the prototypes that nothing in the file uses.
    void keepUnused(const SoNode* root) const;

    /// Ends reading after a fault or a stop: posts it as a read error, once, and lets go of all
    /// that was kept for the rest of the file.
    void abandon();

protected:
    struct TypeEntry {
        SoType type; ///< bad when nobody knows it
        SoDB::ReadHook hook = nullptr;
        SoVRMLProto* proto = nullptr; ///< held by m_protos and those before it
    };

    explicit SceneReader(SoInput& in);
    /// Reads the text of a prototype, where the prototypes from `protos` on are known, on behalf of
    /// `outer`.
    SceneReader(SoInput& in, SceneReader& outer, SoVRMLProto* protos);

    virtual SoType findType(std::string_view name) const = 0;
    /// Name under which VRML97 text knows the prototype that this file calls `name`; empty for
    /// names that are no prototype's.
    virtual std::string_view protoName(std::string_view name) const { return name; }
    /// Reads up to and including the closing brace.
    virtual bool readBody(SoNode* node, std::string_view typeName) = 0;
    /// The same for a node whose type is not known; `node` is new.
    virtual bool readUnknownBody(SoUnknownNode* node, std::string_view typeName) = 0;
    /// A name as the file has it is legal here; and the node's own part of it.
    virtual bool isLegalName(std::string_view name) const = 0;
    virtual std::string_view ownName(std::string_view name) const { return name; }

    /// Lets go of nodes, prototypes and all else that has a name in the file.
    virtual void release();
    /// Whether reading was stopped; the text has failed then.
    bool isStopped();
    /// After work that moves on in no text, as long as reading that many bytes of it: reports
    /// progress. False when reading was stopped.
    bool countWork(std::size_t bytes);
    /// Between nodes: reports progress. False after a fault and after a stop.
    bool goesOn();
    /// Goes on after `word`, which is the first of a node.
    bool readNodeFrom(std::string_view word, SoNode*& node);
    /// 1 a field was read, 0 the node has no such field, -1 fault.
    int tryField(SoNode* node, std::string_view word, std::string_view typeName);
    virtual void afterValue(SoField&) {}
    /// 1 a statement that is no node was skipped, 0 `word` begins none, -1 fault.
    virtual int tryStatement(std::string_view) { return 0; }
    /// What a field is called in the node, where the file calls it otherwise. Empty: no such field.
    virtual std::string_view fieldAlias(SoNode*, std::string_view) const { return {}; }
    /// Goes on behind the name of a field that takes its value from the prototype that is being
    /// read. 1 it does, 0 it does not, -1 fault.
    virtual int tryIs(SoNode*, SoField&, bool /*isEvent*/) { return 0; }
    /// USE of a name that is not known, or of a node that is still open. True: it is left out.
    virtual bool mayLeaveOutUse() const { return false; }
    bool readFieldValue(SoField& field);
    /// The same, and in the formats that are read leniently names of values in any way of writing.
    bool readOddValue(SoField& field);
    /// Whether nothing follows; goes on to the next piece of a binary file.
    bool atEndOfFile();
    /// Begins with the piece of a binary file at `offset`; false after a fault.
    bool openChunk(std::size_t offset);
    SoNode* findDefinition(std::string_view name) const;
    /// A node, or whatever else routes may name.
    virtual SoFieldContainer* findContainer(std::string_view name) const
    {
        return findDefinition(name);
    }
    bool isDefined(std::string_view name) const { return m_definitions.find(name) != nullptr; }
    /// False when there is no number.
    bool skipNumbers();
    /// Skips one value of unknown type.
    bool skipValue(bool keepNames = true);

    /// Keeps the value of a field that the node does not have, for writing.
    bool keepField(SoNode* node, std::string_view name);

    /// PROTO or EXTERNPROTO, behind that word.
    bool readProto(bool external);
    bool isBuiltIn(const SoVRMLProto& proto) const;
    /// ROUTE, behind that word.
    bool readRoute(std::string_view word);
    /// At the end of all in which names are known: the routes that stood in front of a name.
    /// False when reading was stopped.
    bool makeLateRoutes();
    /// Whether routes may name fields that are no events, and convert between types.
    virtual bool routesAnyField() const { return false; }
    SoVRMLProto* findProto(std::string_view name) const;
    /// One node or a list; what is left out (NULL, statements) leaves no gap.
    bool readNodeList(SoMNodeField& field);
    /// Records that the brace that closes `typeName` is missing, or what else stands there.
    bool failInBody(std::string_view typeName, const char* wanted);
    /// Skips "{ ... }" or "[ ... ]". DEF names inside stand for nothing afterwards if `keepNames`.
    bool skipBlock(char open, bool keepNames, std::string_view* inside = nullptr);
    bool readSkippedBody(SoUnknownNode* node, bool keepNames);

    bool leaveOut(std::size_t at, const SbString& why) override;
    /// A remark on what stands at `at`, once for every different `key`.
    void warnOnce(const std::string& key, const char* at, const std::string& message);

    SoInput& m_in;
    SoRef<SoVRMLProto> m_protos; ///< the one declared last

private:
    friend class Vrml97Reader;
    bool readBlock(SoField& field);

    bool m_isBinary = false;
    Chunk m_chunk;             ///< what is read of a binary file
    std::string_view m_binary; ///< the whole of it
    bool readDefinition(std::string_view type, std::string_view name, SoNode*& node);
    bool readName(std::string_view& name);
    /// Names with characters that are no part of names, as some programs write them.
    bool takeOddName(std::string_view& name);
    /// Goes on with a stack of its own where nodes nest deeply.
    bool readBodySafely(SoNode* node, std::string_view type, bool known);
    bool readUse(SoNode*& node);
    const TypeEntry& entryOf(std::string_view type);
    static SoNode* makeNode(const TypeEntry& entry);
    bool finishNode(SoNode* node, const TypeEntry& entry, std::size_t typeAt);

    bool readInterface(SoVRMLProto& proto, std::size_t textAt);
    bool readInterfaceEntry(SoVRMLProto& proto, std::string_view kind, std::size_t textAt);
    /// A route as it stands in the text.
    struct RouteText {
        const char* at;
        std::string_view fromNode, fromEvent, toNode, toEvent;
    };
    void makeRoute(const RouteText& route);
    bool readRouteEnd(std::string_view& node, std::string_view& field);
    SoField* findEvent(std::string_view node, std::string_view event, bool out);
    /// An event that a route tells of a node that is kept as text.
    SoField* eventOfUnknown(std::string_view node, std::string_view event, const SoField* other,
                            bool otherIsUnknown, SoField::FieldType kind);
    bool isUnknown(std::string_view node) const;
    bool readUrls(SoVRMLProto& proto);
    SoVRMLProto* bodyOf(SoVRMLProto* proto);
    SoRef<SoVRMLProto> findInFile(const SoVRMLProto& proto, const SbString& url);
    bool expand(SoVRMLProtoInstance* instance, std::size_t at);
    bool readDefaults(Vrml97Reader& reader, SoVRMLProtoInstance& instance);

    DefinitionTable m_definitions;
    std::unordered_map<std::string_view, TypeEntry> m_types;
    std::unordered_set<std::string> m_warned;
    std::vector<RouteText> m_lateRoutes;
    std::size_t m_bodyAt =
        0; ///< the brace that opened the innermost body, before anything in it was read
    const char* m_stackLimit = nullptr; ///< reading changes stacks below this address
    int m_depth = 0;
    int m_protoDepth = 0;
    int m_ownExpanded = 0;
    int* m_expanded = &m_ownExpanded; ///< nodes made of prototypes in the whole scene
    bool m_posted = false;
};

/// Kalmyr text, and VRML 1.0, which it follows.
class KalmyrReader final : public SceneReader {
public:
    explicit KalmyrReader(SoInput& in) : SceneReader(in) {}
    bool readTop(SoNode*& node) override;

protected:
    std::string_view protoName(std::string_view name) const override;
    bool routesAnyField() const override { return true; }
    SoFieldContainer* findContainer(std::string_view name) const override;
    int tryStatement(std::string_view word) override;
    SoType findType(std::string_view name) const override;
    bool readBody(SoNode* node, std::string_view typeName) override;
    bool readUnknownBody(SoUnknownNode* node, std::string_view typeName) override;
    bool isLegalName(std::string_view name) const override;
    std::string_view ownName(std::string_view name) const override;
    void afterValue(SoField& field) override;

    void release() override;
    bool mayLeaveOutUse() const override { return isVrml1(); }
    bool readEngine(SoEngine*& engine) override;

private:
    /// VRML 1.0 is read leniently: programs that write it take liberties.
    bool isVrml1() const;
    /// Whether `word`, which was just taken, begins a node.
    bool isNode(std::string_view word);
    /// 1 what a known class has no place for was kept, 0 `word` begins something else, -1 fault.
    int tryForeign(SoNode* node, std::string_view word, std::string_view typeName);
    /// Of a node of unknown type that says nothing of its fields: in VRML 1.0 its children are
    /// nodes where that can be made out.
    bool readKeptBody(SoUnknownNode* node, std::string_view typeName);
    /// Behind the word "fields".
    bool readDeclaration(SoNode* node);
    /// The same for a node of a known class, whose further fields are kept as text.
    bool keepDeclaration(SoNode* node);
    bool isDeclared(const SoNode* node, std::string_view name) const;
    /// Behind the word "KEEP".
    bool readKept(SoNode* node);
    /// Behind the words "ENGINE" and "GLOBAL".
    bool readEngineStatement(SoRef<SoEngine>& engine);
    bool readGlobalStatement();

    std::unordered_map<std::string_view, SoRef<SoEngine>> m_engines;
    std::vector<SbName> m_newGlobals; ///< global fields that the file made
    IndexCheck m_indexCheck;
    /// Names that "fields" declares beside those of the class, of nodes that are being read.
    std::unordered_map<const SoNode*, std::unordered_set<std::string_view>> m_declared;
};

/// VRML97 (ISO/IEC 14772-1:1997).
class Vrml97Reader final : public SceneReader {
public:
    explicit Vrml97Reader(SoInput& in) : SceneReader(in) {}
    /// For the body and the default values of prototypes. `instance` may be null.
    Vrml97Reader(SoInput& in, SceneReader& outer, SoVRMLProto* protos,
                 SoVRMLProtoInstance* instance)
        : SceneReader(in, outer, protos), m_instance(instance)
    {
    }
    bool readTop(SoNode*& node) override;
    /// The nodes up to the brace that closes a prototype's body.
    bool readProtoBody(SoVRMLProtoInstance& instance);
    /// The prototype of that name in the file, or the first one for an empty name; null when there
    /// is none.
    SoRef<SoVRMLProto> readProtoNamed(std::string_view name);

protected:
    SoType findType(std::string_view name) const override;
    bool readBody(SoNode* node, std::string_view typeName) override;
    bool readUnknownBody(SoUnknownNode* node, std::string_view typeName) override;
    /// Programs write names that begin with digits or signs, and plain numbers.
    bool isLegalName(std::string_view name) const override { return !name.empty(); }
    std::string_view fieldAlias(SoNode* node, std::string_view word) const override;
    int tryIs(SoNode* node, SoField& field, bool isEvent) override;
    int tryStatement(std::string_view word) override;
    bool mayLeaveOutUse() const override { return true; }

private:
    int tryDeclaration(SoVRMLScript* script, std::string_view word);
    /// The body of a node of unknown type, as far as it looks like that of any other. False when it
    /// does not; part of it is taken then.
    bool readPieces(SoUnknownNode* node);
    /// The type of a field that holds what comes next; null when that is no node.
    const char* nodeFieldType();
    bool skipField(SoNode* node, std::string_view word, std::string_view typeName);

    SoVRMLProtoInstance* m_instance = nullptr; // Not owned; the instance that is being made.
};

/// What "field", "eventOut" and such words declare; null for other words.
const SoField::FieldType* findFieldKind(std::string_view word);

/// The field that an event belongs to: its own, or the exposed field that it sets or reports. Null
/// when there is none.
SoField* fieldOfEvent(SoFieldContainer& node, std::string_view event, bool out);

/// Lets `to` follow `from`. With `takeValue` it takes the value at once, else with the next change.
/// False when there is no conversion, or when the way would lead in a circle.
bool connectFields(SoField& from, SoField& to, bool takeValue);

} // namespace kalmyr::detail
