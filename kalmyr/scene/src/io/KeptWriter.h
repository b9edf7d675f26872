#pragma once

class SoFieldData;
class SoNode;
class SoUnknownNode;
class SoVRMLScript;

namespace kalmyr::detail {

class WrittenText;
class SceneWriter;
class WriteDialect;

/// What files say that the classes of nodes do not know: further fields, nodes of unknown types,
/// and the fields that scripts declare.
class KeptWriter {
public:
    KeptWriter(SceneWriter& nodes, WrittenText& text, const WriteDialect& dialect)
        : m_nodes(nodes), m_text(text), m_dialect(dialect)
    {
    }

    /// The fields of a node that its class does not have.
    void fields(const SoNode* node);
    /// The inside of the braces of such nodes.
    void unknown(SoUnknownNode* node);
    void script(SoVRMLScript* node);

private:
    void declaration(const SoNode* node, int first);
    void declaredField(SoNode* node, int index);

    SceneWriter& m_nodes;
    WrittenText& m_text;
    const WriteDialect& m_dialect;
};

} // namespace kalmyr::detail
