#pragma once

#include <QString>

class SoNode;

namespace mirabo {

/// Returns the name of a node for users: its own, else its type.
QString nodeText(const SoNode& node);

/// Name of a command that does something to one node: "Delete Cube".
QString commandName(const QString& verb, const SoNode& node);

} // namespace mirabo
