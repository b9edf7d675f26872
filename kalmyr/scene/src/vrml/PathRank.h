#pragma once

#include <vector>

class SoPath;
class SoSearchAction;

namespace kalmyr::detail {

/// Which of several nodes that want to be the first in a scene comes before others: those that are
/// shown, then those of other files, then those that a switch or a level of detail does not show.
enum class PathRank { SHOWN, INLINED, HIDDEN };
PathRank rankOf(const SoPath& path);

/// The paths that a search found, by rank and, of one rank, in the order of the scene. They stay
/// the search's.
std::vector<const SoPath*> rankedPaths(const SoSearchAction& search);

} // namespace kalmyr::detail
