#pragma once

#include <QString>

namespace mirabo {

/// The name that a dialog proposes for something made of the document: that of its file without
/// what follows the last dot, also where that is in the folder's name.
inline QString proposedName(const QString& documentFile)
{
    if (documentFile.isEmpty())
        return "./Untitled File";
    const int dot = documentFile.lastIndexOf('.');
    return dot < 0 ? documentFile : documentFile.left(dot);
}

} // namespace mirabo
