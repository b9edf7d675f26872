#pragma once

#include "mirabo/viewer/ExportFormats.h"

#include <QMainWindow>
#include <QString>

#include <functional>

namespace mirabo {

/// Exports what the view shows to a picture, a drawing or a model, in a file that the user chooses.
///
/// A long export shows how far it has come and can be cancelled; the host goes on meanwhile, and
/// may change its scene: what is written is the scene of the beginning. The status bar tells how it
/// ended.
class SceneExport {
public:
    /// Each function returns the present value; the window is null once it has gone.
    struct Document {
        std::function<QMainWindow*()> window;
        std::function<QString()> file; ///< empty without one
    };

    explicit SceneExport(Document document) : m_document(std::move(document)) {}

    /// Nothing while an export runs. Every failure posts one debug error.
    void run();

private:
    struct Choice {
        QString fileName; ///< empty: none
        const ExportFormat* format = nullptr;
    };
    Choice ask();
    ExportResult write(const Choice& choice, QString& remark);

    Document m_document;
    QString m_filter; ///< chosen last; empty: none yet
    bool m_isRunning = false;
};

} // namespace mirabo
