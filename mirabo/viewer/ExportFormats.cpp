#include "mirabo/viewer/ExportFormats.h"

#include "mirabo/viewer/ShownScene.h"

#include <kalmyr/base/SbFileReplacement.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/plotrel/SoToPDFAction.h>
#include <kalmyr/plotrel/SoToU3DAction.h>
#include <kalmyr/plotrel/SoVectorizeCGMAction.h>
#include <kalmyr/plotrel/SoVectorizeGDIAction.h>
#include <kalmyr/plotrel/SoVectorizeHPGLAction.h>
#include <kalmyr/plotrel/SoVectorizePSAction.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <QFileInfo>
#include <QStringList>

#include <array>
#include <cstdio>

namespace mirabo {

namespace {

/// The module is started while one of these lives.
class Plotrel {
public:
    Plotrel() { SoPlotrel::init(); }
    ~Plotrel() { SoPlotrel::finish(); }
    Plotrel(const Plotrel&) = delete;
    Plotrel& operator=(const Plotrel&) = delete;
};

ExportResult resultOf(bool isClosed, bool wasStopped)
{
    if (wasStopped)
        return ExportResult::Stopped;
    return isClosed ? ExportResult::Written : ExportResult::Failed;
}

using PictureWriter = bool (*)(const SoOffscreenRenderer& picture, std::FILE* file);

/// A picture of points.
template <PictureWriter write>
ExportResult writePicture(const ShownScene& scene, const ExportTarget& target)
{
    SoOffscreenRenderer renderer(scene.getRegion());
    if (!scene.render(renderer))
        return ExportResult::Failed;
    if (!target.goesOn(0.5f)) // drawing takes as long as all the rest, or longer
        return ExportResult::Stopped;
    const bool isWritten =
        SbFileReplacement::write(target.fileName.toUtf8().constData(),
                                 [&](std::FILE* file) { return write(renderer, file); });
    return resultOf(isWritten, false);
}

/// A drawing of lines and faces.
template <class Action>
ExportResult writeDrawing(const ShownScene& scene, const ExportTarget& target)
{
    const Plotrel module;
    Action action;
    SoVectorOutput* output = action.getVectorOutput();
    output->setTitle(QFileInfo(target.fileName).completeBaseName().toUtf8().constData());
    if (!output->openFile(target.fileName.toUtf8().constData()))
        return ExportResult::Failed;
    action.setDefaultCamera(false); // the scene has one
    action.setViewportRegion(scene.getRegion());
    if (scene.getBackground())
        action.setBackgroundColor(*scene.getBackground());
    action.setProgressCallback(target.goesOn);
    action.apply(scene.getRoot());
    const bool isClosed = output->closeFile();
    return resultOf(isClosed, action.wasStopped());
}

/// The objects themselves, in three dimensions.
ExportResult writeModel(const ShownScene& scene, const ExportTarget& target)
{
    const Plotrel module;
    SoToU3DAction action;
    if (!action.openFile(target.fileName.toUtf8().constData()))
        return ExportResult::Failed;
    action.setProgressCallback(target.goesOn);
    action.apply(scene.getRoot());
    const bool isClosed = action.closeFile(); // most of the work
    return resultOf(isClosed, action.wasStopped());
}

bool toJPEG(const SoOffscreenRenderer& picture, std::FILE* file)
{
    return picture.writeToJPEG(file, 1.0f);
}
bool toBMP(const SoOffscreenRenderer& picture, std::FILE* file)
{
    return picture.writeToBMP(file);
}
bool toTIFF(const SoOffscreenRenderer& picture, std::FILE* file)
{
    return picture.writeToTIFF(file, true);
}
bool toPostScript(const SoOffscreenRenderer& picture, std::FILE* file)
{
    return picture.writeToPostScript(file);
}
bool toRGB(const SoOffscreenRenderer& picture, std::FILE* file)
{
    return picture.writeToRGB(file);
}

constexpr std::array<ExportFormat, 11> kFormats{{
    {"JPG - JPEG", ".jpg", &writePicture<toJPEG>},
    {"BMP - Windows Bitmap", ".bmp", &writePicture<toBMP>},
    {"TIFF - Tag Image File Format", ".tif", &writePicture<toTIFF>},
    {"PS - PostScript", ".ps", &writePicture<toPostScript>},
    {"RGB - SGI Image File", ".rgb", &writePicture<toRGB>},
    {"PDF - using Plotrel", ".pdf", &writeDrawing<SoToPDFAction>},
    {"U3D - using Plotrel", ".u3d", &writeModel},
    {"PS - using Plotrel", ".ps", &writeDrawing<SoVectorizePSAction>},
    {"CGM - using Plotrel", ".cgm", &writeDrawing<SoVectorizeCGMAction>},
    {"EMF/GDI - using Plotrel", ".emf", &writeDrawing<SoVectorizeGDIAction>},
    {"HPGL - using Plotrel", ".hpgl", &writeDrawing<SoVectorizeHPGLAction>},
}};

} // namespace

std::span<const ExportFormat> exportFormats()
{
    return kFormats;
}

const ExportFormat* findExportFormat(const QString& filter)
{
    for (const ExportFormat& format : kFormats)
        if (filter == format.filter)
            return &format;
    return nullptr;
}

QString exportFilters()
{
    QStringList filters;
    for (const ExportFormat& format : kFormats)
        filters.append(format.filter);
    return filters.join(";;");
}

QString withExtension(const QString& fileName, const ExportFormat& format)
{
    return fileName.contains(format.extension, Qt::CaseInsensitive) ? fileName
                                                                    : fileName + format.extension;
}

} // namespace mirabo
