#include "mirabo/launch/SoMiraboImpl.h"

#include "mirabo/core/Modal.h"
#include "mirabo/core/RecentFiles.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/extender/private/Frame.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/extension/MrbShellImpl.h"
#include "mirabo/launch/Configuration.h"
#include "mirabo/launch/CriticalError.h"
#include "mirabo/launch/ProcessSettings.h"
#include "mirabo/launch/QtApplication.h"
#include "mirabo/launch/RenderAreaFinder.h"
#include "mirabo/launch/Session.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>
#include <QTimer>

#include <array>

using mirabo::Frame;

namespace {

/// Between two looks whether a loop has ended that was entered while tear-down waits.
constexpr int kPatienceMs = 50;

/// The optional modules of the toolkit, so that a scene may hold any of their nodes; finished in
/// the reverse order. One that is not installed is left out.
constexpr std::array kModules{"Vrml97",   "Nodekits", "Animation", "Copies",
                              "Draggers", "Manips",   "Rendering", "Plotrel"};

void frameLeft(Frame::Kind outermost);

struct Run {
    bool running = false;
    bool finishPending = false;
    bool tearDownDue = false; ///< as soon as no frame is open; the windows are hidden
    bool tearingDown = false;
    bool sensorsServed = false; ///< SoQt was initialised by this run
    mirabo::ProcessSettings process;
    mirabo::QtApplication application;
    std::unique_ptr<mirabo::Session> session;
};

Run& run()
{
    static Run r;
    return r;
}

/// A call from outside.
struct Entry {
    Entry() { Frame::setLeftCallback(&frameLeft); }

    const bool nested = Frame::isOpen(); ///< inside one of the tool's own calls
    const Frame frame{Frame::Kind::Call};
};

/// From within an event the application object has to stay, if it is the tool's.
void tearDown(bool insideEvent = false);

void refuse(const char* why)
{
    SoDebugError::post("SoMirabo::start", "%s", why);
}

/// A run whose end is pending goes on with what it has. Where that is of no use everything is made
/// anew, and the end stays pending all the same. False when nothing can be made anew now.
bool makeRoom(bool standalone, bool nested)
{
    Run& r = run();
    const bool canServe = !r.session || r.session->canServe(standalone);
    if (r.tearingDown || (nested && !canServe)) {
        refuse("the tool is still being ended: it cannot start from within its own calls");
        return false;
    }
    if (nested && r.tearDownDue) { // it has only been hidden yet, and is shown again
        r.tearDownDue = r.finishPending = false;
        Frame::setEnding(false);
    } else if (!canServe || r.tearDownDue) {
        const bool pending = !r.tearDownDue;
        tearDown();
        r.finishPending = pending;
    }
    return true;
}

/// False, with the cause told, when the tool runs already or cannot start.
bool prepare(bool standalone, bool nested)
{
    const QCoreApplication* application = QCoreApplication::instance();
    if (application && application->thread() != QThread::currentThread()) {
        refuse("called outside of the thread of the Qt application");
        return false;
    }
    kalmyr::initGui();
    mirabo::registerBuiltInConfiguration();
    return makeRoom(standalone, nested);
}

/// Remembers the host's scene manager (null: none), which is told, as is the one it replaces.
void attachTo(SoSceneManager* manager)
{
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    SoSceneManager* old = services->getSceneManager();
    if (old && old != manager && !services->isStandalone())
        old->getImpl()->setOwnMirabo(0);
    services->setStandalone(0);
    services->setSceneManager(manager);
    if (manager)
        manager->getImpl()->setOwnMirabo(1);
}

SoRef<SoNode> defaultScene()
{
    SoRef<SoSeparator> root(new SoSeparator);
    root->addChild(new SoGradientBackground);
    return SoRef<SoNode>(root.get());
}

void readConfiguration()
{
    const mirabo::Configuration configuration = mirabo::findConfiguration();
    MrbPluginsManager::getInstance()->read(configuration.pathOrText, configuration.isFile);
}

/// Surroundings of the scene in a run; a start while the end of the last run is pending finds it.
void openSession()
{
    Run& r = run();
    SoMiraboMainFrame* frame = MrbShellImpl::getInstance()->getMainFrame();
    // The sensors of a host's own loop are served by it; a tool that brings its own Qt, or runs
    // alone, sees to them.
    const bool standalone = MrbServicesImpl::getInstance()->isStandalone() != 0;
    if (standalone || r.application.isOwned()) {
        SoQt::init(frame);
        r.sensorsServed = true;
    }
    r.process.useCLocale(); // numbers in field texts have a point
    mirabo::installCriticalErrorReport();
    TvSymTool::registerModule("Plotrel", &SoPlotrel::init, &SoPlotrel::finish);
    for (const char* module : kModules)
        TvSymTool::initModule(module);
    r.session = std::make_unique<mirabo::Session>(frame, standalone);
}

/// The file that the program had open last, when the user wants it back; empty for none.
QString fileToRestore(const QStringList& arguments)
{
    if (arguments.isEmpty() || !mirabo::readRestoreFile())
        return {}; // not the program by itself
    mirabo::RecentFiles recent;
    recent.read();
    const QString file = recent.paths().value(0);
    return QFileInfo::exists(file) ? file : QString();
}

/// False when the tool has been ended meanwhile, by an extension or a callback of the host.
bool commonStart(const QStringList& arguments, SoSceneManager* manager, bool nested)
{
    Run& r = run();
    r.running = true;
    r.process.recordErrorStacks();
    const bool goesOn = r.session != nullptr;
    if (!goesOn)
        openSession();
    if (!manager)
        r.session->showScene(defaultScene().get());
    const QString file = arguments.size() > 1 ? arguments.last() : fileToRestore(arguments);
    if (r.running && !file.isEmpty())
        r.session->openFile(file);
    // Extensions whose code is on the stack stay as they are.
    if (r.running && !(goesOn && nested))
        readConfiguration();
    return r.running;
}

/// Not inside the loops that were entered since, nor inside of our own calls.
void tearDownIfDue(int loopLevel)
{
    const Run& r = run();
    if (!r.tearDownDue || r.tearingDown || Frame::isOpen())
        return; // the end of the outermost frame asks again
    if (QThread::currentThread()->loopLevel() <= loopLevel)
        tearDown(true);
    else
        QTimer::singleShot(kPatienceMs, QCoreApplication::instance(),
                           [loopLevel] { tearDownIfDue(loopLevel); });
}

/// After a plain call at once; else Qt may be busy with one of our widgets, and it comes with the
/// next pass of the event loop.
void frameLeft(Frame::Kind outermost)
{
    const Run& r = run();
    if (!r.tearDownDue || r.tearingDown)
        return;
    QCoreApplication* application = QCoreApplication::instance();
    if (outermost == Frame::Kind::Call || !application)
        tearDown();
    else
        QMetaObject::invokeMethod(
            application, [level = QThread::currentThread()->loopLevel()] { tearDownIfDue(level); },
            Qt::QueuedConnection);
}

void tearDown(bool insideEvent)
{
    Run& r = run();
    const Frame frame;
    r.tearingDown = true;
    r.running = false;
    r.finishPending = r.tearDownDue = false;
    Frame::setEnding(true);
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    if (SoSceneManager* manager = services->isStandalone() ? nullptr : services->getSceneManager())
        manager->getImpl()->setOwnMirabo(0);
    MrbPluginsManager::getInstance();
    MrbPluginsManager::releaseInstance();
    if (r.session)
        r.session->release();
    MrbServicesImpl::destroyInstance();
    SoMiraboViewer::destroyInstance();
    r.session.reset();
    MrbShellImpl::destroyInstance();
    mirabo::setSettingsListener({});
    mirabo::releaseSettings();
    mirabo::forgetCategoryIcons();
    mirabo::removeCriticalErrorReport();
    r.process.putBack();
    for (auto module = kModules.rbegin(); module != kModules.rend(); ++module)
        TvSymTool::finishModule(*module);
    if (r.sensorsServed)
        SoQt::finish();
    r.sensorsServed = false;
    if (!insideEvent)
        r.application.release();
    // An end that was requested meanwhile has taken place.
    r.tearDownDue = r.finishPending = false;
    Frame::setEnding(false);
    r.tearingDown = false;
}

} // namespace

void SoMiraboImpl::startNode(SoNode* root, QWidget* parent)
{
    if (run().running)
        return;
    if (!root)
        return refuse("there is no node to show");
    const Entry entry;
    if (!prepare(false, entry.nested))
        return;
    const SoRef<SoNode> kept(root);
    attachTo(nullptr);
    if (!run().application.obtain())
        return;
    MrbShellImpl::getInstance(parent);
    if (!commonStart({}, nullptr, entry.nested))
        return;
    run().session->showScene(root);
    if (run().running)
        run().session->show();
}

void SoMiraboImpl::startSceneManager(SoSceneManager* manager, QWidget* parent)
{
    if (run().running)
        return;
    if (!manager)
        return refuse("there is no scene manager to show the scene of");
    const Entry entry;
    if (!prepare(false, entry.nested))
        return;
    attachTo(manager);
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    const SoGuiRenderArea* area = services->getRenderArea();
    if (!area || area->getSceneManager() != manager)
        services->setRenderArea(mirabo::findRenderArea(manager));
    if (!run().application.obtain()) {
        attachTo(nullptr);
        return;
    }
    MrbShellImpl::getInstance(parent);
    if (!commonStart({}, manager, entry.nested))
        return;
    if (services->getSceneManager() == manager) // an extension may have taken it away
        run().session->showScene(manager->getSceneGraph());
    if (run().running)
        run().session->show();
}

void SoMiraboImpl::startRenderArea(SoGuiRenderArea* area)
{
    if (run().running)
        return;
    if (!area || !area->getSceneManager())
        return refuse("there is no render area to show the scene of");
    if (!run().tearingDown)
        MrbServicesImpl::getInstance()->setRenderArea(area);
    startSceneManager(area->getSceneManager(), nullptr);
}

void SoMiraboImpl::startStandalone(int& argc, char** argv)
{
    if (run().running)
        return;
    if (argc < 0 || (argc > 0 && !argv))
        return refuse("there are no arguments, though their number says so");
    const Entry entry;
    if (!prepare(true, entry.nested))
        return;
    if (!run().application.obtain(argc, argv))
        return;
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    if (!run().session) { // else both are those of the window that is still there
        services->setRenderArea(nullptr);
        services->setSceneManager(nullptr);
    }
    services->setStandalone(1);
    if (!SoLibMirabo::isAvailable())
        SoLibMirabo::instance();
    if (!commonStart(QCoreApplication::arguments(), nullptr, entry.nested))
        return;
    if (!SoPreferences::getBool("KMR_DISABLE_MAINLOOP", false))
        run().session->show();
}

void SoMiraboImpl::stop()
{
    Run& r = run();
    const Entry entry;
    requestFinish();
    r.tearDownDue = true;
    if (!entry.nested || r.tearingDown)
        return; // leaving the frame does it; or it is being done
    Frame::setEnding(true);
    mirabo::ModalBase::closeAll();
    if (r.session)
        r.session->hide();
}

bool SoMiraboImpl::isRunning()
{
    return run().running;
}

int SoMiraboImpl::processEvents()
{
    Run& r = run();
    {
        const Entry entry;
        if (r.running && r.application.isOwned())
            QCoreApplication::processEvents();
        if (r.finishPending)
            stop();
    }
    return r.running ? 1 : 0;
}

void SoMiraboImpl::setPickAction(const SbViewportRegion& region, SbVec2s cursor)
{
    const Entry entry;
    if (run().running && run().session)
        run().session->pick(region, cursor);
}

void SoMiraboImpl::requestFinish()
{
    run().running = false;
    run().finishPending = true;
}
