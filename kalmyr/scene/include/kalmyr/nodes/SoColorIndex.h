#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

#include <cstdint>
#include <vector>

/// Gives the shapes that follow diffuse colors from a palette, by number. Without `colors` these
/// are black, red, green, yellow, blue, magenta, cyan and white. Numbers beyond either end are the
/// color there.
class KALMYR_API SoColorIndex : public SoNode {
    SO_NODE_HEADER(SoColorIndex)

public:
    SoColorIndex();
    static void initClass();

    SoMFInt32 index;
    SoMFColor colors; ///< the palette

    void doAction(SoAction* action) override;

protected:
    ~SoColorIndex() override;

private:
    void choose();

    std::vector<SbColor> m_chosen;
    std::uint64_t m_chosenId = 0; ///< change that m_chosen is of
};
