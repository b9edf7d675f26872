#pragma once

#include <kalmyr/base/SbTime.h>
#include <kalmyr/io/SoInput.h>

#include <QPointer>
#include <QString>

class QProgressBar;
class QProgressDialog;
class QWidget;

/// A scene input that shows how far reading has come, in a dialog that keeps the window alive and
/// cannot be cancelled.
class LiveInput final : public SoInput {
public:
    explicit LiveInput(QWidget* parent);
    ~LiveInput() override;

    void progress(std::size_t bytesRead, std::size_t total) override;
    void warn(const SbString& fileName, int line, int column, const SbString& text) override;

    int getNumWarnings() const { return m_numWarnings; }
    /// "FILE:LINE:COLUMN: TEXT" without the folder; empty without warnings.
    const QString& getFirstWarning() const { return m_firstWarning; }

private:
    void showDialog();

    QPointer<QWidget> m_parent;
    QPointer<QProgressDialog> m_dialog; ///< owned, unless its parent deleted it
    QPointer<QProgressBar> m_bar;       // Not owned; the dialog's.
    SbTime m_start = SbTime::monotonic();
    QString m_firstWarning;
    int m_numWarnings = 0;
};
