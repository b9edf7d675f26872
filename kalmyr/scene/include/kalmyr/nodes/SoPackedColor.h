#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Sets the diffuse colours and transparencies of what follows from numbers 0xRRGGBBAA.
class KALMYR_API SoPackedColor : public SoNode {
    SO_NODE_HEADER(SoPackedColor)

public:
    SoPackedColor();
    static void initClass();

    SoMFUInt32 orderedRGBA;

    void doAction(SoAction* action) override;

protected:
    ~SoPackedColor() override;

private:
    void unpack();

    std::uint64_t m_unpackedId = 0; ///< change id that the arrays belong to
    std::vector<SbColor> m_colors;
    std::vector<float> m_transparencies;
};
