#pragma once

#include "Parsed.h"

#include <kalmyr/core/SoField.h>

#include <string_view>
#include <unordered_map>
#include <unordered_set>

class SoVRMLScript;

namespace kalmyr::detail {

class NodeReader;
class SceneText;

/// The kind of field that "field", "eventOut" and such words declare; null for other words.
const SoField::FieldType* findFieldKind(std::string_view word);

/// Remarks on words for kinds of fields that only later versions of the language have.
void warnOfLaterKind(SceneText& scene, std::string_view word);

/// Reads the fields that nodes declare themselves: scripts, and nodes of unknown types.
class DeclarationReader {
public:
    DeclarationReader(SceneText& scene, NodeReader& nodes) : m_scene(scene), m_nodes(nodes) {}

    /// A field or event that a script declares among its other fields; `word` was taken.
    Parsed tryInScript(SoVRMLScript* script, std::string_view word);
    /// Reads on behind the word "fields". Fields that a known class does not have are kept as text.
    bool readList(SoNode* node);
    /// Whether the list named a field that the node's class does not have. Until close().
    bool isDeclared(const SoNode* node, std::string_view name) const;
    /// The node's body ends.
    void close(const SoNode* node)
    {
        if (!m_declared.empty())
            m_declared.erase(node);
    }
    void release() { m_declared.clear(); }

private:
    bool readOwnList(SoNode* node);
    bool keepList(SoNode* node);

    SceneText& m_scene;
    NodeReader& m_nodes;
    /// Names that lists declare beside those of the class, of nodes that are being read.
    std::unordered_map<const SoNode*, std::unordered_set<std::string_view>> m_declared;
};

} // namespace kalmyr::detail
