#include "mirabo/viewer/SoMiraboViewer.h"

#include "mirabo/core/GraphReading.h"
#include "mirabo/core/Later.h"
#include "mirabo/core/LiveInput.h"
#include "mirabo/core/Messages.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/private/EventFrames.h"
#include "mirabo/extender/private/Frame.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/viewer/FirstLayout.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/rendering/SoLineHighlightRenderAction.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QFileInfo>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>
#include <QThread>

#include <utility>

namespace {

SoMiraboViewer* s_instance = nullptr;

const QString kGeometry = QString::fromLatin1(mirabo::kMainFrameGroup);
constexpr int kUnsetSize = 32767;
constexpr QSize kFirstSize(1280, 900);
constexpr int kMessageMs = 10000; // how long a message stays in the status bar
/// A calm dark tone on which shaded objects of any colour stand out.
const SbColor kViewerBackground(0.20f, 0.23f, 0.28f);

QString toQString(const SbString& text)
{
    return QString::fromUtf8(text.getString());
}

bool open(LiveInput& input, const QString& fileName, mirabo::ReadMessages& messages)
{
    const mirabo::ReadErrorCollector collector(messages);
    return input.openFile(fileName.toUtf8().constData());
}

/// The text of the first error, which is the cause of those that follow; empty without errors.
QString firstError(const mirabo::ReadMessages& messages)
{
    const mirabo::ReadMessage* error = messages.first(mirabo::ReadMessage::Error);
    return error ? error->place() + ": error: " + error->text : QString();
}

bool isEmbeddedLaunch()
{
    return SoPreferences::getBool("KMRU_LAUNCH_MIRABO", false)
           || SoPreferences::getBool("ART_LAUNCH_MIRABO", false);
}

} // namespace

SoMiraboViewer* SoMiraboViewer::instance()
{
    if (!s_instance)
        s_instance = new SoMiraboViewer;
    return s_instance;
}

bool SoMiraboViewer::exists()
{
    return s_instance != nullptr;
}

void SoMiraboViewer::destroyInstance()
{
    delete s_instance;
    s_instance = nullptr;
}

SoMiraboViewer::SoMiraboViewer() : m_selection(new SoSelection)
{
    m_selection->policy = SoSelection::SINGLE;
    m_selection->addSelectionCallback(&SoMiraboViewer::pathSelected, this);
    mirabo::EventFrames::addRoot(this);
}

SoMiraboViewer::~SoMiraboViewer()
{
    mirabo::EventFrames::removeRoot(this);
    // Others may hold the scene manager, and go on drawing.
    if (m_examiner && m_highlightAction)
        m_examiner->getSceneManager()->setGLRenderAction(nullptr);
    const mirabo::GraphReading graph;
    m_selection->removeSelectionCallback(&SoMiraboViewer::pathSelected, this);
    m_selection->deselectAll();
    m_selection->removeAllChildren();
}

void SoMiraboViewer::pathSelected(void* data, SoPath* path)
{
    auto* self = static_cast<SoMiraboViewer*>(data);
    if (self->m_highlighting || QThread::currentThread() != self->thread())
        return; // nobody picked
    const mirabo::Frame frame;
    Q_EMIT self->picked(path);
}

void SoMiraboViewer::setUp(SoMiraboMainFrame* frame, bool standalone)
{
    m_frame = frame;
    if (standalone)
        createExaminer();
    m_highlightMode = mirabo::readHighlightSelectedNode() ? OUTLINED : NOT_HIGHLIGHTED;
    if (!isEmbeddedLaunch()) {
        MrbServicesImpl* services = MrbServicesImpl::getInstance();
        m_highlightAction = std::make_unique<SoLineHighlightRenderAction>();
        m_highlightAction->setVisible(m_highlightMode == OUTLINED);
        if (standalone)
            services->getSceneManager()->setGLRenderAction(m_highlightAction.get());
        services->watchSelection(m_highlightMode == OUTLINED ? m_selection.get() : nullptr);
    }
    if (m_examiner)
        m_examiner->setSceneGraph(m_selection.get());
    createDocks();
}

void SoMiraboViewer::createExaminer()
{
    m_viewerDock = new QDockWidget(tr("Kalmyr SceneViewer"), m_frame);
    m_viewerDock->setObjectName("dockSceneViewer");
    m_viewerDock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    m_examiner = std::make_unique<SoQtExaminerViewer>(m_viewerDock, "Examiner", true,
                                                      SoQtViewer::BUILD_ALL, SoQtViewer::BROWSER);
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    services->setRenderArea(m_examiner->getGuiRenderArea());
    services->setSceneManager(m_examiner->getSceneManager());
    m_examiner->setBackgroundColor(kViewerBackground);
    m_viewerDock->setWidget(m_examiner->getWidget());
    m_frame->setCentralWidget(m_viewerDock);
}

QWidget* SoMiraboViewer::viewerWidget() const
{
    const SoGuiRenderArea* area = MrbServicesImpl::getInstance()->getRenderArea();
    return m_examiner ? m_examiner->getWidget() : SoQtRenderArea::getWidgetOf(area);
}

void SoMiraboViewer::bringToFront()
{
    const mirabo::Frame frame;
    QWidget* widget = viewerWidget();
    if (!widget)
        return;
    if (m_viewerDock)
        m_viewerDock->show();
    QWidget* window = widget->window();
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    SoQt::show(window);
    widget->setFocus();
}

QDockWidget* SoMiraboViewer::addDock(const char* name, const QString& title)
{
    auto* dock = new QDockWidget(title, m_frame);
    dock->setObjectName(name);
    return dock;
}

void SoMiraboViewer::createDocks()
{
    m_treeDock = addDock("dockMainWin", tr("Tree View"));
    m_overviewDock = addDock("dockNodeOverview", tr("Node Overview"));
    m_watchDock = addDock("dockFieldWatch", tr("Field Watch"));
    m_frame->setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    m_frame->addDockWidget(Qt::LeftDockWidgetArea, m_treeDock);
    m_frame->addDockWidget(Qt::BottomDockWidgetArea, m_overviewDock);
    m_frame->addDockWidget(Qt::BottomDockWidgetArea, m_watchDock);
    m_frame->splitDockWidget(m_overviewDock, m_watchDock, Qt::Horizontal);
}

void SoMiraboViewer::setScene(SoNode* root, bool resetCommands)
{
    const mirabo::Frame frame;
    const SoRef<SoNode> kept(root);
    if (!mirabo::GraphReading()) {
        // An editor in another thread may be waiting for this one.
        mirabo::callLater(this, mirabo::GraphReading::kRetryMilliseconds,
                          [this, kept, resetCommands] { setScene(kept.get(), resetCommands); });
        return;
    }
    Q_EMIT sceneAboutToChange();
    if (resetCommands)
        Q_EMIT undoResetRequested();
    replaceScene(root);
    Q_EMIT sceneChanged(root);
    // The tree has made its first row current; nobody has chosen the scene as a whole yet.
    const mirabo::GraphReading graph;
    m_selection->deselectAll();
}

void SoMiraboViewer::replaceScene(SoNode* root)
{
    const mirabo::GraphReading graph;
    if (m_highlightMode == OUTLINED)
        m_selection->deselectAll();
    m_root.reset();
    m_selection->removeAllChildren();
    if (!root)
        return;
    m_root.reset(root);
    m_selection->addChild(root);
    if (m_examiner)
        m_examiner->setSceneGraph(m_selection.get());
}

void SoMiraboViewer::setHighlightMode(HighlightMode mode)
{
    const mirabo::Frame frame;
    if (mode == m_highlightMode)
        return;
    m_highlightMode = mode;
    if (mode == NOT_HIGHLIGHTED)
        m_selection->deselectAll();
    if (m_highlightAction)
        m_highlightAction->setVisible(mode == OUTLINED);
    MrbServicesImpl::getInstance()->watchSelection(mode == OUTLINED ? m_selection.get() : nullptr);
    refresh();
}

void SoMiraboViewer::highlight(const SoPath* path)
{
    const mirabo::Frame frame;
    const mirabo::GraphReading graph;
    if (m_highlightMode != OUTLINED || !graph)
        return;
    m_highlighting = true;
    m_selection->deselectAll();
    if (path && !path->isEmpty() && path->getHead() == m_root.get()) {
        const SoRef<SoPath> below(new SoPath(m_selection.get()));
        below->append(path->getHead(), 0);
        for (int i = 1; i < path->getLength(); ++i)
            below->append(path->getNode(i), path->getIndex(i));
        m_selection->select(below.get());
    }
    m_highlighting = false;
}

void SoMiraboViewer::refresh()
{
    const mirabo::Frame frame;
    if (m_examiner)
        m_examiner->scheduleRedraw();
}

bool SoMiraboViewer::openDroppedFile(const QString& fileName)
{
    const mirabo::Frame frame;
    if (m_reading)
        return false;
    LiveInput input(m_frame);
    mirabo::ReadMessages untold;
    return open(input, fileName, untold) && mayReplaceScene() && m_frame && readScene(input);
}

bool SoMiraboViewer::openSceneFile(const QString& fileName)
{
    const mirabo::Frame frame;
    if (m_reading)
        return false; // asked for by a timer of the host while a file is being read
    LiveInput input(m_frame);
    mirabo::ReadMessages messages(fileName);
    if (open(input, fileName, messages))
        return readScene(input);
    setReadMessages(messages);
    const QString error = firstError(messages);
    mirabo::showWarning(m_frame, "MiraboReadFile",
                        error.isEmpty() ? tr("Can't load '%1'.").arg(fileName) : error);
    return false;
}

void SoMiraboViewer::setReadMessages(const mirabo::ReadMessages& messages)
{
    m_messages = messages;
    Q_EMIT readMessagesChanged(m_messages);
}

void SoMiraboViewer::addReadMessages(const mirabo::ReadMessages& messages)
{
    const mirabo::Frame frame;
    if (m_reading) {
        m_gathered.add(messages);
        return;
    }
    m_messages.add(messages);
    Q_EMIT readMessagesChanged(m_messages);
}

SoNode* SoMiraboViewer::read(LiveInput& input)
{
    const mirabo::ReadErrorCollector collector(m_gathered);
    input.setMessages(&m_gathered);
    SoNode* root = input.isFileVRML2() ? static_cast<SoNode*>(SoDB::readAllVRML(&input))
                                       : SoDB::readAll(&input);
    input.setMessages(nullptr);
    return root;
}

bool SoMiraboViewer::readScene(LiveInput& input)
{
    const mirabo::Frame frame;
    const SbString name = input.getCurFileName();
    if (name.isEmpty() || m_reading)
        return false;
    const SbString directory = SbFileHelper::getDirName(name);
    SoInput::removeDirectory(directory);
    SoInput::addDirectoryLast(directory);
    m_gathered = mirabo::ReadMessages(toQString(name));
    const SbTime start = SbTime::monotonic();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_reading = true;
    const SoRef<SoNode> root(read(input));
    m_reading = false;
    input.closeFile();
    QApplication::restoreOverrideCursor();
    if (!m_frame)
        return false; // the host has deleted the window meanwhile
    setReadMessages(std::exchange(m_gathered, {}));
    const QString error = firstError(m_messages);
    if (root) {
        const bool isReload = m_currentFile == toQString(name);
        const auto restore =
            isReload && m_keepForReload ? m_keepForReload() : std::function<void()>();
        setCurrentFile(toQString(name));
        setScene(root.get(), true);
        if (restore && m_root.get() == root.get())
            restore();
        if (!m_frame)
            return true; // whoever was told of the scene has deleted it
        addRecentFile(toQString(name));
        tellLoaded((SbTime::monotonic() - start).getValue());
    }
    if (!error.isEmpty())
        mirabo::showWarning(m_frame, "MiraboReadFile", error);
    return static_cast<bool>(root);
}

void SoMiraboViewer::tellLoaded(double seconds)
{
    const QString name = QFileInfo(m_currentFile).fileName();
    QString text = tr("%1 loaded in %2 s").arg(name, QString::number(seconds, 'f', 2));
    if (const mirabo::ReadMessage* warning = m_messages.first(mirabo::ReadMessage::Warning)) {
        mirabo::ReadMessage shown = *warning;
        shown.file = QFileInfo(shown.file).fileName();
        text += ". " + shown.toText();
    }
    const int numMore = m_messages.count(mirabo::ReadMessage::Warning) - 1;
    if (numMore > 0)
        text += tr(" (and %n more)", nullptr, numMore);
    m_frame->statusBar()->showMessage(text, kMessageMs);
}

void SoMiraboViewer::setCurrentFile(const QString& fileName)
{
    m_currentFile = fileName;
    if (!m_frame)
        return;
    m_frame->setWindowTitle(fileName.isEmpty() ? QString("Mirabo")
                                               : QString("Mirabo -- %1").arg(fileName));
    Q_EMIT fileChanged();
}

bool SoMiraboViewer::closeScene()
{
    const mirabo::Frame frame;
    if (!mayReplaceScene() || !m_frame)
        return false;
    setReadMessages({});
    setCurrentFile(QString());
    const SoRef<SoNode> empty(new SoSeparator);
    setScene(empty.get(), true);
    return true;
}

void SoMiraboViewer::reopenRecentFile(int index)
{
    const mirabo::Frame frame;
    if (index >= m_recentFiles.paths().size() || !mayReplaceScene() || !m_frame)
        return;
    const QString path = m_recentFiles.paths().value(index); // a save may have changed them
    if (QFileInfo::exists(path))
        openSceneFile(path);
    else
        mirabo::showCritical(
            m_frame, "Mirabo -- Load File",
            QString("Can't load '%1'. \n This file doesn't exist anymore.").arg(path));
}

void SoMiraboViewer::adoptFile(const QString& fileName)
{
    setCurrentFile(fileName);
    if (!fileName.isEmpty())
        addRecentFile(fileName);
}

void SoMiraboViewer::addRecentFile(const QString& path)
{
    m_recentFiles.add(path);
    if (!m_frame)
        return;
    m_frame->showRecentFiles(m_recentFiles.paths());
}

void SoMiraboViewer::readSettings()
{
    using namespace mirabo;
    const int width = readInt(kGeometry + "/WindowWidth", kUnsetSize);
    const int height = readInt(kGeometry + "/WindowHeight", kUnsetSize);
    const int x = readInt(kGeometry + "/WindowX", 0);
    const int y = readInt(kGeometry + "/WindowY", 0);
    const QString layout = readText(kGeometry + "/MainWindowLayout", QString());
    m_recentFiles.read();
    m_frame->showRecentFiles(m_recentFiles.paths());
    m_frame->move(x, y);
    if (layout.isEmpty()) {
        // The size for "restore down", and for a desktop without a window manager.
        m_frame->resize(kFirstSize.boundedTo(m_frame->screen()->availableSize()));
        m_frame->setWindowState(Qt::WindowMaximized);
        new mirabo::FirstLayout(m_frame); // the window owns it
        return;
    }
    m_frame->resize(width, height);
    m_frame->restoreState(QByteArray::fromBase64(layout.toLatin1()));
}

void SoMiraboViewer::writeSettings()
{
    if (!m_frame)
        return;
    QSettings& store = mirabo::settings();
    store.setValue(kGeometry + "/WindowWidth", m_frame->width());
    store.setValue(kGeometry + "/WindowHeight", m_frame->height());
    store.setValue(kGeometry + "/WindowX", m_frame->x());
    store.setValue(kGeometry + "/WindowY", m_frame->y());
    store.setValue(kGeometry + "/MainWindowLayout",
                   QString::fromLatin1(m_frame->saveState().toBase64()));
    m_recentFiles.write();
    store.sync();
}
