#pragma once

#include <kalmyr/core/SoForeignFields.h>

#include <cstdint>
#include <string_view>
#include <vector>

class SoField;
class SoMNodeField;
class SoNode;

namespace kalmyr::detail {

class NodeReader;
class SceneText;

/// Reads the values of fields, with what the formats allow around them.
class ValueReader {
public:
    ValueReader(SceneText& scene, NodeReader& nodes) : m_scene(scene), m_nodes(nodes) {}

    bool read(SoField& field);
    /// The same, and where text is read leniently names of values may be written in any way.
    bool readOdd(SoField& field);
    /// The mark behind a value, if it is there, that lets the field be ignored.
    void readMark(SoField& field);

    /// A USE of a node that is still open. Yes when it stands in a field that may name such nodes:
    /// scripts, instances of prototypes and unknown nodes often know what they stand in.
    bool takeUse(SoNode* node);

private:
    enum Kind : std::uint8_t {
        KNOWN = 1,
        NAMED = 2,
        LIST = 4,
        NODES = 8,
        HOLDS_NODES = 16, ///< one or a list
        STRINGS = 32,
        BOOL = 64
    };
    /// What counts for reading of the field's type.
    unsigned kindOf(const SoField& field);
    bool readPlain(SoField& field, unsigned kind);
    void warnOfOddBool(std::string_view value);
    void warnOfOddString(std::string_view value);
    /// What such a field uses while its value is read.
    struct Uses {
        int depth; ///< of the node whose field it is
        int index = 0;
        std::vector<SoForeignFields::Use> found;
    };
    bool readValue(SoField& field, unsigned kind);
    /// One node or a list; what is left out (NULL, statements) leaves no gap.
    bool readNodeList(SoMNodeField& field);

    SceneText& m_scene;
    NodeReader& m_nodes;
    Uses* m_uses = nullptr;            // Not owned; on the stack of read().
    std::vector<std::uint8_t> m_kinds; ///< by type
    std::vector<SoNode*> m_pending;    ///< referenced; of lists that are being read
};

} // namespace kalmyr::detail
