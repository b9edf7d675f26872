#include <kalmyr/plotrel/SoVectorizeCGMAction.h>

SO_DERIVED_ACTION_SOURCE(SoVectorizeCGMAction, SoVectorizeAction, "VectorizeCGMAction")

SoVectorizeCGMAction::SoVectorizeCGMAction() : SoVectorizeAction(new SoCGMVectorOutput) {}

SoVectorizeCGMAction::~SoVectorizeCGMAction() = default;
