#include <kalmyr/plotrel/SoHPGLVectorOutput.h>

#include "hpgl/HpglWriter.h"

#include <kalmyr/base/SoContract.h>

#include <algorithm>
#include <cmath>

SoHPGLVectorOutput::SoHPGLVectorOutput()
    : m_pens{{SbColor(0, 0, 0)}, {SbColor(1, 0, 0)}, {SbColor(0, 1, 0)}, {SbColor(1, 1, 0)},
             {SbColor(0, 0, 1)}, {SbColor(1, 0, 1)}, {SbColor(0, 1, 1)}, {SbColor(1, 0.5f, 0)}}
{
}

SoHPGLVectorOutput::~SoHPGLVectorOutput() = default;

void SoHPGLVectorOutput::setPens(std::vector<Pen> pens)
{
    const bool sound = std::all_of(pens.begin(), pens.end(), [](const Pen& pen) {
        return std::isfinite(pen.width) && pen.width > 0;
    });
    if (kalmyr::holds(!pens.empty() && pens.size() <= kMaxPens && sound,
                      "1 to 255 pens with widths above 0 mm"))
        m_pens = std::move(pens);
}

SoVectorOutput::Abilities SoHPGLVectorOutput::getAbilities() const
{
    return {.shading = false, .transparency = false, .images = false, .overpainting = m_colors};
}

void SoHPGLVectorOutput::write(const kalmyr::detail::VectorDrawing& drawing,
                               kalmyr::detail::ByteWriter& bytes)
{
    kalmyr::detail::writeHpgl(drawing, {m_colors, m_pens}, bytes);
}
