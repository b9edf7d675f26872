#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbString.h>

#include <vector>

namespace kalmyr::detail {

struct MovieFrame {
    SbImage image;
    double seconds = 0; ///< that it is shown
};

/// Frames and pixels beyond these are refused.
constexpr std::size_t kMaxMovieFrames = 10'000;
constexpr std::size_t kMaxMovieBytes = std::size_t(1) << 29;

/// Reads a film, of which the formats are told apart by their first bytes: GIF. False, with the
/// reason, when it cannot.
bool readMovie(const SbString& path, std::vector<MovieFrame>& frames, SbString& reason);

} // namespace kalmyr::detail
