#include "mirabo/viewer/Document.h"

#include "mirabo/core/LiveInput.h"
#include "mirabo/core/Messages.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <QApplication>
#include <QFileInfo>
#include <QMainWindow>
#include <QStatusBar>

#include <utility>

namespace mirabo {

namespace {

constexpr int kMessageMs = 10000; // how long a message stays in the status bar
constexpr char kContext[] = "SoMiraboViewer";

QString toQString(const SbString& text)
{
    return QString::fromUtf8(text.getString());
}

bool openInput(LiveInput& input, const QString& fileName, ReadMessages& messages)
{
    const ReadErrorCollector collector(messages);
    return input.openFile(fileName.toUtf8().constData());
}

/// The text of the first error, which is the cause of those that follow; empty without errors.
QString firstError(const ReadMessages& messages)
{
    const ReadMessage* error = messages.first(ReadMessage::Error);
    return error ? error->place() + ": error: " + error->text : QString();
}

/// Files that the scene refers to are found beside it.
void searchBeside(const SbString& fileName)
{
    const SbString directory = SbFileHelper::getDirName(fileName);
    SoInput::removeDirectory(directory);
    SoInput::addDirectoryLast(directory);
}

} // namespace

Document::Document(Listener listener) : m_listener(std::move(listener)) {}

void Document::setWindow(QMainWindow* window)
{
    m_window = window;
}

void Document::setFile(const QString& fileName)
{
    m_file = fileName;
    if (!m_window)
        return;
    m_window->setWindowTitle(fileName.isEmpty() ? QString("Mirabo")
                                                : QString("Mirabo -- %1").arg(fileName));
    m_listener.fileChanged();
}

void Document::adoptFile(const QString& fileName)
{
    setFile(fileName);
    if (!fileName.isEmpty())
        addRecentFile(fileName);
}

bool Document::open(const QString& fileName)
{
    return openAs(fileName, fileName);
}

bool Document::restore(const QString& copy, const QString& fileName)
{
    return openAs(copy, fileName);
}

bool Document::openAs(const QString& path, const QString& fileName)
{
    if (m_reading)
        return false; // asked for by a timer of the host while a file is being read
    LiveInput input(m_window);
    ReadMessages messages(path);
    if (openInput(input, path, messages))
        return path == fileName ? read(input) : readAs(input, fileName);
    setMessages(messages);
    const QString error = firstError(messages);
    showWarning(m_window, "MiraboReadFile",
                error.isEmpty() ? QApplication::translate(kContext, "Can't load '%1'.").arg(path)
                                : error);
    return false;
}

bool Document::openDropped(const QString& fileName)
{
    if (m_reading)
        return false;
    LiveInput input(m_window);
    ReadMessages untold;
    return openInput(input, fileName, untold) && m_listener.mayReplace() && m_window && read(input);
}

void Document::reopen(int index)
{
    if (index >= m_recentFiles.paths().size() || !m_listener.mayReplace() || !m_window)
        return;
    const QString path = m_recentFiles.paths().value(index); // a save may have changed them
    if (QFileInfo::exists(path))
        open(path);
    else
        showCritical(m_window, "Mirabo -- Load File",
                     QString("Can't load '%1'. \n This file doesn't exist anymore.").arg(path));
}

bool Document::close()
{
    if (!m_listener.mayReplace() || !m_window)
        return false;
    setMessages({});
    setFile(QString());
    return true;
}

SoNode* Document::readNodes(LiveInput& input)
{
    const ReadErrorCollector collector(m_gathered);
    input.setMessages(&m_gathered);
    SoNode* root = input.isFileVRML2() ? static_cast<SoNode*>(SoDB::readAllVRML(&input))
                                       : SoDB::readAll(&input);
    input.setMessages(nullptr);
    return root;
}

bool Document::read(LiveInput& input)
{
    return readAs(input, toQString(input.getCurFileName()));
}

bool Document::readAs(LiveInput& input, const QString& fileName)
{
    const SbString name = input.getCurFileName();
    if (name.isEmpty() || m_reading)
        return false;
    searchBeside(name);
    m_gathered = ReadMessages(toQString(name));
    const SbTime start = SbTime::monotonic();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_reading = true;
    const SoRef<SoNode> root(readNodes(input));
    m_reading = false;
    input.closeFile();
    QApplication::restoreOverrideCursor();
    if (!m_window)
        return false; // the host has deleted it meanwhile
    setMessages(std::exchange(m_gathered, {}));
    const QString error = firstError(m_messages);
    if (root) {
        const bool isReload = m_file == fileName;
        setFile(fileName);
        m_listener.show(root.get(), isReload);
        if (!m_window)
            return true; // whoever was told of the scene has deleted it
        if (!fileName.isEmpty())
            addRecentFile(fileName);
        tellLoaded((SbTime::monotonic() - start).getValue());
    }
    if (!error.isEmpty())
        showWarning(m_window, "MiraboReadFile", error);
    return static_cast<bool>(root);
}

void Document::tellLoaded(double seconds)
{
    const QString name = QFileInfo(m_file).fileName();
    QString text = QApplication::translate(kContext, "%1 loaded in %2 s")
                       .arg(name, QString::number(seconds, 'f', 2));
    if (const ReadMessage* warning = m_messages.first(ReadMessage::Warning)) {
        ReadMessage shown = *warning;
        shown.file = QFileInfo(shown.file).fileName();
        text += ". " + shown.toText();
    }
    const int numMore = m_messages.count(ReadMessage::Warning) - 1;
    if (numMore > 0)
        text += QApplication::translate(kContext, " (and %n more)", nullptr, numMore);
    m_window->statusBar()->showMessage(text, kMessageMs);
}

void Document::setMessages(const ReadMessages& messages)
{
    m_messages = messages;
    m_listener.messagesChanged(m_messages);
}

void Document::addMessages(const ReadMessages& messages)
{
    if (m_reading) {
        m_gathered.add(messages);
        return;
    }
    m_messages.add(messages);
    m_listener.messagesChanged(m_messages);
}

void Document::addRecentFile(const QString& path)
{
    m_recentFiles.add(path);
    if (m_window)
        m_listener.recentFilesChanged(m_recentFiles.paths());
}

void Document::readRecentFiles()
{
    m_recentFiles.read();
    m_listener.recentFilesChanged(m_recentFiles.paths());
}

} // namespace mirabo
