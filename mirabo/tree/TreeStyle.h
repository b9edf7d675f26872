#pragma once

#include <QPalette>
#include <QString>

/// Looks of the scene tree that do not depend on its rows.
namespace mirabo {

/// Style sheet of the tree for a light or a dark desktop.
QString treeStyleSheet(const QPalette& palette);

} // namespace mirabo
