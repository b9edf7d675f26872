#include <kalmyr/plotrel/SoVectorizePSAction.h>

SO_DERIVED_ACTION_SOURCE(SoVectorizePSAction, SoVectorizeAction, "VectorizePSAction")

SoVectorizePSAction::SoVectorizePSAction() : SoVectorizeAction(new SoPSVectorOutput) {}

SoVectorizePSAction::~SoVectorizePSAction() = default;

SoPSVectorOutput* SoVectorizePSAction::getPSVectorOutput() const
{
    return static_cast<SoPSVectorOutput*>(getVectorOutput());
}
