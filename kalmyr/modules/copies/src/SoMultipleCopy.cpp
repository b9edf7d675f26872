#include <kalmyr/copies/SoMultipleCopy.h>

SO_NODE_SOURCE(SoMultipleCopy)

SoMultipleCopy::SoMultipleCopy()
{
    SO_NODE_CONSTRUCTOR(SoCopies);
    SO_ADD_FIELD(matrix, (SbMatrix()));
}

SoMultipleCopy::~SoMultipleCopy() = default;

void SoMultipleCopy::initClass()
{
    SO_NODE_INIT_CLASS(SoMultipleCopy, SoCopies, "MultipleCopy");
}

int SoMultipleCopy::getNumCopies() const
{
    return matrix.isIgnored() ? 1 : matrix.getNum();
}

SbMatrix SoMultipleCopy::getCopyMatrix(int index) const
{
    return matrix.isIgnored() ? SbMatrix() : matrix[index];
}
