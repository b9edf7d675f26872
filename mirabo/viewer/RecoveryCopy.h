#pragma once

#include "mirabo/viewer/SceneWriter.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

namespace mirabo {

class RecoveryPlace;

/// Keeps a copy of unsaved work on the disk, which outlives the program when that is killed.
///
/// The copy is written while the user does nothing: some time after an edit, in slices of a few
/// milliseconds, none while a key or a button is held or was a moment ago. An edit ends the writing
/// and begins it anew later; it never waits. The copy is removed when the work is saved or given
/// up, and with this object.
class RecoveryCopy final : public QObject {
    Q_OBJECT

public:
    /// Access to the document; each function returns the present value.
    struct Document {
        std::function<SceneWriter::Content()> scene;
        std::function<QString()> file; ///< empty without one
        std::function<bool()> isUnsaved;
    };

    RecoveryCopy(Document document, const QString& folder, QObject* parent = nullptr);
    ~RecoveryCopy() override;

    /// The scene, or whether it is saved, has changed.
    void documentChanged();
    /// Goes on with a copy of a run before: the document holds its scene now.
    void adopt(std::unique_ptr<RecoveryPlace> place);
    /// The scene as it is now stands on the disk.
    bool isUpToDate() const { return m_isUpToDate; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// A copy stands on the disk.
    void written();
    /// It cannot be written; told once.
    void failed();

private:
    class Writing;
    void begin();
    void goOn();
    void finish(bool isWritten);
    void cancel();
    void removeCopy();
    bool isUserBusy() const;

    Document m_document;
    QString m_folder;
    std::unique_ptr<RecoveryPlace> m_place;
    std::unique_ptr<Writing> m_writing;
    QTimer m_idle;          ///< from an edit to the copy
    QTimer m_slices;        ///< between two slices
    double m_lastInput = 0; ///< in seconds
    bool m_isUpToDate = false;
    bool m_hasFailed = false;
};

} // namespace mirabo
