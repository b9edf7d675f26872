#pragma once

#include "mirabo/extender/MrbFieldPresentation.h"

#include <kalmyr/core/SoField.h>

#include <memory>
#include <utility>
#include <vector>

namespace mirabo {

/// Arrays of more elements than this are not written out.
inline constexpr int kMaxShownArrayElements = 4096;

/// The presentations of the toolkit's types whose value is not shown as scene files have it.
std::vector<std::pair<SoType, std::shared_ptr<const MrbFieldPresentation>>> builtInPresentations();

} // namespace mirabo
