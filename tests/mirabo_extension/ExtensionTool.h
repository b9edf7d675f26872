#pragma once

#include "support/ErrorGuard.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbExtension.h"
#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/extension/MrbShellImpl.h"

#include <kalmyr/io/SoDB.h>

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QRegularExpression>

#include <gtest/gtest.h>

/// A tool with window, hub, services and shell, and no panels, for extensions to run in.
class ExtensionTool : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        qputenv("KMR_MIRABO_PLUGIN_PATH", MIRABO_LIBRARY_DIR "/test-plugins");
        qApp->setProperty("log", QStringList());
        qApp->setProperty("failAt", QString());
        MrbServicesImpl* services = MrbServicesImpl::getInstance();
        MrbShellImpl::getInstance();
        frame()->setUp(services->getCommandManager(), true);
        services->getCommandManager()->undoStack().clear();
        services->setMainWindow(frame());
        frame()->show();
    }

    void TearDown() override
    {
        MrbPluginsManager::releaseInstance();
        MrbServicesImpl::destroyInstance();
        MrbShellImpl::destroyInstance();
        qunsetenv("KMR_MIRABO_PLUGIN_PATH");
    }

    static SoMiraboMainFrame* frame() { return MrbShellImpl::getInstance()->getMainFrame(); }
    static MrbServicesImpl* services() { return MrbServicesImpl::getInstance(); }
    static mirabo::UndoStack& undoStack() { return services()->getCommandManager()->undoStack(); }
    static MrbPluginsManager* manager() { return MrbPluginsManager::getInstance(); }

    /// A configuration with these active extensions in its default profile "On", and one "Off".
    static QString configuration(const QString& extensions,
                                 const QString& plugin = "TestEverything")
    {
        return QString("<configuration><plugins><loadPlugin file=\"%1\"/></plugins>"
                       "<profiles default=\"On\"><profile name=\"On\">%2</profile>"
                       "<profile name=\"Off\"/></profiles></configuration>")
            .arg(plugin, extensions);
    }
    static QString active(const QString& name, const QString& controlled = {},
                          const char* element = "activeExtension")
    {
        return QString("<%1 plugin=\"TestEverything\" extension=\"%2\">%3</%1>")
            .arg(element, name, controlled);
    }
    static QString controlled(const QString& name)
    {
        return active(name, {}, "controlledExtension");
    }

    static QPointer<MrbExtension> find(const QString& name)
    {
        for (MrbExtension* extension : manager()->getExtensions())
            if (extension->getInfo().name == name)
                return extension;
        return nullptr;
    }

    /// What the fixtures did, in order; forgotten with the call.
    static QStringList takeLog()
    {
        const QStringList log = qApp->property("log").toStringList();
        qApp->setProperty("log", QStringList());
        return log;
    }
    static void failAt(const QString& where) { qApp->setProperty("failAt", where); }

    /// Every widget and action of the fixtures in the whole application.
    static QStringList placed()
    {
        QStringList names;
        for (const QWidget* widget : QApplication::allWidgets()) {
            names << widget->objectName();
            for (const QAction* action : widget->actions())
                names << action->objectName();
        }
        names.removeDuplicates();
        return names.filter(QRegularExpression("^(everything:|view:)"));
    }

    static QMenu* menu(const QString& title)
    {
        for (const QAction* action : frame()->menuBar()->actions())
            if (action->text().remove('&') == title)
                return action->menu();
        return nullptr;
    }
    static QStringList entries(const QWidget* holder)
    {
        QStringList texts;
        for (const QAction* action : holder->actions())
            texts << (action->isSeparator() ? QString("-") : action->text().remove('&'));
        return texts;
    }
};
