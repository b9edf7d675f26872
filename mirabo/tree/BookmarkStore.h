#pragma once

#include "mirabo/tree/BookmarkPath.h"

#include <QString>

#include <vector>

/// Bookmarks kept in the settings from one run to the next, by scene.
namespace mirabo {

/// Bookmarks of one scene, and scenes, that are kept; the scene that was written longest ago goes.
inline constexpr int kMaxStoredBookmarks = 500;
inline constexpr int kMaxStoredScenes = 50;

/// Nothing is kept of a scene without a name.
std::vector<BookmarkPath> readBookmarks(const QString& scene);
/// `known` are the scene's bookmarks as this process has read or written them last. Where nothing
/// has changed since, those in the store stay, which may be another process's.
void writeBookmarks(const QString& scene, const std::vector<BookmarkPath>& paths,
                    const std::vector<BookmarkPath>& known);

} // namespace mirabo
