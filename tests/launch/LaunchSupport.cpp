#include "LaunchSupport.h"

#include <QAction>
#include <QDir>
#include <QDropEvent>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QTest>
#include <QTimer>
#include <QTreeWidgetItemIterator>
#include <QUrl>
#include <QWindow>

#include <fstream>

void LaunchTest::SetUpTestSuite()
{
    static const QTemporaryDir store;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, store.path());
    QDir::setCurrent(store.path()); // for files without a folder
}

void LaunchTest::SetUp()
{
    SoQt::init(nullptr); // the host serves the toolkit's sensors
    m_topLevels = QApplication::topLevelWidgets().size();
}

namespace {

/// A window that went while a button was down leaves it down for the tests that follow.
void releaseMouse()
{
    QWindow window;
    window.create();
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton})
        if (QGuiApplication::mouseButtons() & button)
            QTest::mouseRelease(&window, button);
}

} // namespace

void LaunchTest::TearDown()
{
    hooks().m_mirabo_stop();
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(QApplication::topLevelWidgets().size(), m_topLevels);
    pass();
    releaseMouse();
    SoQt::finish();
    QSettings("Mirabo", "MiraboViewer").clear();
}

QMainWindow* LaunchTest::window()
{
    QMainWindow* found = nullptr;
    for (QWidget* widget : QApplication::allWidgets()) {
        if (widget->objectName() != "SoMiraboMainFrame")
            continue;
        EXPECT_EQ(found, nullptr) << "two windows";
        found = qobject_cast<QMainWindow*>(widget);
    }
    return found;
}

QTreeWidget* LaunchTest::tree()
{
    auto* dock = window()->findChild<QDockWidget*>("dockMainWin");
    return dock ? qobject_cast<QTreeWidget*>(dock->widget()) : nullptr;
}

int LaunchTest::rowCount()
{
    int count = 0;
    for (QTreeWidgetItemIterator at(tree()); *at; ++at)
        ++count;
    return count;
}

QAction* LaunchTest::action(const QString& text)
{
    for (QAction* one : window()->findChildren<QAction*>())
        if (one->text() == text)
            return one;
    return nullptr;
}

std::string LaunchTest::writeFile(const QString& name, std::string_view content) const
{
    const std::string path = folder.filePath(name).toStdString();
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

void LaunchTest::drop(const std::string& path)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    // Qt gives a drop to the widget that was entered.
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window(), &enter);
    QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window(), &event);
}

QString LaunchTest::messageOf(const std::function<void()>& what)
{
    QString text;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &watch, [&text] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        text += box->windowTitle() + ": " + box->text();
        box->reject();
    });
    watch.start(5);
    what();
    return text;
}

void LaunchTest::openRecent(const std::string& path)
{
    const auto* menu = window()->findChild<QMenu*>("RecentFilesMenu");
    ASSERT_NE(menu, nullptr);
    QAction* entry = menu->actions().first();
    entry->setData(QString::fromStdString(path));
    entry->trigger();
}
