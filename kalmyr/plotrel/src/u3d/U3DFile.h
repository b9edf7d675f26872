#pragma once

#include "U3DScene.h"

#include <functional>
#include <string>

namespace kalmyr::detail {

struct U3DOptions {
    bool compressed = false;
    double metersPerUnit = 0;              ///< 0: not told
    std::function<bool(float)> progress{}; ///< false stops
};

enum class U3DResult : unsigned char { DONE, STOPPED, TOO_LARGE };

/// Replaces `bytes` by those of a file.
U3DResult writeU3D(const U3DScene& scene, const U3DOptions& options, std::string& bytes);

} // namespace kalmyr::detail
