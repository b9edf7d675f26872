#include "mirabo/launch/RenderAreaFinder.h"

#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>

namespace mirabo {

SoGuiRenderArea* findRenderArea(SoSceneManager* manager)
{
    const SoAuditorList& auditors = manager->getImpl()->getRootField().getAuditors();
    for (int i = 0; i < auditors.getLength(); ++i) {
        if (auditors.getType(i) != SoAuditor::FIELD)
            continue;
        const auto* field = static_cast<SoField*>(auditors.getObject(i));
        if (!field->isOfType(SoSFFieldContainer::getClassTypeId()))
            continue;
        SoFieldContainer* container = field->getContainer();
        if (container && container->isOfType(SoGuiRenderArea::getClassTypeId()))
            return static_cast<SoGuiRenderArea*>(container);
    }
    return nullptr;
}

} // namespace mirabo
