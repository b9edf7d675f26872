#include "Commands.h"
#include "Scene.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool endsWith(const std::string& text, const char* end)
{
    return std::string_view(text).ends_with(end);
}

bool isCompressedName(const std::string& name)
{
    return endsWith(name, ".kyz") || endsWith(name, ".gz") || endsWith(name, ".wrz");
}

/// By the name of the file, and for VRML the version of the input.
SoInput::Format formatFor(const std::string& name, SoInput::Format read)
{
    if (name.find(".wrl") != std::string::npos || name.find(".wrz") != std::string::npos)
        return read == SoInput::VRML1 ? SoInput::VRML1 : SoInput::VRML2;
    return SoInput::KALMYR_ASCII;
}

const char* headerOf(SoInput::Format format)
{
    switch (format) {
    case SoInput::VRML1:
        return "#VRML V1.0 ascii";
    case SoInput::VRML2:
        return "#VRML V2.0 utf8";
    case SoInput::KALMYR_BINARY:
        return "#Kalmyr V1.0 binary";
    default:
        return "#Kalmyr V1.0 ascii";
    }
}

/// What the format has is written as it was read, with all that other formats have no words for.
bool holds(SoInput::Format format, const Scene& scene)
{
    return format == SoInput::KALMYR_ASCII || format == SoInput::KALMYR_BINARY
           || format == scene.format;
}

/// The scene in nodes of the format; null when it is too large for that.
SoRef<SoNode> inNodesOf(SoInput::Format format, const Scene& scene)
{
    if (holds(format, scene))
        return scene.root;
    if (format == SoInput::VRML1) {
        SoToVRMLAction convert;
        convert.apply(scene.root.get());
        return SoRef<SoNode>(convert.hasTerminated() ? nullptr : convert.getVRMLSceneGraph());
    }
    SoToVRML2Action convert;
    convert.reuseAppearanceNodes(true);
    convert.reusePropertyNodes(true);
    convert.reuseGeometryNodes(true);
    convert.apply(scene.root.get());
    return SoRef<SoNode>(convert.hasTerminated() ? nullptr : convert.getVRML2SceneGraph());
}

} // namespace

int runConvert(const Arguments& given)
{
    Arguments arguments = given;
    std::string formatText, option;
    if (!takeOption(arguments, "--format", formatText))
        return wrongUsage("--format needs a name");
    if (hasUnknownOption(arguments, option))
        return wrongUsage("unknown option " + option);
    if (arguments.size() != 2)
        return wrongUsage("convert needs the file to read and the file to write");
    SoInput::Format format = formatOfName(formatText);
    if (!formatText.empty() && format == SoInput::UNKNOWN_FORMAT)
        return wrongUsage("unknown format " + formatText);
    const Scene scene = readScene(arguments[0], false);
    if (!scene.ok)
        return printErrors(scene);
    const std::string name = lowerCase(arguments[1]);
    if (format == SoInput::UNKNOWN_FORMAT)
        format = formatFor(name, scene.format);
    const ErrorPrinter errors(arguments[1]);
    const SoRef<SoNode> root = inNodesOf(format, scene);
    if (!root)
        return 1;
    SoOutput out;
    out.setCompression(isCompressedName(name));
    out.setBinary(format == SoInput::KALMYR_BINARY);
    if (!out.openFile(SbString(arguments[1])))
        return 1;
    out.setHeaderString(headerOf(format));
    SoWriteAction write(&out);
    // Nodes that stood side by side do so again, unless they had to be made anew.
    write.setRootWritten(root != scene.root || !scene.isRootOwn);
    write.apply(root.get());
    return out.closeFile() ? 0 : 1;
}
