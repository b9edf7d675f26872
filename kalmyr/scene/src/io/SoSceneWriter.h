#pragma once

#include "NodeTable.h"
#include "SoBlocks.h"

#include "core/FieldText.h"

#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoForeignFields.h>

#include <deque>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class SoAction;
class SoField;
class SoFieldContainer;
class SoFieldData;
class SoMNodeField;
class SoNode;
class SoOutput;
class SoPath;
class SoUnknownNode;
class SoVRMLProto;
class SoVRMLProtoInstance;
class SoVRMLScript;

namespace kalmyr::detail {

/// Lays out the text of one graph. The action walks twice: first the nodes are counted, then
/// written.
class SceneWriter final : public SoFieldWriter {
public:
    SceneWriter(SoAction& action, SoOutput& out);

    /// Children beside the path are left out, of nodes above its tail.
    void keepOnly(const SoPath& path);
    /// The children of the root are written in its place.
    void leaveOutRoot() { m_rootLeftOut = true; }
    /// Asked before each node, and inside long values, whether to go on: the graph may have been
    /// edited when it returns, as long as the nodes on the way to the present one live. False ends
    /// the traversals.
    void setInterruption(std::function<bool()> goOn) { m_goOn = std::move(goOn); }
    bool isInterrupted() const { return m_interrupted; }
    void startWriting();
    void finish();
    /// Values by themselves, instead of a graph: once to count what they hold, and once to write.
    void values(const WriteValue& write);

    /// Around the method of each node; false when the node was met before.
    bool enter(SoNode* node);
    void leave(const SoNode* node);
    /// Whether the children of a node are the values of one of its fields.
    static bool hasChildrenField(const SoNode* node);

    void fields(SoNode* node);
    void children(SoNode* node);
    void unknown(SoUnknownNode* node);
    void script(SoVRMLScript* node);
    void instance(SoVRMLProtoInstance* node);
    /// Whether the text is VRML97, where types have other names and children are written in fields.
    bool isVrml97() const { return m_dialect == VRML97; }
    /// Whether the node only holds the nodes of a file, whose text has no node for it.
    bool isWrapper(const SoNode* node) const;
    void beginPath();
    void endPath(const SoPath& path);

    void writeNode(const SoNode* node) override;
    /// The whole engine where it comes first, then its name.
    void writeEngine(const SoEngine* engine) override;
    void breakLine() override;
    void flushIfLarge() override;

private:
    enum Dialect { KALMYR, VRML10, VRML97 };
    using Info = NodeTable::Info;
    /// Prototypes are called "proto:Name" in Kalmyr text, so that they cannot be taken for classes.
    static constexpr std::string_view kProtoPrefix = "proto:";
    /// A field that follows another.
    struct Route {
        const SoField* from;
        const SoField* to;
    };
    /// Text is handed on in pieces of this size (bytes).
    static constexpr std::size_t kFlushSize = std::size_t(1) << 18;

    void askToGoOn();
    void writeCopy(const SoField& field);
    void hold(SoRefCounter* object);
    void newLine();
    void indent(int levels);
    void finishBinary();
    void field(SoNode* node, const SbName& name, SoField* field);
    void value(const SoNode* node, const SoField* field);
    void declaration(const SoFieldData& data, const SoNode* node, int first);
    /// Declarations of the prototypes that were met, those that they use in front of them.
    void prototypes();
    void unusedPrototypes();
    /// A prototype that nothing used; fields have no blank in their names.
    static bool isStatement(const SoForeignFields::Entry& entry);
    void collect(SoVRMLProto* proto);
    void nameProtos();
    std::string_view nameOfProto(const SoVRMLProto* proto) const;
    std::string textOf(const SoVRMLProto* proto) const;
    std::string externalText(const SoVRMLProto& proto) const;
    void foreign(const SoNode* node);
    void findRoutes(const SoFieldContainer* container);
    void findEngine(const SoFieldContainer* engine);
    bool isWritten(const Route& route) const;
    void engines();
    void engine(const SoFieldContainer* engine);
    void globals();
    void routes();
    std::string nameInRoute(const SoFieldContainer* container);
    void nodeList(SoNode* node, const SoMNodeField& field);
    void header(SoNode* node, Info& info);
    bool isKept(const SoNode* parent, const SoNode* child, int index) const;
    const std::string& nameOf(const SoNode* node, Info& info);

    SoAction& m_action;
    SoOutput& m_out;
    std::string m_buffer;
    NodeTable m_nodes;
    std::deque<std::string> m_nodeNames;             ///< in the order in which they were given
    std::unordered_map<const SoNode*, int> m_onPath; ///< child index that the path takes
    std::unordered_set<std::string> m_names;         ///< in use, or wanted by a named node
    std::unordered_set<std::string> m_taken;
    int m_nextInstance = 0;
    int m_indent = 0;
    std::vector<SoVRMLProto*> m_protos; // Not owned; the instances hold them.
    std::unordered_set<const SoVRMLProto*> m_metProtos;
    std::vector<SoForeignFields::Entry> m_unused;   ///< prototypes without an instance
    std::vector<const SoFieldContainer*> m_engines; ///< those that fields follow
    std::unordered_map<const SoFieldContainer*, std::string> m_engineNames;
    std::unordered_set<const SoFieldContainer*> m_writtenEngines;
    std::unordered_map<const SoVRMLProto*, std::string> m_protoNames; ///< other than their own
    std::vector<Route> m_routes;
    const SoNode* m_root = nullptr;
    bool m_rootLeftOut = false;
    Dialect m_dialect = KALMYR;
    std::vector<std::string_view> m_blocks; ///< values that a binary file holds as bytes
    SbString m_folder; ///< of the file that is written; empty for other targets
    bool m_binary = false;
    bool m_counting = true;
    bool m_empty = true; ///< nothing stands yet in the innermost braces
    std::function<bool()> m_goOn;
    std::vector<SoRef<SoRefCounter>> m_held; ///< what is needed again later, with an interruption
    bool m_interrupted = false;
    int m_valueDepth = 0;    ///< inside values of the graph, which must not change
    bool m_inCopy = false;   ///< inside those of a copy
    bool m_verbatim = false; ///< what stands there brings its own space in front of the brace
};

} // namespace kalmyr::detail
