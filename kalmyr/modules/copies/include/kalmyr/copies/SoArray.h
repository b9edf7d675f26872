#pragma once

#include <kalmyr/copies/SoCopies.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Its children in rows, columns and layers.
class KALMYR_VISIBLE SoArray final : public SoCopies {
    SO_NODE_HEADER(SoArray)

public:
    /// Which of them stands where the group is.
    enum Origin { FIRST, CENTER, LAST };

    SoArray();
    static void initClass();

    SoSFEnum origin;
    SoSFShort numElements1; ///< 1; those along separation1
    SoSFShort numElements2; ///< 1
    SoSFShort numElements3; ///< 1
    SoSFVec3f separation1;  ///< 1 0 0; from one to the next
    SoSFVec3f separation2;  ///< 0 1 0
    SoSFVec3f separation3;  ///< 0 0 1

    int getNumCopies() const override;
    SbMatrix getCopyMatrix(int index) const override;

protected:
    ~SoArray() override;
};
