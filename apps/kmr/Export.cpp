#include "Drawing.h"

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/plotrel/SoToPDFAction.h>
#include <kalmyr/plotrel/SoToU3DAction.h>
#include <kalmyr/plotrel/SoVectorizeCGMAction.h>
#include <kalmyr/plotrel/SoVectorizeGDIAction.h>
#include <kalmyr/plotrel/SoVectorizeHPGLAction.h>
#include <kalmyr/plotrel/SoVectorizePSAction.h>
#include <kalmyr/plotrel/SoVectorOutput.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace {

using Action = SoVectorizeAction;

template <class Kind>
std::unique_ptr<Action> make()
{
    return std::make_unique<Kind>();
}

struct VectorFormat {
    const char* extension;
    std::unique_ptr<Action> (*make)(); ///< null: a model, no drawing
};
constexpr VectorFormat kFormats[] = {
    {"pdf", &make<SoToPDFAction>},         {"u3d", nullptr},
    {"ps", &make<SoVectorizePSAction>},    {"cgm", &make<SoVectorizeCGMAction>},
    {"emf", &make<SoVectorizeGDIAction>},  {"hpgl", &make<SoVectorizeHPGLAction>},
    {"plt", &make<SoVectorizeHPGLAction>},
};

const VectorFormat* formatOf(const std::string& name)
{
    const std::string extension = extensionOf(name);
    const auto at = std::find_if(std::begin(kFormats), std::end(kFormats),
                                 [&](const auto& format) { return extension == format.extension; });
    return at == std::end(kFormats) ? nullptr : at;
}

struct Page {
    const char* name;
    float width; ///< millimetres, upright
    float height;
};
constexpr Page kPages[] = {
    {"a5", 148, 210},           {"a4", 210, 297},          {"a3", 297, 420},
    {"a2", 420, 594},           {"a1", 594, 841},          {"a0", 841, 1189},
    {"letter", 215.9f, 279.4f}, {"legal", 215.9f, 355.6f}, {"tabloid", 279.4f, 431.8f}};

struct ExportOptions {
    SbVec2f page{210, 297};
    SbVec2f drawing{0, 0};
    float margin = 10;
    float pixelSize = 0;
    float tolerance = 4;
    SoVectorOutput::Orientation orientation = SoVectorOutput::LANDSCAPE;
    SoVectorOutput::ColorMode colors = SoVectorOutput::COLOR;
    bool isPortrait = false;
    bool hasHiddenLines = false;
    bool isCutting = false;
    bool hasModel = false;
};

bool parsePage(const std::string& text, SbVec2f& page)
{
    constexpr float kMaxSide = 10000;
    for (const Page& known : kPages) {
        if (text == known.name) {
            page.setValue(known.width, known.height);
            return true;
        }
    }
    return parsePair(text, page[0], page[1]) && page[0] >= 10 && page[1] >= 10
           && page[0] <= kMaxSide && page[1] <= kMaxSide;
}

bool parseColors(const std::string& text, SoVectorOutput::ColorMode& mode)
{
    constexpr const char* kNames[] = {"color", "grey", "black"};
    for (int i = 0; i < 3; ++i) {
        if (text == kNames[i]) {
            mode = static_cast<SoVectorOutput::ColorMode>(i);
            return true;
        }
    }
    return false;
}

/// The whole text as a number within the range.
bool parseNumber(const std::string& text, float low, float high, float& number)
{
    return SbNumber::toFloat(text, number) && number >= low && number <= high;
}

/// Takes the options of the page and of the drawing; the reason when one is wrong.
std::string takeExportOptions(Arguments& arguments, ExportOptions& options)
{
    std::string page, drawing, margin, pixel, tolerance, colors;
    options.isPortrait = takeFlag(arguments, "--portrait");
    options.hasHiddenLines = takeFlag(arguments, "--hidden-lines");
    options.isCutting = takeFlag(arguments, "--cut");
    options.hasModel = takeFlag(arguments, "--with-model");
    if (!takeOption(arguments, "--page", page) || !takeOption(arguments, "--drawing", drawing)
        || !takeOption(arguments, "--margin", margin)
        || !takeOption(arguments, "--pixel-width", pixel)
        || !takeOption(arguments, "--tolerance", tolerance)
        || !takeOption(arguments, "--colors", colors))
        return "an option needs a value";
    if (!page.empty() && !parsePage(page, options.page))
        return "--page is a5 to a0, letter, legal, tabloid or WIDTHxHEIGHT in millimetres, not "
               + page;
    if (!drawing.empty()
        && (!parsePair(drawing, options.drawing[0], options.drawing[1])
            || !(options.drawing[0] >= 1 && options.drawing[1] >= 1 && options.drawing[0] <= 10000
                 && options.drawing[1] <= 10000)))
        return "--drawing is WIDTHxHEIGHT in millimetres, not " + drawing;
    if (!margin.empty() && !parseNumber(margin, 0, 1000, options.margin))
        return "--margin is a number of millimetres, not " + margin;
    if (!pixel.empty() && !parseNumber(pixel, 0.001f, 100, options.pixelSize))
        return "--pixel-width is a number of millimetres, not " + pixel;
    if (!tolerance.empty() && !parseNumber(tolerance, 1, 255, options.tolerance))
        return "--tolerance is a number from 1 to 255, not " + tolerance;
    if (!colors.empty() && !parseColors(colors, options.colors))
        return "--colors is color, grey or black, not " + colors;
    return {};
}

void setPage(SoVectorOutput& output, const ExportOptions& options, const std::string& name)
{
    output.setPageSize(options.page);
    output.setOrientation(options.isPortrait ? SoVectorOutput::PORTRAIT
                                             : SoVectorOutput::LANDSCAPE);
    output.setMargin(options.margin);
    output.setDrawingSize(options.drawing);
    output.setPixelSize(options.pixelSize);
    output.setColorMode(options.colors);
    const std::size_t slash = name.rfind('/');
    output.setTitle(SbString(name.substr(slash == std::string::npos ? 0 : slash + 1)));
}

bool writeModel(SoNode* seen, const std::string& name)
{
    SoToU3DAction action;
    if (!action.openFile(name.c_str()))
        return false;
    action.apply(seen);
    return action.closeFile();
}

bool writeDrawing(SoNode* seen, const std::string& name, const DrawOptions& options,
                  const ExportOptions& how)
{
    const VectorFormat& format = *formatOf(name);
    if (!format.make)
        return writeModel(seen, name);
    const std::unique_ptr<Action> action = format.make();
    action->setViewportRegion(options.region);
    if (options.background)
        action->setBackgroundColor(*options.background);
    action->setShadingTolerance(how.tolerance / 255);
    action->setStyle(how.hasHiddenLines ? Action::HIDDEN_LINES : Action::SHADED);
    action->setCuttingHiddenParts(how.isCutting);
    if (how.hasModel)
        static_cast<SoToPDFAction&>(*action).setModelEmbedded(true);
    SoVectorOutput& output = *action->getVectorOutput();
    setPage(output, how, name);
    if (!output.openFile(name.c_str()))
        return false;
    action->apply(seen);
    return output.closeFile();
}

} // namespace

int runExport(const Arguments& given)
{
    Arguments arguments = given;
    DrawOptions options;
    options.region.setWindowSize(1280, 1024);
    ExportOptions how;
    std::string reason = takeExportOptions(arguments, how);
    if (!reason.empty() || !takeDrawOptions(arguments, options, reason))
        return wrongUsage(reason);
    for (const auto& [in, out] : options.files) {
        if (!formatOf(out))
            return wrongUsage("the file's name must end in pdf, u3d, ps, cgm, emf or hpgl");
        if (how.hasModel && extensionOf(out) != "pdf")
            return wrongUsage("only pdf files can hold a model");
    }
    SoPlotrel::init();
    const int status = drawEach(options, [&](SoNode* seen, const std::string& name) {
        return writeDrawing(seen, name, options, how);
    });
    SoPlotrel::finish();
    return status;
}
