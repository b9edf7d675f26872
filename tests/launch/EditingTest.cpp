#include "LaunchSupport.h"

#include "support/RefusedWriteLock.h"

#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/qt/SoQtRenderArea.h>
#include <kalmyr/shapes/SoCone.h>
#include <mirabo/extender/MrbServices.h>

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QStatusBar>
#include <QTabWidget>
#include <QTest>

namespace {

/// The scene of a host is edited in the window, with mouse and keys.
class EditingTest : public LaunchTest {
protected:
    void start(SoNode* root)
    {
        hooks().m_mirabo_startNode(root);
        window()->resize(1400, 900);
        QApplication::setActiveWindow(window());
        tree()->expandAll();
        pass();
    }
    static QTreeWidgetItem* rowAt(std::initializer_list<int> place)
    {
        QTreeWidgetItem* row = tree()->topLevelItem(0);
        for (const int at : place)
            row = row->child(at);
        return row;
    }
    static QPoint pointOf(QTreeWidgetItem* row)
    {
        tree()->scrollToItem(row);
        pass();
        return (tree()->visualItemRect(row) & tree()->viewport()->rect()).center();
    }
    static void click(QTreeWidgetItem* row)
    {
        tree()->setFocus(Qt::MouseFocusReason);
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, pointOf(row));
        pass();
    }
    static void press(const char* text)
    {
        pass(); // actions are brought up to date once a pass
        ASSERT_TRUE(action(text)->isEnabled()) << text;
        action(text)->trigger();
        pass();
    }
    static bool isEnabled(const char* text)
    {
        pass();
        return action(text)->isEnabled();
    }
    static int depthOfUndo()
    {
        int steps = 0;
        for (; isEnabled("&Undo"); ++steps)
            press("&Undo");
        for (int i = 0; i < steps; ++i)
            press("&Redo");
        return steps;
    }
    std::string text() { return support::writeScene(scene.get()); }
    std::string current()
    {
        pass();
        return tree()->currentItem()->text(0).toStdString();
    }

    static QDialog* addDialog()
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->windowTitle() == "Add Nodes")
                return qobject_cast<QDialog*>(widget);
        return nullptr;
    }
    static QPushButton* addButton()
    {
        for (auto* button : addDialog()->findChildren<QPushButton*>())
            if (button->text() == "&Add")
                return button;
        return nullptr;
    }
    static void type(const QString& name)
    {
        auto* search = addDialog()->findChild<QLineEdit*>();
        QTest::keyClick(search, Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(search, name);
    }
    static bool says(const QString& part)
    {
        for (const auto* label : addDialog()->findChildren<QLabel*>())
            if (label->text().contains(part))
                return true;
        return false;
    }

    /// Texts of the entries of the open context menu, those of menus below it left out.
    static QStringList openMenuAt(const QPoint& point)
    {
        QContextMenuEvent event(QContextMenuEvent::Mouse, point,
                                tree()->viewport()->mapToGlobal(point));
        QCoreApplication::sendEvent(tree()->viewport(), &event);
        QStringList texts;
        if (const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget()))
            for (const QAction* entry : menu->actions())
                if (entry->isVisible() && !entry->isSeparator())
                    texts << QString(entry->text()).remove('&');
        texts.removeAll("Filter...");
        return texts;
    }
    static void choose(const QString& text)
    {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (QAction* entry : menu->actions()) {
            if (QString(entry->text()).remove('&') != text)
                continue;
            menu->setActiveAction(entry);
            QTest::keyClick(menu, Qt::Key_Return);
            pass();
            return;
        }
        FAIL() << text.toStdString() << " is not offered";
    }
};

TEST_F(EditingTest, AddsNodesOneAfterTheOther)
{
    start(scene.get());
    auto* wheel = static_cast<SoSeparator*>(scene->getChild(0));
    const std::string before = text();
    click(rowAt({0}));
    press("&Insert...");
    ASSERT_NE(addDialog(), nullptr);
    EXPECT_TRUE(addDialog()->isVisible());
    EXPECT_TRUE(says("Separator Wheel"));
    type("Shape");
    type("no such type");
    EXPECT_FALSE(addButton()->isEnabled());
    type("SoCone");
    EXPECT_TRUE(addButton()->isEnabled());
    QTest::mouseClick(addButton(), Qt::LeftButton);
    ASSERT_EQ(wheel->getNumChildren(), 3);
    EXPECT_EQ(current(), "Cone");
    EXPECT_EQ(tree()->currentItem()->parent(), rowAt({0})) << "at this occurrence of the two";
    EXPECT_TRUE(
        tree()->viewport()->rect().intersects(tree()->visualItemRect(tree()->currentItem())));
    EXPECT_TRUE(says("Separator Wheel")) << "the target stays";
    type("group");
    QTest::keyClick(addDialog()->findChild<QLineEdit*>(), Qt::Key_Return);
    type("cone");
    QTest::mouseClick(addButton(), Qt::LeftButton);
    ASSERT_EQ(wheel->getNumChildren(), 5) << "not into the new group";
    EXPECT_EQ(depthOfUndo(), 3) << "each is one step";

    // Another row is chosen: where that keeps no list, nodes come behind it.
    click(rowAt({0, 1}));
    EXPECT_TRUE(says("Cube"));
    QTest::mouseClick(addButton(), Qt::LeftButton);
    QTest::mouseClick(addButton(), Qt::LeftButton);
    ASSERT_EQ(wheel->getNumChildren(), 7);
    EXPECT_EQ(wheel->getChild(2)->getTypeId().getName(), "Cone");
    EXPECT_EQ(wheel->getChild(6)->getTypeId().getName(), "Cone");
    QTest::keyClick(addDialog(), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(addDialog(), nullptr);
    while (isEnabled("&Undo"))
        press("&Undo");
    EXPECT_EQ(text(), before);

    openMenuAt(pointOf(rowAt({4})));
    choose("Add Node");
    ASSERT_NE(addDialog(), nullptr);
    QTest::mouseClick(addButton(), Qt::LeftButton); // the last type is chosen again
    EXPECT_EQ(scene->getChild(5)->getTypeId().getName(), "Cone");
}

TEST_F(EditingTest, RefusesAdditionsWithTheReason)
{
    const SoRef<SoNode> alone(new SoCone);
    start(alone.get());
    click(rowAt({}));
    press("&Insert...");
    type("cube");
    const auto add = [] { QTest::mouseClick(addButton(), Qt::LeftButton); };
    EXPECT_EQ(messageOf(add), "Add node: Can not add this node");
    EXPECT_FALSE(isEnabled("&Undo"));

    hooks().m_mirabo_stop();
    start(scene.get());
    const std::string before = text();
    click(rowAt({0}));
    press("&Insert...");
    type("cube");
    {
        auto errors = support::expectErrors();
        const support::RefusedWriteLock readers;
        const QString why = ": The scene cannot be edited now: another thread is reading it.";
        EXPECT_EQ(messageOf(add), "Add node" + why);
        EXPECT_EQ(messageOf([] { action("&Delete")->trigger(); }), "Mirabo Delete Node" + why);
        EXPECT_EQ(messageOf([] { action("&Set Ignored/Enable")->trigger(); }),
                  "Mirabo Ignore Node" + why);
        EXPECT_EQ(messageOf([] {
                      QTest::keyClick(tree(), Qt::Key_Down,
                                      Qt::ControlModifier | Qt::ShiftModifier);
                  }),
                  "Mirabo Move Node" + why);
    }
    EXPECT_EQ(text(), before);
    EXPECT_FALSE(isEnabled("&Undo"));

    // What was taken out of the scene takes nothing in.
    click(rowAt({0, 1}));
    press("&Set Ignored/Enable");
    EXPECT_EQ(messageOf(add),
              "Add node: The node has been taken out of the scene; enable it first.");
    EXPECT_FALSE(isEnabled("&Delete"));
    press("&Undo");
    EXPECT_EQ(text(), before);

    // The dialog waits for another scene.
    MrbServices::getInstance()->setSceneGraph(nullptr);
    pass();
    EXPECT_FALSE(addButton()->isEnabled());
    EXPECT_FALSE(isEnabled("&Insert..."));
}

TEST_F(EditingTest, DeleteFollowsTheFocus)
{
    start(scene.get());
    const std::string before = text();
    click(rowAt({0, 1}));
    QTreeWidget* fields = window()
                              ->findChild<QTabWidget*>("SoTabNodeOverview")
                              ->findChild<QTreeWidget*>("m_nodeOverviewList");
    QTest::mouseClick(fields->viewport(), Qt::LeftButton, {},
                      fields->visualItemRect(fields->topLevelItem(0)).center());
    pass();
    window()->findChild<QPushButton*>("m_watchButton")->click();
    auto* watch = window()->findChild<QTreeWidget*>("m_fieldWatch");
    ASSERT_EQ(watch->topLevelItemCount(), 1);
    watch->setFocus();
    QTest::mouseClick(watch->viewport(), Qt::LeftButton, {},
                      watch->visualItemRect(watch->topLevelItem(0)).center());
    press("&Delete");
    EXPECT_EQ(watch->topLevelItemCount(), 0);
    EXPECT_EQ(text(), before);
    EXPECT_FALSE(isEnabled("&Delete"));

    click(rowAt({4}));
    press("&Delete");
    EXPECT_EQ(scene->getNumChildren(), 4);
    EXPECT_TRUE(isEnabled("&Delete")) << "there is a current row again";
    click(rowAt({3}));
    press("&Delete");
    EXPECT_EQ(scene->getNumChildren(), 3);
    press("&Undo");
    press("&Undo");
    EXPECT_EQ(text(), before);
}

TEST_F(EditingTest, OffersInTheMenuWhatTheRowAllows)
{
    start(scene.get());
    QGuiApplication::clipboard()->clear();
    EXPECT_TRUE(openMenuAt(QPoint(5, tree()->viewport()->height() - 5)).isEmpty());
    const QStringList cube = openMenuAt(pointOf(rowAt({0, 1})));
    EXPECT_EQ(cube.join(", ").toStdString(),
              "Add to Node Overview, Add Node, Save scene graph, Delete, Move, Insert..., "
              "Show All References, Next Reference, Previous Reference, Toggle Bookmark, "
              "Copy Path, Set Ignored/Enable, Help on Cube");
    choose("Copy Path");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(),
              "Separator Scene > Separator Wheel > Cube");
    EXPECT_FALSE(openMenuAt(pointOf(rowAt({0, 1}))).isEmpty());
    choose("Toggle Bookmark");
    EXPECT_FALSE(rowAt({0, 1})->icon(4).isNull());
    openMenuAt(pointOf(rowAt({0, 1})));
    choose("Delete");
    EXPECT_EQ(static_cast<SoGroup*>(scene->getChild(0))->getNumChildren(), 1);

    tree()->collapseAll();
    QStringList root = openMenuAt(pointOf(rowAt({})));
    for (const char* entry : {"Expand All", "Explore", "Explore all", "Insert clipboard", "Delete"})
        EXPECT_TRUE(root.contains(entry)) << entry;
    for (const char* entry : {"Move", "Set Ignored/Enable", "Show All References"})
        EXPECT_FALSE(root.contains(entry)) << entry;
    choose("Explore");
    EXPECT_TRUE(rowAt({})->isExpanded());
    EXPECT_FALSE(rowAt({0})->isExpanded());
    root = openMenuAt(pointOf(rowAt({})));
    EXPECT_FALSE(root.contains("Explore"));
    choose("Explore all");
    EXPECT_TRUE(rowAt({0})->isExpanded());
    root = openMenuAt(pointOf(rowAt({})));
    EXPECT_FALSE(root.contains("Explore all") || root.contains("Expand All"));
    QApplication::activePopupWidget()->close();
}

TEST_F(EditingTest, InsertsTheClipboard)
{
    start(scene.get());
    const std::string before = text();
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    EXPECT_FALSE(isEnabled("Insert &clipboard"));
    const struct {
        const char* text;
        const char* added;
    } kScenes[] = {
        {"Cube { width 3 }", "Cube"},
        {"#Kalmyr V1.0 ascii\nSphere { }", "Sphere"},
        {"#VRML V1.0 ascii\nSeparator { Cone { } }", "Separator"},
        {"#VRML V2.0 utf8\nShape { geometry Box { } }", "VRMLShape"},
        {"Material { } Cube { }", "Separator"},
    };
    for (const auto& scene : kScenes) {
        click(rowAt({0}));
        clipboard->setText(scene.text);
        press("Insert &clipboard");
        EXPECT_EQ(current(), scene.added) << scene.text;
        EXPECT_EQ(tree()->currentItem()->parent(), rowAt({0}));
        press("&Undo");
        EXPECT_EQ(text(), before);
    }
    for (const char* none : {"Dear Sir or Madam", "# a comment", "Cube {", " \n"}) {
        clipboard->setText(none);
        pass();
        const QString message = messageOf([] { action("Insert &clipboard")->trigger(); });
        EXPECT_TRUE(message.startsWith("Mirabo Insert Clipboard: The text of the clipboard is no "
                                       "scene."))
            << none << ": " << message.toStdString();
    }
    EXPECT_EQ(text(), before);
    EXPECT_FALSE(isEnabled("&Undo"));
    clipboard->clear();
}

TEST_F(EditingTest, BringsTheHostsViewerToTheFront)
{
    start(scene.get());
    EXPECT_FALSE(isEnabled("&Open Viewer")) << "the scene is drawn nowhere";
    hooks().m_mirabo_stop();
    SoQtRenderArea area(nullptr, "The host");
    area.setSceneGraph(scene.get());
    area.show();
    area.getWidget()->window()->showMinimized();
    hooks().m_mirabo_startRenderArea(static_cast<SoRenderAreaCore*>(area.getGuiRenderArea()));
    QApplication::setActiveWindow(window());
    press("&Open Viewer");
    EXPECT_FALSE(area.getWidget()->window()->isMinimized());
    EXPECT_TRUE(area.getWidget()->window()->isActiveWindow());
    delete area.getWidget();
    click(rowAt({1}));
    EXPECT_FALSE(isEnabled("&Open Viewer"));
}

TEST_F(EditingTest, TellsWhatUndoWouldDoAndListsTheSteps)
{
    start(scene.get());
    const std::string before = text();
    auto* dock = window()->findChild<QDockWidget*>("dockHistory");
    ASSERT_NE(dock, nullptr);
    EXPECT_FALSE(dock->isVisible());
    press("History"); // of the "View" menu
    EXPECT_TRUE(dock->isVisible());
    auto* list = dock->findChild<QListView*>();

    click(rowAt({0, 1}));
    press("&Delete");
    EXPECT_EQ(action("&Undo")->toolTip(), "Undo Delete Cube (Ctrl+Z)");
    EXPECT_EQ(window()->statusBar()->currentMessage(), "Delete Cube");
    click(rowAt({4}));
    press("&Delete");
    const std::string behind = text();
    ASSERT_EQ(list->model()->rowCount(), 3);
    EXPECT_EQ(list->model()->index(2, 0).data().toString(), "Delete Sphere");
    const auto goTo = [list](int row) {
        const QRect place = list->visualRect(list->model()->index(row, 0));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place.center());
        pass();
    };
    goTo(0);
    EXPECT_EQ(text(), before);
    EXPECT_EQ(action("&Redo")->toolTip(), "Redo Delete Cube (Ctrl+Y)");
    goTo(2);
    EXPECT_EQ(text(), behind);
    // A step that cannot be taken says so instead.
    {
        auto errors = support::expectErrors();
        const support::RefusedWriteLock readers;
        EXPECT_NE(messageOf([] { press("&Undo"); }), "");
        EXPECT_EQ(window()->statusBar()->currentMessage(), "");
    }
    EXPECT_EQ(text(), behind);
    scene->removeAllChildren(); // the host's edit ends what can be undone
    pass();
    EXPECT_EQ(list->model()->rowCount(), 1);
    EXPECT_EQ(action("&Undo")->toolTip(), "Undo (Ctrl+Z)");
}

} // namespace
