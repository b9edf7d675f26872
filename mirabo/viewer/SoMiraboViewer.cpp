#include "mirabo/viewer/SoMiraboViewer.h"

#include "mirabo/core/Messages.h"
#include "mirabo/extender/private/EventFrames.h"
#include "mirabo/extender/private/Frame.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extender/private/Later.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/viewer/NavigationSettings.h"
#include "mirabo/viewer/SceneClipboard.h"
#include "mirabo/viewer/WindowSettings.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>

#include <QClipboard>
#include <QDockWidget>
#include <QGuiApplication>
#include <QMimeData>

namespace {

SoMiraboViewer* s_instance = nullptr;

/// A calm dark tone on which shaded objects of any colour stand out.
const SbColor kViewerBackground(0.20f, 0.23f, 0.28f);

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

SoMiraboViewer::SoMiraboViewer()
    : m_highlighter([this](const SoPath* path) { Q_EMIT picked(path); }),
      m_document(listener()),
      m_saving(savedDocument()),
      m_export({[this]() -> QMainWindow* { return m_frame; }, [this] { return getCurrentFile(); }}),
      m_printing(
          {[this]() -> QMainWindow* { return m_frame; }, [this] { return getCurrentFile(); }})
{
    mirabo::EventFrames::addRoot(this);
}

SoMiraboViewer::~SoMiraboViewer()
{
    mirabo::EventFrames::removeRoot(this);
}

mirabo::Document::Listener SoMiraboViewer::listener()
{
    return {[this] { return confirmUnsavedChanges(); },
            [this](SoNode* root, bool isReload) { showRead(root, isReload); },
            [this] { Q_EMIT fileChanged(); },
            [this](const mirabo::ReadMessages& messages) { Q_EMIT readMessagesChanged(messages); },
            [this](const QStringList& paths) {
                if (m_frame)
                    m_frame->showRecentFiles(paths);
            }};
}

mirabo::SceneSaving::Document SoMiraboViewer::savedDocument()
{
    return {[this]() -> QWidget* { return m_frame; },
            [this] { return wholeScene(); },
            [this] { return getCurrentFile(); },
            [this](const QString& fileName) { m_document.adoptFile(fileName); },
            [this] { Q_EMIT sceneSaved(); },
            [this](SoNode* converted) { setScene(converted, true); },
            [this] { return m_state.isVrml && m_state.isVrml(); },
            [this] { return isModified(); }};
}

void SoMiraboViewer::setUp(SoMiraboMainFrame* frame, bool standalone)
{
    m_frame = frame;
    m_document.setWindow(frame);
    if (standalone)
        createExaminer();
    m_highlighter.setOn(mirabo::readHighlightSelectedNode());
    readOutlineStyle();
    if (!isEmbeddedLaunch()) {
        MrbServicesImpl* services = MrbServicesImpl::getInstance();
        m_highlighter.install(standalone ? services->getSceneManager() : nullptr);
        services->watchSelection(m_highlighter.isOn() ? getSelectionNode() : nullptr);
    }
    if (m_examiner)
        m_examiner->setSceneGraph(getSelectionNode());
    m_docks.emplace(frame);
}

void SoMiraboViewer::forgetWindow()
{
    m_frame = nullptr;
    m_document.setWindow(nullptr);
}

void SoMiraboViewer::createExaminer()
{
    m_viewerDock = mirabo::ViewerDocks::addViewerDock(m_frame);
    m_examiner = std::make_unique<SoQtExaminerViewer>(m_viewerDock, "Examiner", true,
                                                      SoQtViewer::BUILD_ALL, SoQtViewer::BROWSER);
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    services->setRenderArea(m_examiner->getGuiRenderArea());
    services->setSceneManager(m_examiner->getSceneManager());
    m_examiner->setBackgroundColor(kViewerBackground);
    m_examiner->getGuiViewer()->setClickPicking(true);
    mirabo::readNavigationSettings(*m_examiner);
    m_viewerDock->setWidget(m_examiner->getWidget());
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
    m_highlighter.deselect();
    Q_EMIT selectionChanged();
}

void SoMiraboViewer::replaceScene(SoNode* root)
{
    m_highlighter.setScene(root);
    if (root && m_examiner)
        m_examiner->setSceneGraph(getSelectionNode());
}

void SoMiraboViewer::readOutlineStyle()
{
    const QColor color = mirabo::readOutlineColor();
    m_highlighter.setStyle(SbColor(static_cast<float>(color.redF()),
                                   static_cast<float>(color.greenF()),
                                   static_cast<float>(color.blueF())),
                           static_cast<float>(mirabo::readOutlineWidth()));
}

void SoMiraboViewer::setHighlightMode(HighlightMode mode)
{
    const mirabo::Frame frame;
    if (mode == getHighlightMode())
        return;
    m_highlighter.setOn(mode == OUTLINED);
    if (canHighlight())
        MrbServicesImpl::getInstance()->watchSelection(mode == OUTLINED ? getSelectionNode()
                                                                        : nullptr);
    refresh();
}

void SoMiraboViewer::highlight(const SoPath* path)
{
    const mirabo::Frame frame;
    m_highlighter.highlight(path);
    Q_EMIT selectionChanged();
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
    return m_document.openDropped(fileName);
}

bool SoMiraboViewer::openSceneFile(const QString& fileName)
{
    const mirabo::Frame frame;
    return m_document.open(fileName);
}

bool SoMiraboViewer::restoreScene(const QString& copy, const QString& fileName)
{
    const mirabo::Frame frame;
    return m_document.restore(copy, fileName);
}

bool SoMiraboViewer::readScene(LiveInput& input)
{
    const mirabo::Frame frame;
    return m_document.read(input);
}

void SoMiraboViewer::showRead(SoNode* root, bool isReload)
{
    const auto restore = isReload && m_keepForReload ? m_keepForReload() : std::function<void()>();
    setScene(root, true);
    if (restore && getScene() == root)
        restore();
}

void SoMiraboViewer::addReadMessages(const mirabo::ReadMessages& messages)
{
    const mirabo::Frame frame;
    m_document.addMessages(messages);
}

bool SoMiraboViewer::closeScene()
{
    const mirabo::Frame frame;
    if (!m_document.close())
        return false;
    const SoRef<SoNode> empty(new SoSeparator);
    setScene(empty.get(), true);
    return true;
}

void SoMiraboViewer::reopenRecentFile(int index)
{
    const mirabo::Frame frame;
    m_document.reopen(index);
}

SoRef<SoPath> SoMiraboViewer::pathToCopy() const
{
    if (getSelectionNode()->getNumSelected() > 0)
        return SoRef<SoPath>(getSelectionNode()->getPath(0));
    SoNode* current = m_edits.currentNode ? m_edits.currentNode() : nullptr;
    return SoRef<SoPath>(current ? new SoPath(current) : nullptr);
}

bool SoMiraboViewer::canCopy() const
{
    const mirabo::GraphReading graph;
    return graph && pathToCopy();
}

bool SoMiraboViewer::copySelection()
{
    const mirabo::Frame frame;
    std::optional<QByteArray> text;
    {
        const mirabo::GraphReading graph;
        const SoRef<SoPath> path = graph ? pathToCopy() : nullptr;
        if (!path)
            return false;
        text = mirabo::pathText(*path);
    }
    if (text)
        QGuiApplication::clipboard()->setMimeData(mirabo::sceneMimeData(*text).release());
    else
        mirabo::showWarning(m_frame, "Copy", "Can't copy data to clipboard. Out of memory");
    return text.has_value();
}

void SoMiraboViewer::cutSelection()
{
    const mirabo::Frame frame;
    SoRef<SoPath> path;
    {
        const mirabo::GraphReading graph;
        path = graph ? pathToCopy() : nullptr;
    }
    if (path && copySelection() && m_edits.cut && m_edits.cut(*path))
        m_highlighter.deselect();
}

bool SoMiraboViewer::pasteClipboard()
{
    const mirabo::Frame frame;
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    const SoRef<SoNode> node = data ? mirabo::readPastedNode(*data) : nullptr;
    return node && m_edits.addBeside && m_edits.addBeside(node.get());
}

mirabo::SceneWriter::Content SoMiraboViewer::wholeScene() const
{
    const bool isAlone = getSelectionNode()->getNumChildren() <= 1;
    return isAlone ? mirabo::SceneWriter::Content{SoRef<SoNode>(getScene())}
                   : mirabo::SceneWriter::Content{SoRef<SoNode>(getSelectionNode()), true};
}

bool SoMiraboViewer::saveScene()
{
    const mirabo::Frame frame;
    return m_saving.save();
}

bool SoMiraboViewer::saveSceneAs(SoNode* node)
{
    const mirabo::Frame frame;
    return m_saving.saveAs(node);
}

bool SoMiraboViewer::writeScene(SoNode* node, const QString& fileName,
                                mirabo::SceneFileFormat format, bool showInViewer)
{
    const mirabo::Frame frame;
    return m_saving.write(node, fileName, format, showInViewer);
}

void SoMiraboViewer::exportImage()
{
    const mirabo::Frame frame;
    m_export.run();
}

void SoMiraboViewer::printFile()
{
    const mirabo::Frame frame;
    m_printing.run();
}

bool SoMiraboViewer::confirmUnsavedChanges()
{
    const mirabo::Frame frame;
    return m_saving.confirmUnsavedChanges();
}

void SoMiraboViewer::addRecentFile(const QString& path)
{
    m_document.addRecentFile(path);
}

void SoMiraboViewer::readSettings()
{
    m_document.readRecentFiles();
    mirabo::readWindowSettings(*m_frame);
}

void SoMiraboViewer::writeSettings()
{
    if (!m_frame)
        return;
    const mirabo::SettingsChange change;
    m_document.writeRecentFiles();
    mirabo::writeWindowSettings(*m_frame);
    if (m_examiner)
        mirabo::writeNavigationSettings(*m_examiner);
}
