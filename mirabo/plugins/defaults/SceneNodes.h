#pragma once

#include <kalmyr/base/SoRef.h>

#include <QString>

#include <functional>
#include <vector>

class SoFieldContainer;
class SoNode;

/// A node of the inspected scene, for a list to choose from. Holds no reference.
struct SceneNode {
    const SoNode* node; ///< for comparison only
    QString text;       ///< type, and name in quotes
};

/// The nodes of the inspected scene whose type or name contains `filter`, each once, those with
/// names first, in the order of the graph. At most `limit`; `isCut` tells that there are more.
/// Nothing while another thread edits.
std::vector<SceneNode> findSceneNodes(const QString& filter, int limit, bool& isCut);

/// The node with that address, if the scene has it still.
SoRef<SoNode> resolveSceneNode(const SoNode* node);

/// Type, and name in quotes, of any container.
QString describe(const SoFieldContainer& container);
