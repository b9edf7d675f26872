#pragma once

#include <kalmyr/base/SbName.h>
#include <kalmyr/core/SoFieldIO.h>

#include <string>
#include <unordered_map>
#include <unordered_set>

class SoAction;
class SoField;
class SoMFNode;
class SoNode;
class SoOutput;
class SoPath;
class SoUnknownNode;

namespace kalmyr::detail {

/// Lays out the text of one graph. The action walks twice: first the nodes are counted, then
/// written.
class SceneWriter final : public SoFieldWriter {
public:
    SceneWriter(SoAction& action, SoOutput& out);

    /// Children beside the path are left out, of nodes above its tail.
    void keepOnly(const SoPath& path);
    void startWriting();
    void finish();

    /// Around the method of each node; false when the node was met before.
    bool enter(SoNode* node);
    void leave();
    /// Whether the children of a node are the values of one of its fields.
    static bool hasChildrenField(const SoNode* node);

    void fields(SoNode* node);
    void children(SoNode* node);
    void unknown(SoUnknownNode* node);
    void beginPath();
    void endPath(const SoPath& path);

    void writeNode(const SoNode* node) override;
    void breakLine() override;
    void flushIfLarge() override;

private:
    struct Info {
        int count = 0;
        bool written = false;
        std::string name;
    };
    /// Text is handed on in pieces of this size (bytes).
    static constexpr std::size_t kFlushSize = std::size_t(1) << 18;

    void newLine();
    void field(SoNode* node, const SbName& name, SoField* field);
    void nodeList(SoNode* node, const SoMFNode& field);
    void header(SoNode* node, Info& info);
    bool isKept(const SoNode* parent, const SoNode* child, int index) const;
    const std::string& nameOf(const SoNode* node, Info& info);

    SoAction& m_action;
    SoOutput& m_out;
    std::string m_buffer;
    std::unordered_map<const SoNode*, Info> m_nodes;
    std::unordered_map<const SoNode*, int> m_onPath; ///< child index that the path takes
    std::unordered_set<std::string> m_names;         ///< in use, or wanted by a named node
    std::unordered_set<std::string> m_taken;
    int m_nextInstance = 0;
    int m_indent = 0;
    bool m_counting = true;
    bool m_empty = true;     ///< nothing stands yet in the innermost braces
    bool m_verbatim = false; ///< what stands there brings its own space in front of the brace
};

} // namespace kalmyr::detail
