#pragma once

#include "../VectorDrawing.h"

#include <kalmyr/base/Export.h>
#include <kalmyr/plotrel/SoHPGLVectorOutput.h>

#include <vector>

namespace kalmyr::detail {

class ByteWriter;

struct HpglOptions {
    bool colors = true; ///< else the pens
    std::vector<SoHPGLVectorOutput::Pen> pens;
};

/// Writes HP-GL/2 with one plot: the page.
PLOTREL_API void writeHpgl(const VectorDrawing& drawing, const HpglOptions& options,
                           ByteWriter& bytes);

} // namespace kalmyr::detail
