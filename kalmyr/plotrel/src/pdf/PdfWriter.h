#pragma once

#include "../ByteWriter.h"
#include "../VectorDrawing.h"
#include "PdfModel.h"

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbTime.h>

namespace kalmyr::detail {

struct PdfOptions {
    SbTime created;
    PdfModel model;
};

/// Writes a document of one page. A model becomes an annotation that shows the drawing until it is
/// activated, and wherever it cannot be.
PLOTREL_API void writePdf(const VectorDrawing& drawing, const PdfOptions& options,
                          ByteWriter& bytes);

} // namespace kalmyr::detail
