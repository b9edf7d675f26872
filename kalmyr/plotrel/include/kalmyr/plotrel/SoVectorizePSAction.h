#pragma once

#include <kalmyr/plotrel/SoPSVectorOutput.h>
#include <kalmyr/plotrel/SoVectorizeAction.h>

/// Draws a scene into a PostScript file.
class PLOTREL_API SoVectorizePSAction final : public SoVectorizeAction {
    SO_DERIVED_ACTION_HEADER(SoVectorizePSAction)

public:
    SoVectorizePSAction();
    ~SoVectorizePSAction() override;

    /// Owned by the action.
    SoPSVectorOutput* getPSVectorOutput() const;
};
