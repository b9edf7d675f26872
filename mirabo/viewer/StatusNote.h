#pragma once

#include <QLabel>
#include <QPointer>
#include <QString>

class QMainWindow;

namespace mirabo {

/// Lines in the status bar about a file that was written, or was not.
class StatusNote final : public QLabel {
    Q_OBJECT

public:
    /// A line for a while.
    static void tell(QMainWindow* window, const QString& text);
    /// A line with the name of a file and a link that opens its folder; it stays for a minute, or
    /// until the next one. `remark`: what else there is to say; empty for nothing.
    static void tellWritten(QMainWindow* window, const QString& fileName, const QString& remark);

private:
    StatusNote(QWidget* parent, const QString& fileName, const QString& remark);
    void openFolder() const;

    QString m_fileName;
};

} // namespace mirabo
