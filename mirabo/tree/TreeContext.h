#pragma once

#include "mirabo/tree/NodeIndex.h"

#include <QFont>

class SoNode;
class SoTreeViewItem;

namespace mirabo {

/// What the rows of one tree share. Outlives all of them.
struct TreeContext {
    NodeIndex index;

    QFont itemFont;
    QFont fieldNodeFont;
    bool highlightFieldNodes = true; ///< nodes reached by fields have their own font
    bool realKitCounter = false;     ///< kits: the toolkit's reference count
    bool realVrmlCounter = false;    ///< VRML97 nodes: the toolkit's reference count
    bool showAll = false;            ///< numbering counts rows that are not shown, too

    bool embeddedLaunch = false;       ///< every child list that is open to all is shown
    bool showInternalChildren = false; ///< the children that are a node's own business, too
    bool autoHighlight = true;

    /// Rows that somebody remembers; set to null when the row goes.
    SoTreeViewItem* pressed = nullptr;
    SoTreeViewItem* toShow = nullptr;

    /// The launch flags and preferences above, read now.
    void readEnvironment();
};

} // namespace mirabo
