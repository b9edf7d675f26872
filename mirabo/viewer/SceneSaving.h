#pragma once

#include "mirabo/viewer/SceneWriter.h"

#include <QString>

#include <functional>
#include <memory>

class QWidget;

namespace mirabo {

/// Saves the document: to its file, under a new name, a part of it; and asks before changes are
/// lost. May be deleted while a dialog is open; the document is left alone afterwards.
class SceneSaving {
public:
    /// Access to the document; each function returns the present value.
    struct Document {
        std::function<QWidget*()> window; ///< parent of the dialogs
        std::function<SceneWriter::Content()> scene;
        std::function<QString()> file; ///< empty without one
        /// The scene has another file now, or none.
        std::function<void(const QString& fileName)> setFile;
        /// The document's own file was written; told before setFile() when it is another one.
        std::function<void()> saved;
        /// Shows what the scene was converted to in its place.
        std::function<void(SoNode* scene)> show;
        std::function<bool()> isVrml;
        std::function<bool()> isModified;
    };

    explicit SceneSaving(Document document);

    /// To the document's file, in its format; asks for a name without one. When the file has no
    /// known format any more, or cannot be written, the document has no file afterwards. False
    /// when nothing was saved.
    bool save();
    /// Asks for a name and a format. Null: the whole scene, which has that file from then on.
    bool saveAs(SoNode* part = nullptr);
    /// Writes a graph; `isShown`: shows what was written as the scene, if that is another one.
    bool write(SoNode* node, const QString& fileName, SceneFileFormat format, bool isShown);
    /// True when the caller may go on: nothing would be lost, or the user has decided.
    bool confirmUnsavedChanges();

private:
    SceneWriter writer() const;

    std::shared_ptr<const Document> m_document; ///< never null; expires with the last owner
};

} // namespace mirabo
