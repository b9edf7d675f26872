#pragma once

#include "support/ErrorGuard.h"
#include "support/HostScene.h"

#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/qt/SoQt.h>

#include <QApplication>
#include <QDockWidget>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <functional>
#include <string>

#include <gtest/gtest.h>

class QAction;

/// A host with Qt and a tool that is reached through the toolkit's hooks only.
class LaunchTest : public testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;
    /// Ends the tool; nothing of it may be left.
    void TearDown() override;

    static SoLibMirabo& hooks() { return *SoLibMirabo::instance(); }
    /// The tool's window, shown or not; null while there is none.
    static QMainWindow* window();
    static QTreeWidget* tree();
    /// Number of rows at all depths.
    static int rowCount();
    /// The action of the window with this text.
    static QAction* action(const QString& text);
    static void pass() { QCoreApplication::processEvents(); }

    std::string writeFile(const QString& name, std::string_view content) const;
    /// Drops a file on the window.
    static void drop(const std::string& path);
    /// Does something that shows one message box, and returns its title and text.
    static QString messageOf(const std::function<void()>& what);
    /// Opens a file by the menu of recent files.
    static void openRecent(const std::string& path);

    QTemporaryDir folder;
    SoRef<SoSeparator> scene = support::hostScene();

private:
    int m_topLevels = 0;
};
