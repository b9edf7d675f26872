#include "mirabo/viewer/ScenePrinting.h"

#include "mirabo/core/Modal.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/viewer/ShownScene.h"
#include "mirabo/viewer/StatusNote.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <QFileInfo>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>

#include <cstddef>

namespace mirabo {

namespace {

/// The picture, which the renderer keeps from the bottom up.
QImage imageOf(const SoOffscreenRenderer& renderer)
{
    const SbVec2s size = renderer.getViewportRegion().getWindowSize();
    const int width = size[0], height = size[1];
    const unsigned char* source = renderer.getBuffer();
    QImage image(width, height, QImage::Format_RGB32);
    for (int row = height - 1; row >= 0; --row) {
        auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(row));
        for (int x = 0; x < width; ++x, source += 3)
            pixels[x] = qRgb(source[0], source[1], source[2]);
    }
    return image;
}

/// Null when there is nothing to draw, or it cannot be drawn: the reason is posted.
QImage pictureOfScene()
{
    const ShownScene scene;
    SoOffscreenRenderer renderer(scene.getRegion());
    renderer.setComponents(SoOffscreenRenderer::RGB);
    return scene.getRoot() && scene.render(renderer) ? imageOf(renderer) : QImage();
}

} // namespace

void ScenePrinting::tell(const QString& text) const
{
    if (QMainWindow* window = m_document.window())
        StatusNote::tell(window, text);
}

void ScenePrinting::run()
{
    QImage image;
    {
        const GraphReading graph;
        if (!graph)
            return tell("Not printed: another thread is changing the scene");
        image = pictureOfScene();
    }
    if (image.isNull())
        return tell("The scene could not be drawn for the printer");
    QPrinter printer(QPrinter::ScreenResolution);
    printer.setCreator("Mirabo");
    printer.setDocName(QFileInfo(m_document.file()).completeBaseName());
    {
        Modal dialog(new QPrintDialog(&printer, m_document.window()));
        if (dialog.run() != QDialog::Accepted)
            return;
    }
    QPainter painter;
    bool isPrinted = painter.begin(&printer);
    if (isPrinted) {
        painter.drawImage(0, 0, image);
        isPrinted = painter.end() && printer.printerState() != QPrinter::Error;
    }
    if (!isPrinted) {
        SoDebugError::post("SoMiraboViewer::printFile()", "Unable to print");
        return tell("The scene could not be printed");
    }
    if (printer.outputFileName().isEmpty())
        tell("The scene was sent to the printer");
    else if (QMainWindow* window = m_document.window())
        StatusNote::tellWritten(window, printer.outputFileName(), {});
}

} // namespace mirabo
