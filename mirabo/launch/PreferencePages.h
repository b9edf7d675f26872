#pragma once

class SoCommandManager;
class SoMiraboEdition;
class SoMiraboMainFrame;
class SoMiraboTreeView;

namespace mirabo {

/// Runs the preferences dialog over a window: the pages of the views, those of the extensions, the
/// tool's own, and the one that lists the extensions. What a page saves shows at once.
void editPreferences(SoMiraboMainFrame& window, SoCommandManager& hub, SoMiraboTreeView* tree,
                     SoMiraboEdition* edition, bool standalone);

} // namespace mirabo
