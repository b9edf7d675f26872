#include "Drawing.h"

#include "GraphCounter.h"
#include "View.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SbNumber.h>

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

constexpr int kMaxSide = 16384; // of a picture, in pixels

bool parseSize(const std::string& text, SbViewportRegion& region)
{
    const std::size_t x = text.find('x');
    int width = 0, height = 0;
    if (x == std::string::npos || !SbNumber::toInt(text.substr(0, x), width)
        || !SbNumber::toInt(text.substr(x + 1), height) || width < 1 || height < 1
        || width > kMaxSide || height > kMaxSide)
        return false;
    region.setWindowSize(static_cast<short>(width), static_cast<short>(height));
    return true;
}

/// Three numbers from 0 to 1.
bool parseColor(const std::string& text, SbColor& color)
{
    std::size_t at = 0;
    for (int i = 0; i < 3; ++i) {
        const std::size_t comma = text.find(',', at);
        if ((comma == std::string::npos) != (i == 2))
            return false;
        if (!SbNumber::toFloat(text.substr(at, comma - at), color[i])
            || !(color[i] >= 0 && color[i] <= 1))
            return false;
        at = comma + 1;
    }
    return true;
}

/// The scene's name with another extension, beside it or in a folder.
std::string targetOf(const std::string& scene, const std::string& folder, const std::string& to)
{
    const std::size_t slash = scene.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t dot = scene.rfind('.');
    const std::size_t end = dot == std::string::npos || dot <= name ? scene.size() : dot;
    const std::string where = folder.empty() ? scene.substr(0, name) : folder + "/";
    return where + scene.substr(name, end - name) + "." + to;
}

bool takeFiles(const Arguments& arguments, const std::string& to, const std::string& folder,
               DrawOptions& options, std::string& reason)
{
    if (to.empty() && !folder.empty())
        reason = "--folder needs --to";
    else if (to.empty() && arguments.size() != 2)
        reason = "the scene and the file to write are needed, or --to and any number of scenes";
    else if (arguments.empty())
        reason = "a scene is needed";
    if (!reason.empty())
        return false;
    if (to.empty()) {
        options.files.emplace_back(arguments[0], arguments[1]);
        return true;
    }
    for (const std::string& scene : arguments) {
        const std::string target = targetOf(scene, folder, to);
        const bool isTaken = std::any_of(options.files.begin(), options.files.end(),
                                         [&](const auto& pair) { return pair.second == target; });
        if (isTaken || target == scene) {
            reason = "two scenes would become " + target;
            if (target == scene)
                reason = target + " would be written over itself";
            return false;
        }
        options.files.emplace_back(scene, target);
    }
    return true;
}

int drawOne(const DrawOptions& options, const std::string& in, const std::string& out,
            const DrawFunction& draw)
{
    const Scene scene = readScene(in, false);
    if (const int status = printErrors(scene); status != 0)
        return status;
    GraphCounter counter;
    counter.add(scene.root.get());
    if (counter.occurrences() > kMaxOccurrences) {
        std::fprintf(
            stderr,
            "%s: error: it has %llu occurrences of nodes, of which at most %llu can be drawn\n",
            in.c_str(), static_cast<unsigned long long>(counter.occurrences()),
            static_cast<unsigned long long>(kMaxOccurrences));
        return 1;
    }
    const SoRef<SoNode> seen =
        seenByCamera(scene, options.camera, options.showsAll, options.region);
    if (!seen) {
        std::fprintf(stderr, "%s: error: there is no camera named \"%s\"\n", in.c_str(),
                     options.camera.c_str());
        return 1;
    }
    const ErrorPrinter errors(out);
    return draw(seen.get(), out) ? 0 : 1;
}

} // namespace

bool takeDrawOptions(Arguments& arguments, DrawOptions& options, std::string& reason)
{
    std::string size, background, to, folder, unknown;
    options.showsAll = takeFlag(arguments, "--view-all");
    if (!takeOption(arguments, "--size", size) || !takeOption(arguments, "--background", background)
        || !takeOption(arguments, "--camera", options.camera) || !takeOption(arguments, "--to", to)
        || !takeOption(arguments, "--folder", folder)) {
        reason = "an option needs a value";
        return false;
    }
    SbColor color;
    if (hasUnknownOption(arguments, unknown))
        reason = "unknown option " + unknown;
    else if (!size.empty() && !parseSize(size, options.region))
        reason = "--size is WIDTHxHEIGHT in pixels, each from 1 to " + std::to_string(kMaxSide)
                 + ", not " + size;
    else if (!background.empty() && !parseColor(background, color))
        reason = "--background is R,G,B from 0 to 1, not " + background;
    if (!reason.empty())
        return false;
    if (!background.empty())
        options.background = color;
    return takeFiles(arguments, to, folder, options, reason);
}

int drawEach(const DrawOptions& options, const DrawFunction& draw)
{
    constexpr int kStopped = 130;
    int worst = 0;
    for (const auto& [in, out] : options.files) {
        const int status = drawOne(options, in, out, draw);
        worst = std::max(worst, status);
        if (status == kStopped)
            break;
    }
    return worst;
}

std::string extensionOf(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    std::string extension = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool parsePair(const std::string& text, float& first, float& second)
{
    const std::size_t x = text.find('x');
    return x != std::string::npos && SbNumber::toFloat(text.substr(0, x), first)
           && SbNumber::toFloat(text.substr(x + 1), second);
}
