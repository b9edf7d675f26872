#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

#include <memory>
#include <string>
#include <vector>

class SoState;

/// Base of profiles: lines in the plane of parameters that trim the NURBS surfaces that follow.
///
/// Outlines run counter-clockwise around what is kept and clockwise around holes; where the
/// outermost one is clockwise, everything around it is kept. An outline that does not end where it
/// began is closed. A profile that cannot be used (an index out of range, knots that do not fit) is
/// reported once and left out.
class KALMYR_API SoProfile : public SoNode {
    SO_NODE_HEADER(SoProfile)

public:
    enum Linkage {
        START_FIRST,   ///< begins the first outline; those before do not count any more
        START_NEW,     ///< begins one more outline
        ADD_TO_CURRENT ///< goes on with the outline of the profile before
    };

    static void initClass();

    SoMFInt32 index;  ///< numbers of profile coordinates; empty: all in order
    SoSFEnum linkage; ///< to the profiles before

    void doAction(SoAction* action) override;

protected:
    SoProfile();
    ~SoProfile() override;

    /// The homogeneous points become a line. Returns what is wrong with them, or an empty text.
    virtual std::string makeLine(const std::vector<SbVec3d>& points, float complexity,
                                 std::vector<SbVec2d>& line) const = 0;

private:
    std::shared_ptr<const std::vector<SbVec2d>> getLine(SoState* state);

    std::uint64_t m_key = 0; ///< what the line was made from
    std::shared_ptr<const std::vector<SbVec2d>> m_line;
};
