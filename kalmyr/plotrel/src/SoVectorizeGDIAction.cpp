#include <kalmyr/plotrel/SoVectorizeGDIAction.h>

SO_DERIVED_ACTION_SOURCE(SoVectorizeGDIAction, SoVectorizeAction, "VectorizeGDIAction")

SoVectorizeGDIAction::SoVectorizeGDIAction() : SoVectorizeAction(new SoGDIVectorOutput) {}

SoVectorizeGDIAction::~SoVectorizeGDIAction() = default;
