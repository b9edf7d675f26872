#include <kalmyr/plotrel/SoVectorizeHPGLAction.h>

SO_DERIVED_ACTION_SOURCE(SoVectorizeHPGLAction, SoVectorizeAction, "VectorizeHPGLAction")

SoVectorizeHPGLAction::SoVectorizeHPGLAction() : SoVectorizeAction(new SoHPGLVectorOutput) {}

SoVectorizeHPGLAction::~SoVectorizeHPGLAction() = default;
