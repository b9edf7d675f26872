#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>

/// Something of a dragger that the user takes hold of: its children are the look.
///
/// Handles of one part belong together: they light up together. A handle with a size is a knob: it
/// stands at a place of the dragger and has that size whatever the dragger's scale is. One without
/// is drawn in the dragger's own space, as lines and faces are.
class KALMYR_VISIBLE SoDragHandle final : public SoGroup {
    SO_NODE_HEADER(SoDragHandle)

public:
    /// The motion that the handle gives the dragger.
    enum Motion {
        NONE,          ///< it is only looked at
        MOVE_LINE,     ///< along `axis`
        MOVE_PLANE,    ///< in the plane square to `axis`
        MOVE_VIEW,     ///< across the line of sight
        TURN_CYLINDER, ///< about `axis`, taken at the side
        TURN_DISC,     ///< about `axis`, taken at the rim
        TURN_BALL,     ///< any way
        SCALE_LINE,    ///< along `axis`
        SCALE_PLANE,   ///< along the two axes square to `axis`
        SCALE_EVENLY,
        OTHER ///< what the dragger's class does with it
    };

    SoDragHandle();
    static void initClass();

    SoSFName part;
    SoSFEnum motion;
    SoSFVec3f axis;
    SoSFVec3f position;  ///< of a knob
    SoSFVec3f direction; ///< of a knob's y axis
    SoSFFloat size;      ///< of a knob's unit; 0: none
    SoSFBool isActive;   ///< it is held

    /// Sets `isActive`, and lets a switch that is the first child show its second child instead of
    /// its first: what is used by the look that follows.
    void setActive(bool on);

    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;

protected:
    ~SoDragHandle() override;
};
