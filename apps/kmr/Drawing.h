#pragma once

#include "Commands.h"
#include "Scene.h"

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// The options that `render` and `export` share.
struct DrawOptions {
    SbViewportRegion region{800, 600};
    std::optional<SbColor> background;
    std::string camera;
    bool showsAll = false; ///< the camera is moved until all of the scene is in view
    /// Scenes and what they become.
    std::vector<std::pair<std::string, std::string>> files;
};

/// Takes --size, --background, --camera, --view-all, --to and --folder, and then the files: a scene
/// and what it becomes, or, with --to, any number of scenes. False when something is wrong, which
/// `reason` says.
bool takeDrawOptions(Arguments& arguments, DrawOptions& options, std::string& reason);

/// Reads each scene and calls `draw` with it as its camera shows it. Errors are printed, and the
/// next file is taken. 0 when all went well, else 1, or 130 when the user stopped.
using DrawFunction = std::function<bool(SoNode* seen, const std::string& file)>;
int drawEach(const DrawOptions& options, const DrawFunction& draw);

/// The letters behind the last dot, in lower case.
std::string extensionOf(const std::string& name);
/// Two numbers with an x between, as 210x297.
bool parsePair(const std::string& text, float& first, float& second);
