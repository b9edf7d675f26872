#pragma once

#include <QString>

namespace mirabo {

/// How a scene file is written; the numbers are kept in settings and passed by extensions.
enum class SceneFileFormat {
    Detect = 0, ///< as the file that is there
    KalmyrAscii = 1,
    KalmyrBinary = 2,
    Vrml1 = 3,
    Vrml2 = 4,
};

/// The format of an existing file, by its header; Detect when the file cannot be read or has none
/// of the known headers. Posts nothing.
SceneFileFormat detectSceneFormat(const QString& fileName);

/// The header that files of a format begin with; empty for Detect.
QString headerOf(SceneFileFormat format);

/// Whether a file of that name is packed: its extension is kyz, gz or wrz.
bool isPackedName(const QString& fileName);

/// The filters of the save dialog, joined as QFileDialog takes them: the two forms of Kalmyr files.
/// VRML is only written over files that are VRML.
QString saveFilters();
/// The format that a filter of any format stands for; Detect when it is none of them.
SceneFileFormat formatOfFilter(const QString& filter);

/// The name with the format's extension where it has none that fits.
QString withExtension(const QString& fileName, SceneFileFormat format);

} // namespace mirabo
