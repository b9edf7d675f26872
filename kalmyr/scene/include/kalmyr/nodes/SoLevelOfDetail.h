#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>

#include <cstdint>
#include <mutex>

class SoState;

/// Traverses one of its children, chosen by the size on the screen of the box around all of them.
///
/// Child i serves sizes from screenArea[i] on, unless an earlier one does; the child after the last
/// area, or the last child, serves all others. Before a camera, and without areas, the first child
/// is taken. For the bounding box all children count, so that it does not change with the camera.
class KALMYR_API SoLevelOfDetail : public SoGroup {
    SO_NODE_HEADER(SoLevelOfDetail)

public:
    SoLevelOfDetail();
    static void initClass();

    SoMFFloat screenArea; ///< falling, in square pixels

    /// Index of the child that the state's camera selects, or -1 without children. Called while the
    /// node is traversed.
    int chooseChild(SoState* state) const;
    /// Of the rectangle on the screen that the box of the children covers; everything beyond it for
    /// a box that reaches behind the eye.
    float getScreenArea(SoState* state) const;
    void doAction(SoAction* action) override;

protected:
    ~SoLevelOfDetail() override;

private:
    SbBox3f getBox(SoState* state) const;

    // The box of the children, in object space; several threads may traverse at once.
    mutable std::mutex m_mutex;
    mutable std::uint64_t m_boxId = 0;
    mutable SbBox3f m_box;
};
