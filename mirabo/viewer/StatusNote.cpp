#include "mirabo/viewer/StatusNote.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QMainWindow>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

namespace mirabo {

namespace {

constexpr int kLineMs = 10'000;
constexpr int kIndent = 4; // pixels; begins where messages do
constexpr int kLinkMs = 60'000;

void removeNotes(QStatusBar* bar)
{
    for (StatusNote* note : bar->findChildren<StatusNote*>()) {
        bar->removeWidget(note);
        note->deleteLater();
    }
}

} // namespace

void StatusNote::tell(QMainWindow* window, const QString& text)
{
    removeNotes(window->statusBar());
    window->statusBar()->showMessage(text, kLineMs);
}

void StatusNote::tellWritten(QMainWindow* window, const QString& fileName, const QString& remark)
{
    QStatusBar* bar = window->statusBar();
    removeNotes(bar);
    bar->clearMessage(); // it would hide the note
    bar->addWidget(new StatusNote(bar, fileName, remark), 1);
}

StatusNote::StatusNote(QWidget* parent, const QString& fileName, const QString& remark)
    : QLabel(parent), m_fileName(fileName)
{
    setObjectName("statusNote");
    const QString name = QFileInfo(fileName).fileName();
    QString text = tr("%1 was written").arg(name);
    if (!remark.isEmpty())
        text += ": " + remark.simplified();
    setTextFormat(Qt::RichText);
    setIndent(kIndent);
    setText(text.toHtmlEscaped() + ". <a href=\"folder\">" + tr("Show Folder") + "</a>");
    setAccessibleName(text);
    setToolTip(fileName);
    setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    setFocusPolicy(Qt::TabFocus);
    // A narrow window shows its beginning, and the bar keeps its height.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    connect(this, &QLabel::linkActivated, this, &StatusNote::openFolder);
    QTimer::singleShot(kLinkMs, this, &QObject::deleteLater);
}

void StatusNote::openFolder() const
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(m_fileName).absolutePath()));
}

} // namespace mirabo
