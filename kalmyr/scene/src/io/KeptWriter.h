#pragma once

#include <kalmyr/core/SoForeignFields.h>

class SoField;
class SoNode;
class SoUnknownNode;
class SoVRMLScript;

namespace kalmyr::detail {

class WrittenText;
class SceneWriter;
class WriteDialect;
class WrittenNames;

/// What files say that the classes of nodes do not know: further fields, nodes of unknown types,
/// and the fields that scripts declare.
class KeptWriter {
public:
    KeptWriter(SceneWriter& nodes, WrittenText& text, const WriteDialect& dialect,
               WrittenNames& names)
        : m_nodes(nodes), m_text(text), m_dialect(dialect), m_names(names)
    {
    }

    /// Counts the nodes in fields that the class of a node does not have, and names those around it
    /// that it uses.
    void count(const SoNode* node);
    /// The fields of a node that its class does not have.
    void fields(const SoNode* node);
    /// The nodes around this one that a field uses, as long as they stand in front of this place.
    std::vector<SoForeignFields::Use> usesIn(const SoNode* node, const SoField& field);
    /// The inside of the braces of such nodes.
    void unknown(SoUnknownNode* node);
    void script(SoVRMLScript* node);

private:
    void declaration(const SoNode* node, int first);
    void declaredField(SoNode* node, int index);
    void nodes(const SoForeignFields::Entry& entry);

    SceneWriter& m_nodes;
    WrittenText& m_text;
    const WriteDialect& m_dialect;
    WrittenNames& m_names;
};

} // namespace kalmyr::detail
