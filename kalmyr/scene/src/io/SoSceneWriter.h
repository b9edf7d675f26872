#pragma once

#include "FieldValueWriter.h"
#include "KeptWriter.h"
#include "PathCut.h"
#include "PrototypeWriter.h"
#include "RouteWriter.h"
#include "WriteDialect.h"
#include "WriteInterruption.h"
#include "WrittenNames.h"
#include "WrittenText.h"

#include "core/FieldText.h"

#include <kalmyr/base/SbName.h>
#include <kalmyr/core/SoFieldIO.h>

#include <functional>
#include <string>
#include <utility>

class SoMNodeField;
class SoNode;
class SoPath;
class SoVRMLProtoInstance;

namespace kalmyr::detail {

/// Writes the nodes of one graph. The action walks twice: first the nodes are counted, then
/// written.
class SceneWriter final : public SoFieldWriter {
public:
    SceneWriter(SoAction& action, SoOutput& out);

    /// Children beside the path are left out, of nodes above its tail.
    void keepOnly(const SoPath& path) { m_cut.keepOnly(path); }
    /// The children of the root are written in its place.
    void leaveOutRoot() { m_rootLeftOut = true; }
    /// Asked before each node, and inside long values, whether to go on. False ends the traversals.
    void setInterruption(std::function<bool()> goOn) { m_interruption.set(std::move(goOn)); }
    bool isInterrupted() const { return m_interruption.isInterrupted(); }

    bool isCounting() const { return m_counting; }
    /// All nodes are counted.
    void startWriting();
    void finish();
    void beginPath() { PathCut::begin(m_text); }
    void endPath(const SoPath& path) { m_cut.end(m_text, path); }
    /// Values by themselves, instead of a graph: once to count what they hold, and once to write.
    void values(const WriteValue& write);

    /// Around the method of each node; false when the node was met before.
    bool enter(SoNode* node);
    void leave(const SoNode* node);
    /// Whether the children of a node are the values of one of its fields.
    static bool hasChildrenField(const SoNode* node);

    /// The inside of a node's braces.
    void fields(SoNode* node);
    void children(SoNode* node);
    void instance(SoVRMLProtoInstance* node);
    /// For nodes that declare their fields.
    KeptWriter& kept() { return m_kept; }

    /// One field of a node, if it is to be written.
    void field(SoNode* node, const SbName& name, SoField* field);
    /// Its value alone.
    void value(const SoNode* node, const SoField& field);

    void writeNode(const SoNode* node) override;
    void writeEngine(const SoEngine* engine) override;
    void breakLine() override { m_text.breakLine(); }
    void flushIfLarge() override;

private:
    bool isFieldWritten(const SoNode* node, const SbName& name, const SoField& field) const;
    void countField(const SoNode* node, const SoField& field);
    /// Whether the node only holds the nodes of a file, whose text has no node for it.
    bool isWrapper(const SoNode* node) const;
    void nodeList(const SoNode* node, const SoMNodeField& field);
    void writeUse(const SoNode* node);
    void header(SoNode* node, WrittenNames::Info& info);

    SoAction& m_action;
    std::string m_buffer;
    WriteDialect m_dialect;
    WriteInterruption m_interruption;
    WrittenText m_text;
    WrittenNames m_names;
    PathCut m_cut;
    PrototypeWriter m_prototypes;
    RouteWriter m_routes;
    KeptWriter m_kept;
    FieldValueWriter m_values;
    const SoNode* m_root = nullptr;
    bool m_rootLeftOut = false;
    bool m_counting = true;
};

} // namespace kalmyr::detail
