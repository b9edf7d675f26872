#include "mirabo/viewer/SceneFormat.h"

#include "mirabo/core/ErrorScope.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>

#include <QStringList>

#include <array>

namespace mirabo {

namespace {

struct Format {
    SceneFileFormat format;
    QString header;
    QString filter;
    QString extension;           ///< added to names without one
    QStringList knownExtensions; ///< names that hold one of them are kept
    bool isOffered;              ///< by the save dialog
};

const std::array<Format, 4>& formats()
{
    static const std::array<Format, 4> all{{
        {SceneFileFormat::KalmyrAscii,
         QString::fromUtf8(SoOutput::getDefaultASCIIHeader().getString()),
         "Kalmyr Files [ascii] (*.ky *.kyz *.ky.gz)",
         ".ky",
         {".ky"},
         true},
        {SceneFileFormat::KalmyrBinary,
         QString::fromUtf8(SoOutput::getDefaultBinaryHeader().getString()),
         "Kalmyr Files [binary] (*.ky *.kyz *.ky.gz)",
         ".ky",
         {".ky"},
         true},
        {SceneFileFormat::Vrml1,
         "#VRML V1.0 ascii",
         "Vrml 1.0-style Files (*.wrl *.wrz *.wrl.gz)",
         ".wrl",
         {".wrl", ".wrz"},
         false},
        {SceneFileFormat::Vrml2,
         "#VRML V2.0 utf8",
         "Vrml 2.0-style Files (*.wrl *.wrz *.wrl.gz)",
         ".wrl",
         {".wrl", ".wrz"},
         false},
    }};
    return all;
}

const Format* find(SceneFileFormat format)
{
    for (const Format& known : formats())
        if (known.format == format)
            return &known;
    return nullptr;
}

} // namespace

SceneFileFormat detectSceneFormat(const QString& fileName)
{
    SoInput input;
    const FirstError<SoReadError> untold;
    if (!input.openFile(fileName.toUtf8().constData()))
        return SceneFileFormat::Detect;
    const QString header = QString::fromUtf8(input.getHeader().getString()).trimmed();
    for (const Format& format : formats())
        if (header == format.header.trimmed())
            return format.format;
    return SceneFileFormat::Detect;
}

QString headerOf(SceneFileFormat format)
{
    const Format* known = find(format);
    return known ? known->header : QString();
}

bool isPackedName(const QString& fileName)
{
    const SbString extension = SbFileHelper::getExtension(fileName.toUtf8().constData());
    static const QStringList packed{"kyz", "gz", "wrz"};
    return packed.contains(QString::fromUtf8(extension.getString()).toLower());
}

QString saveFilters()
{
    QStringList filters;
    for (const Format& format : formats())
        if (format.isOffered)
            filters.append(format.filter);
    return filters.join(";;");
}

SceneFileFormat formatOfFilter(const QString& filter)
{
    for (const Format& format : formats())
        if (format.filter == filter)
            return format.format;
    return SceneFileFormat::Detect;
}

QString withExtension(const QString& fileName, SceneFileFormat format)
{
    const Format* known = find(format);
    if (!known)
        return fileName;
    for (const QString& extension : known->knownExtensions)
        if (fileName.contains(extension, Qt::CaseInsensitive))
            return fileName;
    return fileName + known->extension;
}

} // namespace mirabo
