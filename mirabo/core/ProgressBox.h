#pragma once

#include <kalmyr/base/SbTime.h>

#include <QPointer>
#include <QString>

class QProgressBar;
class QProgressDialog;
class QWidget;

namespace mirabo {

/// Shows how far a long piece of work in the thread of the user interface has come, in a dialog
/// that keeps the windows alive. Work that is done soon shows no dialog, nor does an application
/// that runs unattended.
///
/// Events of the host are delivered meanwhile, and may do anything but tear the tool down: the
/// caller holds no lock while it calls step(), and asks what is left afterwards.
class ProgressBox {
public:
    enum class Kind {
        Fixed,     ///< the user's input waits until the work is done
        Cancelable ///< has a button that cancels; the user's input reaches the windows of the host
    };

    ProgressBox(QWidget* parent, Kind kind);
    ~ProgressBox();
    ProgressBox(const ProgressBox&) = delete;
    ProgressBox& operator=(const ProgressBox&) = delete;

    /// Whether the work has taken long enough for a dialog.
    bool isDue() const;
    bool isShown() const;
    /// Shows the share of the work that is done, from 0 to 1, and delivers events. The text is that
    /// of the dialog when it appears now. False when the work is to stop: the user cancelled it, or
    /// the tool ends.
    bool step(double share, const QString& text);

private:
    void show(const QString& text);

    const Kind m_kind;
    const SbTime m_start = SbTime::monotonic();
    QPointer<QWidget> m_parent;
    QPointer<QProgressDialog> m_dialog; ///< owned, unless its parent deleted it
    QPointer<QProgressBar> m_bar;       // Not owned; the dialog's.
    bool m_isCanceled = false;
};

} // namespace mirabo
