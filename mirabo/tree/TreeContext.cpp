#include "mirabo/tree/TreeContext.h"

#include <kalmyr/base/SoPreferences.h>

namespace mirabo {

void TreeContext::readEnvironment()
{
    embeddedLaunch = SoPreferences::getBool("KMRU_LAUNCH_MIRABO", false)
                     || SoPreferences::getBool("ART_LAUNCH_MIRABO", false);
    showInternalChildren = SoPreferences::getBool("MIRABO_SHOW_INTERNAL_CHILDREN", false);
    autoHighlight = SoPreferences::getBool("KMR_MIRABO_AUTO_HIGHLIGHT", true);
}

} // namespace mirabo
