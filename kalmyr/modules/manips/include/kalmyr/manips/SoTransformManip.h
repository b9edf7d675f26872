#pragma once

#include <kalmyr/draggers/SoTransformDragger.h>
#include <kalmyr/manips/SoManip.h>
#include <kalmyr/nodes/SoTransform.h>

/// A transform that the user can take hold of: see SoTransformDragger.
class KALMYR_VISIBLE SoTransformManip final : public SoTransform {
    SO_NODE_HEADER(SoTransformManip)

public:
    SoTransformManip();
    static void initClass();

    SoChildList* getInternalChildren() const override { return m_manip.children(); }
    void doAction(SoAction* action) override;

protected:
    ~SoTransformManip() override;

private:
    SoTransformDragger* m_dragger; // Not owned; m_manip holds it.
    mutable kalmyr::detail::ManipDragger m_manip;
};
