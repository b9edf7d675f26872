#pragma once

#include "../VectorDrawing.h"

#include <kalmyr/base/Export.h>

namespace kalmyr::detail {

class ByteWriter;

/// Writes a computer graphics metafile, binary, version 1, with one picture: the page.
PLOTREL_API void writeCgm(const VectorDrawing& drawing, ByteWriter& bytes);

} // namespace kalmyr::detail
