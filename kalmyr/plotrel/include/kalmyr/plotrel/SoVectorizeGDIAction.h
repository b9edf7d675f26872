#pragma once

#include <kalmyr/plotrel/SoGDIVectorOutput.h>
#include <kalmyr/plotrel/SoVectorizeAction.h>

/// Draws a scene into an enhanced metafile (EMF).
class PLOTREL_API SoVectorizeGDIAction : public SoVectorizeAction {
    SO_DERIVED_ACTION_HEADER(SoVectorizeGDIAction)

public:
    SoVectorizeGDIAction();
    ~SoVectorizeGDIAction() override;

    /// Owned by the action.
    SoGDIVectorOutput* getGDIVectorOutput() const
    {
        return static_cast<SoGDIVectorOutput*>(getVectorOutput());
    }
};
