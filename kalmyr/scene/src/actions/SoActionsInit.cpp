#include <kalmyr/actions/SoActionsInit.h>

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>

void kalmyr::initActions()
{
    SoAction::initClass();
    SoGetBoundingBoxAction::initClass();
    SoGetMatrixAction::initClass();
    SoSearchAction::initClass();
    SoRayPickAction::initClass();
    SoCallbackAction::initClass();
    SoHandleEventAction::initClass();
    SoGetPrimitiveCountAction::initClass();
}
