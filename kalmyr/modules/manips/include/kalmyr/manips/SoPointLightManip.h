#pragma once

#include <kalmyr/draggers/SoPointLightDragger.h>
#include <kalmyr/lights/SoPointLight.h>
#include <kalmyr/manips/SoManip.h>

/// A point light that the user moves: see SoPointLightDragger.
class KALMYR_VISIBLE SoPointLightManip final : public SoPointLight {
    SO_NODE_HEADER(SoPointLightManip)

public:
    SoPointLightManip();
    static void initClass();

    SoPointLightDragger* getDragger() const { return m_dragger; }

    SoChildList* getInternalChildren() const override { return m_manip.children(); }
    void doAction(SoAction* action) override;

protected:
    ~SoPointLightManip() override;

private:
    SoPointLightDragger* m_dragger; // Not owned; m_manip holds it.
    mutable kalmyr::detail::ManipDragger m_manip;
};
