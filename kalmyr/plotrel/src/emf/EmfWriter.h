#pragma once

#include "../VectorDrawing.h"

#include <kalmyr/base/Export.h>

namespace kalmyr::detail {

class ByteWriter;

/// Writes an enhanced metafile whose frame is the page.
PLOTREL_API void writeEmf(const VectorDrawing& drawing, ByteWriter& bytes);

} // namespace kalmyr::detail
