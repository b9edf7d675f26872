#pragma once

#include <kalmyr/io/SoInput.h>

#include <QElapsedTimer>
#include <QPointer>

class QProgressDialog;
class QWidget;

/// A scene input that shows how far reading has come, in a dialog that keeps the window alive and
/// cannot be cancelled.
class LiveInput final : public SoInput {
public:
    explicit LiveInput(QWidget* parent);
    ~LiveInput() override;

    void progress(std::size_t bytesRead, std::size_t total) override;

private:
    void showDialog();

    QPointer<QWidget> m_parent;
    QPointer<QProgressDialog> m_dialog;
    QElapsedTimer m_sinceStart;
};
