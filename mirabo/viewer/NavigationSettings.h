#pragma once

class SoQtViewer;

namespace mirabo {

/// How the user of the tool's own viewer moves about and how smooth edges are, from and to the
/// settings.
void readNavigationSettings(SoQtViewer& viewer);
void writeNavigationSettings(const SoQtViewer& viewer);

} // namespace mirabo
