#pragma once

#include <kalmyr/copies/SoCopies.h>
#include <kalmyr/fields/SoValueFields.h>

/// Its children once for each matrix.
class KALMYR_VISIBLE SoMultipleCopy final : public SoCopies {
    SO_NODE_HEADER(SoMultipleCopy)

public:
    SoMultipleCopy();
    static void initClass();

    SoMFMatrix matrix; ///< one identity matrix

    int getNumCopies() const override;
    SbMatrix getCopyMatrix(int index) const override;

protected:
    ~SoMultipleCopy() override;
};
