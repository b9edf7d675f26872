#pragma once

#include <kalmyr/draggers/SoTransformDragger.h>
#include <kalmyr/lights/SoSpotLight.h>
#include <kalmyr/manips/SoManip.h>

/// A spot light that the user can take hold of, move, and with Shift turn.
class KALMYR_VISIBLE SoSpotLightManip final : public SoSpotLight {
    SO_NODE_HEADER(SoSpotLightManip)

public:
    SoSpotLightManip();
    static void initClass();

    SoChildList* getInternalChildren() const override { return m_manip.children(); }
    void doAction(SoAction* action) override;

protected:
    ~SoSpotLightManip() override;

private:
    SoTransformDragger* m_dragger; // Not owned; m_manip holds it.
    mutable kalmyr::detail::ManipDragger m_manip;
};
