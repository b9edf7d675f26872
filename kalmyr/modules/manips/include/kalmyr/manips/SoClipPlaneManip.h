#pragma once

#include <kalmyr/draggers/SoClipPlaneDragger.h>
#include <kalmyr/manips/SoManip.h>
#include <kalmyr/nodes/SoClipPlane.h>

/// A clip plane that the user moves and turns: see SoClipPlaneDragger. The plane does not cut its
/// own dragger.
class KALMYR_VISIBLE SoClipPlaneManip final : public SoClipPlane {
    SO_NODE_HEADER(SoClipPlaneManip)

public:
    SoClipPlaneManip();
    static void initClass();

    SoClipPlaneDragger* getDragger() const { return m_dragger; }

    SoChildList* getInternalChildren() const override { return m_manip.children(); }
    void doAction(SoAction* action) override;

protected:
    ~SoClipPlaneManip() override;

private:
    SoClipPlaneDragger* m_dragger; // Not owned; m_manip holds it.
    mutable kalmyr::detail::ManipDragger m_manip;
};
