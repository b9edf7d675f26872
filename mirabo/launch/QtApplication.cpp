#include "mirabo/launch/QtApplication.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoDynamicLibManager.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/qt/SoQt.h>

#include <QApplication>
#include <QFileInfo>
#include <QThread>

#include <new>

namespace mirabo {

namespace {

// Qt keeps references on both for the life of the application.
int s_argc = 1;
char s_name[] = "qAppInstance";
char* s_argv[] = {s_name, nullptr};

} // namespace

QtApplication::QtApplication() = default;

// Statics are destroyed too late for a Qt application: release() is the only end of our own.
QtApplication::~QtApplication() = default;

bool QtApplication::obtain()
{
    return obtain(s_argc, s_argv);
}

bool QtApplication::obtain(int& argc, char** argv)
{
    if (QCoreApplication::instance()) {
        m_owned = m_owned && QCoreApplication::instance() == m_application;
        if (qobject_cast<QApplication*>(QCoreApplication::instance()))
            return true;
        SoDebugError::post("SoMirabo::start", "the application object of the host has no widgets: "
                                              "it must be a QApplication");
        return false;
    }
    if (argc < 1 || !argv)
        return obtain();
    preparePluginPath();
    // Qt would end the process.
    if (const SbString cause = SoQt::whyNoDisplay(argc, argv); !cause.isEmpty()) {
        SoDebugError::post("SoMirabo::start", "%s", cause.getString());
        return false;
    }
    m_owned = true;
    m_application = new (std::nothrow) QApplication(argc, argv);
    if (m_application)
        m_application->setQuitOnLastWindowClosed(false);
    m_owned = m_application != nullptr;
    return m_owned;
}

void QtApplication::preparePluginPath()
{
    if (QFileInfo::exists("qt.conf"))
        return;
    if (!SoPreferences::getValue("QT_QPA_PLATFORM_PLUGIN_PATH").isEmpty())
        return;
    const SbString library = SoDynamicLibManager::getLibraryFromSymbol(&SbFileHelper::getDirName);
    const SbString directory = SbFileHelper::toUnixPath(SbFileHelper::getDirName(library));
    if (SbFileHelper::isAccessible(directory))
        QCoreApplication::addLibraryPath(QString::fromUtf8(directory.getString()));
}

void QtApplication::release()
{
    if (m_owned && QCoreApplication::instance()) {
        if (QThread::currentThread()->loopLevel() > 0)
            return;
        delete m_application;
    }
    m_application = nullptr;
    m_owned = false;
}

} // namespace mirabo
