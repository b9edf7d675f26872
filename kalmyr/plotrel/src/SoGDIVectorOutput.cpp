#include <kalmyr/plotrel/SoGDIVectorOutput.h>

#include "emf/EmfWriter.h"

SoGDIVectorOutput::SoGDIVectorOutput() = default;

SoGDIVectorOutput::~SoGDIVectorOutput() = default;

SoVectorOutput::Abilities SoGDIVectorOutput::getAbilities() const
{
    return {.shading = false, .transparency = false, .images = false, .overpainting = true};
}

void SoGDIVectorOutput::write(const kalmyr::detail::VectorDrawing& drawing,
                              kalmyr::detail::ByteWriter& bytes)
{
    kalmyr::detail::writeEmf(drawing, bytes);
}
