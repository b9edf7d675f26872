#pragma once

#include <kalmyr/plotrel/SoCGMVectorOutput.h>
#include <kalmyr/plotrel/SoVectorizeAction.h>

/// Draws a scene into a computer graphics metafile.
class PLOTREL_API SoVectorizeCGMAction : public SoVectorizeAction {
    SO_DERIVED_ACTION_HEADER(SoVectorizeCGMAction)

public:
    SoVectorizeCGMAction();
    ~SoVectorizeCGMAction() override;

    /// Owned by the action.
    SoCGMVectorOutput* getCGMVectorOutput() const
    {
        return static_cast<SoCGMVectorOutput*>(getVectorOutput());
    }
};
