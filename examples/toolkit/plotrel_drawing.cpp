// Draws a scene file as vectors: an A3 page in PDF, and a line drawing for a plotter.

#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/plotrel/SoToPDFAction.h>
#include <kalmyr/plotrel/SoVectorizeHPGLAction.h>

#include <cstdio>

namespace {

bool drawPage(SoNode* scene, const char* name)
{
    SoToPDFAction action;
    action.setViewportRegion(SbViewportRegion(1600, 1000)); // the drawing's proportions
    SoVectorOutput& page = *action.getVectorOutput();
    page.setPageSize(SbVec2f(297, 420)); // millimetres, lying on its side unless told otherwise
    page.setTitle("A scene");
    if (!action.openFile(name))
        return false;
    action.apply(scene);
    return action.closeFile(); // now the file has its name
}

bool plotEdges(SoNode* scene, const char* name)
{
    SoVectorizeHPGLAction action;
    action.setStyle(SoVectorizeAction::HIDDEN_LINES);
    SoVectorOutput& plotter = *action.getVectorOutput();
    plotter.setPixelSize(0.35f); // the pen
    if (!plotter.openFile(name))
        return false;
    action.apply(scene);
    return plotter.closeFile();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s SCENE PAGE.pdf PLOT.hpgl\n", argv[0]);
        return 2;
    }
    SoDB::init();
    SoPlotrel::init();
    SoInput in;
    const SoRef<SoNode> scene(in.openFile(argv[1]) ? SoDB::readAll(&in) : nullptr);
    const bool done = scene && drawPage(scene.get(), argv[2]) && plotEdges(scene.get(), argv[3]);
    SoPlotrel::finish();
    return done ? 0 : 1;
}
