#pragma once

#include "../ByteWriter.h"
#include "../VectorDrawing.h"

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbTime.h>

namespace kalmyr::detail {

struct PostScriptOptions {
    SbTime created;
    bool level2 = false; ///< for interpreters without shading; the drawing must have none
};

/// Writes a document of one page. Texts and opacities are left out.
PLOTREL_API void writePostScript(const VectorDrawing& drawing, const PostScriptOptions& options,
                                 ByteWriter& bytes);

} // namespace kalmyr::detail
