#include "ExtensionTool.h"

#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QDockWidget>
#include <QLabel>
#include <QRegularExpression>
#include <QStatusBar>
#include <QToolBar>

namespace {

class Placing : public ExtensionTool {
protected:
    void SetUp() override
    {
        ExtensionTool::SetUp();
        m_before = entriesOfWindow();
        ASSERT_TRUE(manager()->read(configuration(active("Everything")), false));
        ASSERT_TRUE(find("Everything"));
    }

    QStringList entriesOfWindow() const
    {
        QStringList all = entries(frame()->menuBar());
        for (const char* title : {"Edit", "View"})
            all += entries(menu(title));
        return all;
    }

    QStringList m_before;
};

TEST_F(Placing, PutsEverythingIntoTheWindow)
{
    auto* dock = frame()->findChild<QDockWidget*>("everything:dock");
    ASSERT_TRUE(dock);
    EXPECT_EQ(frame()->dockWidgetArea(dock), Qt::LeftDockWidgetArea);
    auto* view = frame()->findChild<QDockWidget*>("view:Everything");
    ASSERT_TRUE(view);
    EXPECT_TRUE(view->isVisible());
    EXPECT_EQ(view->widget()->objectName(), "everything:content");
    EXPECT_EQ(entries(menu("Edit")).mid(entries(menu("Edit")).size() - 3),
              (QStringList{"-", "Early entry", "Everything entry"}));
    const QStringList bar = entries(frame()->menuBar());
    EXPECT_EQ(bar[bar.size() - 2], "menu") << "before the help";
    EXPECT_TRUE(frame()->findChild<QToolBar*>("everything:toolBar")->isVisible());
    EXPECT_TRUE(frame()->statusBar()->findChild<QLabel*>("everything:status")->isVisible());
    for (const char* listed : {"Everything dock", "Everything view", "Everything Tool Bar"})
        EXPECT_TRUE(entries(menu("View")).contains(listed)) << listed;
}

TEST_F(Placing, OffersContextMenusByType)
{
    const MrbShell* shell = MrbShell::getInstance();
    const auto names = [shell](SoType type) {
        QStringList found;
        for (const QMenu* menu : shell->contextMenusFor(type))
            found << menu->objectName();
        return found;
    };
    const QStringList offered{"everything:contextMenu"};
    EXPECT_EQ(names(SoCube::getClassTypeId()), offered);
    EXPECT_EQ(names(SoGroup::getClassTypeId()), offered);
    EXPECT_EQ(names(SoSeparator::getClassTypeId()), offered) << "derived from a group";
    EXPECT_EQ(names(SoSphere::getClassTypeId()), QStringList());
}

TEST_F(Placing, TogglesTheViewFromItsEntry)
{
    auto* view = frame()->findChild<QDockWidget*>("view:Everything");
    QAction* toggle = nullptr;
    for (QAction* action : menu("View")->actions())
        if (action->text() == "Everything view")
            toggle = action;
    ASSERT_TRUE(toggle && toggle->isCheckable() && toggle->isChecked());
    toggle->trigger();
    EXPECT_FALSE(view->isVisible());
    toggle->trigger();
    EXPECT_TRUE(view->isVisible());
    view->close();
    EXPECT_FALSE(toggle->isChecked());
}

TEST_F(Placing, EntriesActForTheirOriginal)
{
    auto* entry = frame()->findChild<QAction*>("everything:entry");
    if (!entry)
        for (QAction* action : menu("Edit")->actions())
            if (action->objectName() == "everything:entry")
                entry = action;
    ASSERT_TRUE(entry);
    takeLog();
    entry->trigger();
    EXPECT_EQ(takeLog(), QStringList("entry"));
    EXPECT_TRUE(entry->isChecked()) << "as the original, which is checkable";
    auto* original = find("Everything")->findChild<QAction*>("everything:entry");
    EXPECT_TRUE(original->isChecked());
    original->setEnabled(false);
    original->setText("Renamed");
    EXPECT_FALSE(entry->isEnabled());
    EXPECT_EQ(entry->text(), "Renamed");
}

TEST_F(Placing, IsUndoneWhenTheExtensionEnds)
{
    ASSERT_GE(placed().size(), 9);
    const QPointer<MrbExtension> extension = find("Everything");
    takeLog();
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_EQ(placed(), QStringList());
    EXPECT_EQ(entriesOfWindow(), m_before);
    EXPECT_TRUE(MrbShell::getInstance()->contextMenusFor(SoCube::getClassTypeId()).isEmpty());
    EXPECT_FALSE(extension);
    EXPECT_EQ(takeLog(), (QStringList{"deactivate", "~Everything"}));
}

TEST_F(Placing, MayBeUndoneByTheExtensionItself)
{
    QMetaObject::invokeMethod(find("Everything"), "removeAll");
    EXPECT_FALSE(frame()->findChild<QWidget*>("view:Everything"));
    EXPECT_FALSE(entries(frame()->menuBar()).contains("menu"));
    EXPECT_FALSE(entries(menu("Edit")).contains("Everything entry"));
    EXPECT_TRUE(entries(menu("Edit")).contains("Early entry"));
    EXPECT_TRUE(MrbShell::getInstance()->contextMenusFor(SoCube::getClassTypeId()).isEmpty());
    // What was handed over goes with the extension all the same.
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_EQ(placed(), QStringList());
}

TEST_F(Placing, RefusesUnknownPlacesAndForeignViews)
{
    MrbShell* shell = find("Everything")->shell();
    QAction loose("Loose");
    EXPECT_FALSE(shell->addEntry(&loose, "Nowhere", 0));
    EXPECT_FALSE(shell->addEntry(&loose, "Edit/Nowhere", 0));
    EXPECT_FALSE(shell->addView(nullptr, Qt::RightDockWidgetArea));
    EXPECT_TRUE(shell->addEntry(&loose, "TreeView/Bookmarks", 0));
    shell->removeEntry(&loose);
}

TEST_F(Placing, SurvivesAWindowThatTheHostDeletes)
{
    delete frame();
    ASSERT_TRUE(manager()->setActiveProfile("Off"));
    EXPECT_EQ(placed(), QStringList());
}

TEST_F(Placing, LeavesNothingBehindOverManyRounds)
{
    const auto count = [] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // of tool bars
        return QApplication::allWidgets().size();
    };
    const int widgets = count();
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(manager()->setActiveProfile("Off"));
        ASSERT_TRUE(manager()->setActiveProfile("On"));
    }
    EXPECT_EQ(count(), widgets);
    EXPECT_TRUE(manager()->getProblems().empty());
}

} // namespace
