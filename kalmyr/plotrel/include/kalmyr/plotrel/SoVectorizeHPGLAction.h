#pragma once

#include <kalmyr/plotrel/SoHPGLVectorOutput.h>
#include <kalmyr/plotrel/SoVectorizeAction.h>

/// Draws a scene into an HP-GL/2 plot.
class PLOTREL_API SoVectorizeHPGLAction : public SoVectorizeAction {
    SO_DERIVED_ACTION_HEADER(SoVectorizeHPGLAction)

public:
    SoVectorizeHPGLAction();
    ~SoVectorizeHPGLAction() override;

    /// Owned by the action.
    SoHPGLVectorOutput* getHPGLVectorOutput() const
    {
        return static_cast<SoHPGLVectorOutput*>(getVectorOutput());
    }
};
