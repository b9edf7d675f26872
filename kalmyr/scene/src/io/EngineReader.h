#pragma once

#include "Parsed.h"

#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoEngine.h>

#include <string_view>
#include <unordered_map>
#include <vector>

namespace kalmyr::detail {

class NodeReader;
class SceneText;

/// Reads engines and global fields, and knows the engines by their names.
class EngineReader {
public:
    EngineReader(SceneText& scene, NodeReader& nodes) : m_scene(scene), m_nodes(nodes) {}

    /// A statement that begins with `word`, which was taken.
    Parsed tryStatement(std::string_view word);
    /// "NULL", the name of an engine, or a statement that makes one.
    bool readEngine(SoEngine*& engine);
    /// The engine of that name; null when there is none.
    SoEngine* find(std::string_view name) const;
    /// Lets go of the engines, and of the global fields that the file made and no node follows.
    void release();

private:
    /// Read on behind the words "ENGINE" and "GLOBAL".
    bool readEngineStatement(SoRef<SoEngine>& engine);
    bool readGlobalStatement();

    SceneText& m_scene;
    NodeReader& m_nodes;
    std::unordered_map<std::string_view, SoRef<SoEngine>> m_engines;
    std::vector<SbName> m_newGlobals; ///< global fields that the file made
};

} // namespace kalmyr::detail
