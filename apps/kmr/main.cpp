#include "Commands.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

constexpr char kUsage[] =
    "usage: kmr COMMAND ...\n"
    "\n"
    "Reads scene files: Kalmyr text and binary, VRML 1.0 and VRML97, packed by gzip or not. Goes "
    "by\n"
    "what is in a file, not by its name.\n"
    "\n"
    "  kmr info [--json] [--strict] FILE...\n"
    "      Tell what is in each file: format, nodes by type, triangles, bounds, and what is wrong\n"
    "      with it. With --json one object a line; 'nodes' counts the nodes of the graph, with\n"
    "      those that prototypes, node kits and inlines bring in, and 'parsed' what stands in the\n"
    "      text. With --strict whatever the reader takes leniently is an error.\n"
    "\n"
    "  kmr convert IN OUT [--format kalmyr-ascii|kalmyr-binary|vrml1|vrml2]\n"
    "      Write a scene again. Without --format the name of OUT decides: .ky for Kalmyr text, "
    ".wrl\n"
    "      for VRML in the version of IN. Packed when OUT ends in .gz, .kyz or .wrz.\n"
    "\n"
    "  kmr render IN OUT [--size WxH] [--background R,G,B] [--camera NAME] [--view-all]\n"
    "             [--style STYLE] [--transparency N] [--samples N]\n"
    "             [--transparent-background]\n"
    "      Draw a scene as a picture. The name of OUT says what it becomes: png, jpg, bmp, tif, "
    "rgb\n"
    "      or ps. 800x600 pixels on black if not told otherwise, at most 16384x16384. N of\n"
    "      --transparency says how transparent things are blended: 0 by a pattern of holes, 3 in\n"
    "      order, 4 after what is opaque, 6 by objects, 7 and 8 exact at each pixel, 10 by "
    "triangles,\n"
    "      12 by triangles of objects, 13 not at all. N of --samples, from 1 to 8, says how "
    "smooth\n"
    "      edges are. STYLE is as-is, no-texture, hidden-line, wireframe, points, boxes or flat.\n"
    "\n"
    "  kmr export IN OUT [--page SIZE] [--portrait] [--margin MM] [--drawing WxH]\n"
    "             [--colors color|grey|black] [--hidden-lines] [--cut] [--with-model]\n"
    "             [--tolerance T] [--pixel-width MM] [--size WxH] [--background R,G,B]\n"
    "             [--camera NAME] [--view-all]\n"
    "      Draw a scene as vectors: pdf, ps, cgm, emf or hpgl; or write it as a model: u3d. SIZE "
    "is\n"
    "      a5 to a0, letter, legal, tabloid or WxH in millimetres, lying on its side unless\n"
    "      --portrait; --drawing gives the drawing a size of its own, in millimetres.\n"
    "      --hidden-lines draws the edges that are not hidden instead of surfaces; --cut leaves "
    "out\n"
    "      hidden parts instead of painting over them; --with-model puts the model into a pdf.\n"
    "      T, from 1 to 255, is how far colours may be off; MM of --pixel-width what one pixel of\n"
    "      a line's width becomes; --size, in pixels, the proportions.\n"
    "\n"
    "  Both show the scene through the camera or viewpoint called NAME, else through its first\n"
    "  one, else with all of it in view; --view-all moves the camera until all is in view. "
    "Colours\n"
    "  are numbers from 0 to 1; no display is needed. Many at once: kmr render --to png\n"
    "  [--folder DIR] FILE... writes FILE.png beside each FILE, or into DIR; the same goes for\n"
    "  export.\n"
    "\n"
    "  Names that begin with a dash stand behind \"--\".\n"
    "\n"
    "  kmr --help | --version\n"
    "\n"
    "Examples:\n"
    "  kmr info scene.wrl\n"
    "  kmr convert old.wrl new.wrl --format vrml2\n"
    "  kmr render scene.ky picture.png --size 1280x720 --background 1,1,1\n"
    "  kmr export scene.ky drawing.pdf --page a3 --camera Front\n"
    "\n"
    "Ends with 0 when done, 1 when something cannot be read or written (each fault is told as\n"
    "FILE:LINE:COLUMN: error: MESSAGE), 2 for wrong usage, 130 when Ctrl+C stopped reading; a\n"
    "second Ctrl+C ends at once.\n";

struct Command {
    const char* name;
    int (*run)(const Arguments& arguments);
};
constexpr Command kCommands[] = {
    {"info", runInfo}, {"convert", runConvert}, {"render", runRender}, {"export", runExport}};

/// Starts the modules that are installed; the nodes of the others stay unknown.
void startModules()
{
    for (const SbName& module : TvSymTool::getModuleNames())
        TvSymTool::initModule(module);
}

/// What was printed counts as done only when somebody could take it.
int endWith(int status)
{
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return status;
    std::fprintf(stderr, "kmr: error: the standard output cannot be written: %s\n",
                 std::strerror(errno));
    return std::max(status, 1);
}

/// Behind "--" there are names only.
template <class Args>
auto endOfOptions(Args& arguments)
{
    return std::find(arguments.begin(), arguments.end(), "--");
}

} // namespace

int wrongUsage(const std::string& reason)
{
    std::fprintf(stderr, "kmr: error: %s\n\n%s", reason.c_str(), kUsage);
    return 2;
}

bool takeOption(Arguments& arguments, const std::string& name, std::string& value)
{
    const std::string joined = name + "=";
    const auto end = endOfOptions(arguments);
    for (auto at = arguments.begin(); at != end; ++at) {
        if (at->starts_with(joined)) {
            value = at->substr(joined.size());
            arguments.erase(at);
            return !value.empty();
        }
        if (*at != name)
            continue;
        if (at + 1 == end)
            return false;
        value = *(at + 1);
        arguments.erase(at, at + 2);
        return !value.empty();
    }
    return true;
}

bool takeFlag(Arguments& arguments, const std::string& name)
{
    const auto end = endOfOptions(arguments);
    const auto at = std::find(arguments.begin(), end, name);
    if (at == end)
        return false;
    arguments.erase(at);
    return true;
}

bool hasUnknownOption(Arguments& arguments, std::string& option)
{
    const auto end = endOfOptions(arguments);
    const auto at = std::find_if(arguments.begin(), end, [](const std::string& one) {
        return one.size() > 1 && one[0] == '-';
    });
    const bool isFound = at != end;
    if (isFound)
        option = *at;
    if (end != arguments.end())
        arguments.erase(end);
    return isFound;
}

int main(int argc, char** argv)
{
    std::signal(SIGXFSZ, SIG_IGN); // a file that grows too large is an error like any other
    const Arguments all(argv + 1, argv + argc);
    if (all.empty())
        return wrongUsage("a command is missing");
    const auto end = endOfOptions(all);
    if (std::find(all.begin(), end, "--help") != end || all[0] == "-h") {
        std::fputs(kUsage, stdout);
        return endWith(0);
    }
    SoDB::init();
    if (all[0] == "--version") {
        std::printf("kmr (%s)\n", SoDB::getVersion().getString());
        return endWith(0);
    }
    startModules();
    for (const Command& command : kCommands)
        if (all[0] == command.name)
            return endWith(command.run(Arguments(all.begin() + 1, all.end())));
    return wrongUsage("unknown command " + all[0]);
}
