#include <kalmyr/plotrel/SoPSVectorOutput.h>

#include "postscript/PostScriptWriter.h"

SoVectorOutput::Abilities SoPSVectorOutput::getAbilities() const
{
    Abilities abilities;
    abilities.shading = abilities.images = !m_level2;
    return abilities;
}

void SoPSVectorOutput::write(const kalmyr::detail::VectorDrawing& drawing,
                             kalmyr::detail::ByteWriter& bytes)
{
    kalmyr::detail::writePostScript(drawing, {SbTime::getTimeOfDay(), m_level2}, bytes);
}
