#pragma once

#include <kalmyr/draggers/SoSpotLightDragger.h>
#include <kalmyr/lights/SoSpotLight.h>
#include <kalmyr/manips/SoManip.h>

/// A spot light that the user moves, turns and opens: see SoSpotLightDragger.
class KALMYR_VISIBLE SoSpotLightManip final : public SoSpotLight {
    SO_NODE_HEADER(SoSpotLightManip)

public:
    SoSpotLightManip();
    static void initClass();

    SoSpotLightDragger* getDragger() const { return m_dragger; }

    SoChildList* getInternalChildren() const override { return m_manip.children(); }
    void doAction(SoAction* action) override;

protected:
    ~SoSpotLightManip() override;

private:
    SoSpotLightDragger* m_dragger; // Not owned; m_manip holds it.
    mutable kalmyr::detail::ManipDragger m_manip;
};
