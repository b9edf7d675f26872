#include <kalmyr/plotrel/SoCGMVectorOutput.h>

#include "cgm/CgmWriter.h"

SoCGMVectorOutput::SoCGMVectorOutput() = default;

SoCGMVectorOutput::~SoCGMVectorOutput() = default;

SoVectorOutput::Abilities SoCGMVectorOutput::getAbilities() const
{
    return {.shading = false, .transparency = false, .images = false, .overpainting = true};
}

void SoCGMVectorOutput::write(const kalmyr::detail::VectorDrawing& drawing,
                              kalmyr::detail::ByteWriter& bytes)
{
    kalmyr::detail::writeCgm(drawing, bytes);
}
