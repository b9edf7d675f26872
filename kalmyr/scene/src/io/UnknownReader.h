#pragma once

#include "Parsed.h"
#include "SceneText.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoUnknownNode.h>

#include <string_view>
#include <utility>
#include <vector>

namespace kalmyr::detail {

class NodeReader;

/// Reads what no class knows: nodes of unknown types, and fields that a node's class does not
/// have. They are kept, as text where they cannot be taken apart, and written back.
class UnknownReader {
public:
    UnknownReader(SceneText& scene, NodeReader& nodes) : m_scene(scene), m_nodes(nodes) {}

    /// What stands in the body of `node` and is neither a field of it nor a statement; `word` was
    /// taken. No: it is a node.
    Parsed tryField(SoNode* node, std::string_view word, std::string_view typeName);
    /// The body of a new node, behind its opening brace.
    bool readBody(SoUnknownNode* node, std::string_view typeName);

private:
    /// Keeps the value of a field that the node does not have.
    bool keepField(SoNode* node, std::string_view name);
    /// Whether the value here looks like nodes, none of which is known as text only.
    bool isNodesHere();
    /// Reads a node or a list of nodes; goes back to where it began when that fails.
    bool tryNodes(std::vector<SoRef<SoNode>>& nodes, bool& isList);
    bool readNodes(std::vector<SoRef<SoNode>>& nodes, bool& isList);
    /// Reads on behind the word "KEEP".
    bool readKept(SoNode* node);
    bool readDeclaredBody(SoUnknownNode* node, std::string_view typeName);
    /// Nodes in the body become real ones where that can be made out, the rest is kept as text.
    /// Linear in the text, however deep such nodes stand in each other.
    bool readUndeclaredBody(SoUnknownNode* node, std::string_view typeName);
    /// The same where the brace at `open` is one of m_blocks.
    bool readKnownPlace(SoUnknownNode* node, std::string_view typeName, std::size_t open);
    /// Goes on as far as the body looks like that of any other node. False when it does not; part
    /// of it is taken then.
    bool readPieces(SoUnknownNode* node);
    /// The type of a field that holds what comes next; null when that is no node.
    const char* nodeFieldType();

    SceneText& m_scene;
    NodeReader& m_nodes;
    std::vector<SceneText::Block> m_blocks; ///< in the outermost unknown node
    /// What is kept of the nodes in it that could not be taken apart. Set when all of it was read:
    /// a node around them may turn out to be no better.
    std::vector<std::pair<SoRef<SoUnknownNode>, std::string_view>> m_bodies;
};

} // namespace kalmyr::detail
