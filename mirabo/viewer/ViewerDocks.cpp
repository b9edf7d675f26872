#include "mirabo/viewer/ViewerDocks.h"

#include <QCoreApplication>
#include <QDockWidget>
#include <QMainWindow>

namespace mirabo {

namespace {

QDockWidget* makeDock(QMainWindow* window, const char* name, const char* title)
{
    auto* dock = new QDockWidget(QCoreApplication::translate("SoMiraboViewer", title), window);
    dock->setObjectName(name);
    return dock;
}

} // namespace

ViewerDocks::ViewerDocks(QMainWindow* window)
    : tree(makeDock(window, "dockMainWin", "Tree View")),
      overview(makeDock(window, "dockNodeOverview", "Node Overview")),
      watch(makeDock(window, "dockFieldWatch", "Field Watch"))
{
    window->setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    window->addDockWidget(Qt::LeftDockWidgetArea, tree);
    window->addDockWidget(Qt::BottomDockWidgetArea, overview);
    window->addDockWidget(Qt::BottomDockWidgetArea, watch);
    window->splitDockWidget(overview, watch, Qt::Horizontal);
}

QDockWidget* ViewerDocks::addViewerDock(QMainWindow* window)
{
    QDockWidget* dock = makeDock(window, "dockSceneViewer", "Kalmyr SceneViewer");
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    window->setCentralWidget(dock);
    return dock;
}

} // namespace mirabo
