#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>

inline constexpr int SO_SWITCH_NONE = -1;    ///< no child
inline constexpr int SO_SWITCH_INHERIT = -2; ///< the child that the last switch chose
inline constexpr int SO_SWITCH_ALL = -3;     ///< all children

class SoState;

/// A group that traverses one, all or none of its children. What the chosen child sets lasts.
class KALMYR_API SoSwitch : public SoGroup {
    SO_NODE_HEADER(SoSwitch)

public:
    SoSwitch();
    static void initClass();

    /// Index of a child or one of the SO_SWITCH_ values; any other number chooses nothing.
    SoSFInt32 whichChild;

    /// The index or SO_SWITCH_ value in force under the state; never SO_SWITCH_INHERIT.
    int chooseChild(SoState* state) const;
    void doAction(SoAction* action) override;

protected:
    ~SoSwitch() override;
};
