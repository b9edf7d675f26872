#pragma once

#include <kalmyr/base/SoRef.h>

#include <QString>

class SoNode;

namespace mirabo {

/// Reads the text of a scene in any format that scene files have: its one node, or a group around
/// several. A text without the header of a format is taken for Kalmyr's own.
///
/// Null, with what is wrong in `problem`, when it cannot be read or holds no node.
SoRef<SoNode> readSceneText(const QString& text, QString& problem);

} // namespace mirabo
