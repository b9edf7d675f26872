#include "mirabo/launch/SoMiraboImpl.h"

#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/extension/MrbShellImpl.h"
#include "mirabo/launch/Configuration.h"
#include "mirabo/launch/CriticalError.h"
#include "mirabo/launch/QtApplication.h"
#include "mirabo/launch/RenderAreaFinder.h"
#include "mirabo/launch/Session.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <QCoreApplication>
#include <QLocale>

#include <array>

namespace {

/// The optional modules of the toolkit, so that a scene may hold any of their nodes; finished in
/// the reverse order. One that is not installed is left out.
constexpr std::array kModules{"Vrml97",   "Nodekits", "Animation", "Copies",
                              "Draggers", "Manips",   "Rendering"};

struct Run {
    bool running = false;
    bool finishPending = false;
    bool sensorsServed = false; ///< SoQt was initialised by this run
    mirabo::QtApplication application;
    std::unique_ptr<mirabo::Session> session;
};

Run& run()
{
    static Run r;
    return r;
}

void tearDown();

/// False when the tool runs already.
bool prepare(bool standalone)
{
    Run& r = run();
    if (r.running)
        return false;
    kalmyr::initGui();
    mirabo::registerBuiltInConfiguration();
    // A run whose end is pending goes on with what it has. Where that is of no use everything is
    // made anew, and the end stays pending all the same.
    if (r.session && !r.session->canServe(standalone)) {
        tearDown();
        r.finishPending = true;
    }
    return true;
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

void setPreferences()
{
    if (!SoPreferences::hasValue("KMR_DEBUG_STACKERROR"))
        SoPreferences::setValue("KMR_DEBUG_STACKERROR", "1");
    SoPreferences::setValue("KMR_STACKWALKER_HTML_OUTPUT", "1");
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

/// What a run needs around its scene; a start while the end of the last run is pending finds it.
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
    QLocale::setDefault(QLocale::c()); // numbers in field texts have a point
    mirabo::installCriticalErrorReport();
    for (const char* module : kModules)
        TvSymTool::initModule(module);
    r.session = std::make_unique<mirabo::Session>(frame, standalone);
}

void commonStart(const QStringList& arguments, SoSceneManager* manager)
{
    Run& r = run();
    r.running = true;
    setPreferences();
    if (!r.session)
        openSession();
    if (!manager)
        r.session->showScene(defaultScene().get());
    if (arguments.size() > 1)
        r.session->openFile(arguments.last());
    readConfiguration();
}

/// A timer of the host may call from within the reading of a file.
bool isReading()
{
    return SoMiraboViewer::exists() && SoMiraboViewer::instance()->isReading();
}

void tearDown()
{
    Run& r = run();
    r.finishPending = false;
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
    mirabo::releaseSettings();
    mirabo::forgetCategoryIcons();
    mirabo::removeCriticalErrorReport();
    r.running = false;
    for (auto module = kModules.rbegin(); module != kModules.rend(); ++module)
        TvSymTool::finishModule(*module);
    if (r.sensorsServed)
        SoQt::finish();
    r.sensorsServed = false;
    r.application.release();
}

} // namespace

void SoMiraboImpl::startNode(SoNode* root, QWidget* parent)
{
    if (!prepare(false))
        return;
    const SoRef<SoNode> kept(root);
    attachTo(nullptr);
    if (!run().application.obtain())
        return;
    MrbShellImpl::getInstance(parent);
    commonStart({}, nullptr);
    run().session->showScene(root);
    MrbShellImpl::getInstance()->getMainFrame()->show();
}

void SoMiraboImpl::startSceneManager(SoSceneManager* manager, QWidget* parent)
{
    if (!prepare(false))
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
    commonStart({}, manager);
    run().session->showScene(manager->getSceneGraph());
    MrbShellImpl::getInstance()->getMainFrame()->show();
}

void SoMiraboImpl::startRenderArea(SoGuiRenderArea* area)
{
    if (run().running)
        return;
    MrbServicesImpl::getInstance()->setRenderArea(area);
    startSceneManager(area->getSceneManager(), nullptr);
}

void SoMiraboImpl::startStandalone(int& argc, char** argv)
{
    if (!prepare(true))
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
    commonStart(QCoreApplication::arguments(), nullptr);
    if (!SoPreferences::getBool("KMR_DISABLE_MAINLOOP", false))
        MrbShellImpl::getInstance()->getMainFrame()->show();
}

void SoMiraboImpl::stop()
{
    requestFinish();
    if (!isReading())
        tearDown();
}

bool SoMiraboImpl::isRunning()
{
    return run().running;
}

int SoMiraboImpl::processEvents()
{
    Run& r = run();
    if (r.running && r.application.isOwned())
        QCoreApplication::processEvents();
    if (r.finishPending && !isReading())
        tearDown();
    return r.running ? 1 : 0;
}

void SoMiraboImpl::setPickAction(const SbViewportRegion& region, SbVec2s cursor)
{
    if (run().running && run().session)
        run().session->pick(region, cursor);
}

void SoMiraboImpl::requestFinish()
{
    run().running = false;
    run().finishPending = true;
}
