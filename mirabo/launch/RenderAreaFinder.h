#pragma once

class SoGuiRenderArea;
class SoSceneManager;

namespace mirabo {

/// The render area that shows a scene manager, found among the auditors of its root field; null
/// when none does.
SoGuiRenderArea* findRenderArea(SoSceneManager* manager);

} // namespace mirabo
