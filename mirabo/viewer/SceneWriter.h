#pragma once

#include "mirabo/viewer/SceneFormat.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>

#include <QString>

#include <functional>

class SoOutput;

namespace mirabo {

/// Writes a scene, or a part of one, to a file, and asks whether to rewrite the files that it
/// refers to.
///
/// A file is replaced only when all of the new one is on the disk. The graph is read under the read
/// lock; where that is refused, because another thread edits, nothing is written.
class SceneWriter {
public:
    /// Questions and messages; called in the thread that writes.
    struct Dialogs {
        /// Whether to rewrite a file that the scene refers to.
        std::function<bool(const QString& fileName)> confirmOverwrite;
        /// The file cannot be created.
        std::function<void(const QString& fileName)> tellNotCreated;
        /// Writing failed half way, and why; the old file is as it was.
        std::function<void(const QString& fileName, const QString& reason)> tellNotWritten;
    };
    /// A graph, or the children of a node side by side.
    struct Content {
        SoRef<SoNode> node;
        bool childrenOnly = false;
    };
    struct Result {
        bool isWritten = false;
        /// Content of the file now if that is another graph; null when it was not converted.
        SoRef<SoNode> converted = {};
    };

    /// `isVrmlScene`: the files that a VRML97 world refers to are not rewritten.
    SceneWriter(Dialogs dialogs, bool isVrmlScene);

    /// With SceneFileFormat::Detect the format of the file that is there; when it has none that is
    /// known, or is not there, nothing is written and nothing told.
    Result write(const Content& content, const QString& fileName, SceneFileFormat format);

private:
    bool writeFile(const Content& content, const QString& fileName, SceneFileFormat format);
    void writeReferencedFiles(SoNode* node);
    void writeReferencedFile(SoNode* node);

    Dialogs m_dialogs;
    bool m_isVrmlScene;
};

} // namespace mirabo
