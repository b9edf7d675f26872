#pragma once

#include <kalmyr/draggers/SoDirectionalLightDragger.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/manips/SoManip.h>

/// A directional light whose direction the user turns: see SoDirectionalLightDragger.
class KALMYR_VISIBLE SoDirectionalLightManip final : public SoDirectionalLight {
    SO_NODE_HEADER(SoDirectionalLightManip)

public:
    SoDirectionalLightManip();
    static void initClass();

    SoDirectionalLightDragger* getDragger() const { return m_dragger; }

    SoChildList* getInternalChildren() const override { return m_manip.children(); }
    void doAction(SoAction* action) override;

protected:
    ~SoDirectionalLightManip() override;

private:
    SoDirectionalLightDragger* m_dragger; // Not owned; m_manip holds it.
    mutable kalmyr::detail::ManipDragger m_manip;
};
