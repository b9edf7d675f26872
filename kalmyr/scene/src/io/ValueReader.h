#pragma once

#include <string_view>

class SoField;
class SoMNodeField;

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

private:
    bool readPlain(SoField& field);
    void warnOfOddBool(std::string_view value);
    void warnOfOddString(std::string_view value);
    /// One node or a list; what is left out (NULL, statements) leaves no gap.
    bool readNodeList(SoMNodeField& field);

    SceneText& m_scene;
    NodeReader& m_nodes;
};

} // namespace kalmyr::detail
