#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoGroup.h>

/// Base of groups that traverse their children several times, in another place each time. What one
/// copy sets does not reach the next. The children stand in the graph once, and a path leads to the
/// first copy; which one was met by a ray says the detail that the picked point has for the group,
/// an SoCopyDetail.
class KALMYR_VISIBLE SoCopies : public SoGroup {
    SO_NODE_HEADER(SoCopies)

public:
    static void initClass();

    void doAction(SoAction* action) override;
    /// Where the group's effects are its own: what a child sets does not reach what follows.
    bool affectsState() const override { return false; }

    /// How many there are to be, at most kMaxCopies.
    virtual int getNumCopies() const = 0;
    /// From the children's space to the group's.
    virtual SbMatrix getCopyMatrix(int index) const = 0;

    /// More are not drawn: a wrong number in a file must not hang whoever looks at it.
    static constexpr int kMaxCopies = 100000;

protected:
    SoCopies();
    ~SoCopies() override;
};
