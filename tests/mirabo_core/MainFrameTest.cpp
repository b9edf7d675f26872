#include "mirabo/core/AboutDialog.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "support/ErrorGuard.h"
#include "support/Passes.h"

#include <QAction>
#include <QComboBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QShortcutEvent>
#include <QSignalSpy>
#include <QTest>
#include <QToolBar>
#include <QVBoxLayout>

#include <set>

#include <gtest/gtest.h>

using mirabo::ActionId;

namespace {

class MainFrameTest : public testing::Test {
protected:
    MainFrameTest() { frame.setUp(&hub, true); }

    QStringList entriesOf(const QWidget* holder) const
    {
        QStringList texts;
        for (const QAction* entry : holder->actions())
            texts << (entry->isSeparator() ? "-"
                      : entry->menu()      ? entry->menu()->title()
                                           : entry->text());
        return texts;
    }
    QMenu* menu(const QString& title) const
    {
        for (QMenu* one : frame.findChildren<QMenu*>())
            if (one->title() == title)
                return one;
        return nullptr;
    }
    QToolBar* bar(const QString& title) const
    {
        for (QToolBar* one : frame.findChildren<QToolBar*>())
            if (one->windowTitle() == title)
                return one;
        return nullptr;
    }

    SoCommandManager hub;
    SoMiraboMainFrame frame;
};

TEST_F(MainFrameTest, ActionsHaveIconsThatCanBeDrawnInEverySize)
{
    for (std::size_t i = 0; i < mirabo::kActionCount; ++i) {
        const QAction* action = frame.action(static_cast<ActionId>(i));
        const bool wantsIcon = mirabo::actionTable()[i].icon != nullptr;
        EXPECT_EQ(!action->icon().isNull(), wantsIcon) << action->text().toStdString();
        if (!wantsIcon)
            continue;
        for (const int size : {16, 20, 32, 48})
            EXPECT_FALSE(action->icon().pixmap(size).toImage().isNull())
                << action->text().toStdString() << size;
    }
}

TEST_F(MainFrameTest, MenusHoldTheirEntriesInOrder)
{
    QStringList titles;
    for (const QAction* entry : frame.menuBar()->actions())
        titles << entry->text();
    EXPECT_EQ(titles, QStringList({"File", "&Edit", "&View", "&TreeView", "&?"}));
    EXPECT_EQ(
        entriesOf(menu("File")),
        QStringList({"&New", "&Open...", "-", "&Reload", "-", "&Close", "-", "&Save", "Save &As...",
                     "-", "&Export", "-", "&Print...", "Recent &Files", "-", "&Quit"}));
    EXPECT_EQ(entriesOf(menu("&Edit")),
              QStringList({"&Undo", "&Redo", "-", "Cu&t", "&Copy", "&Paste", "-", "&Delete", "-",
                           "&Preferences..."}));
    EXPECT_EQ(entriesOf(menu("&TreeView")),
              QStringList({"&Set Ignored/Enable", "-", "Show &All References",
                           "&Hide All References", "-", "Ne&xt", "&Preferences...", "-", "&Find...",
                           "Find &Next", "Bookmarks", "Filter"}));
    EXPECT_EQ(entriesOf(menu("Bookmarks")),
              QStringList({"Toggle Bookmark", "-", "Next Bookmark", "Previous Bookmark", "-",
                           "Clear All Bookmarks"}));
    EXPECT_EQ(entriesOf(menu("Filter")).size(), 16);
    EXPECT_EQ(entriesOf(menu("&?")), QStringList({"&Contents", "-", "&About Mirabo"}));
}

TEST_F(MainFrameTest, ToolBarsHoldTheirEntriesInOrder)
{
    EXPECT_EQ(entriesOf(bar("File Tool Bar")),
              QStringList({"&New", "&Open...", "-", "&Reload", "&Close", "&Save", "Save &As...",
                           "-", "&Print...", "&Export"}));
    EXPECT_EQ(entriesOf(bar("Edit Tool Bar")),
              QStringList({"&Undo", "&Redo", "-", "Cu&t", "&Copy", "&Paste"}));
    EXPECT_EQ(bar("Search Tool Bar")->actions().size(), 4);
    EXPECT_EQ(entriesOf(bar("Bookmark Tool Bar")),
              QStringList({"Toggle Bookmark", "-", "Next Bookmark", "Previous Bookmark"}));
    EXPECT_EQ(entriesOf(bar("Filter Tool Bar")).size(), 16);
    const auto* combo = bar("Search Tool Bar")->findChild<QComboBox*>();
    ASSERT_NE(combo, nullptr);
    EXPECT_TRUE(combo->isEditable());
    EXPECT_EQ(combo->minimumWidth(), 150);
    EXPECT_FALSE(combo->duplicatesEnabled());
}

TEST_F(MainFrameTest, KeysThatTwoActionsShareTriggerNeither)
{
    frame.show();
    frame.activateWindow();
    ASSERT_TRUE(support::passUntil([&] { return frame.isActiveWindow(); }));
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        ActionId first, second;
    } kShared[] = {
        {Qt::Key_N, Qt::ControlModifier, ActionId::New, ActionId::Find},
        {Qt::Key_F2, Qt::NoModifier, ActionId::NextBookmark, ActionId::NextReference},
        {Qt::Key_F2, Qt::ShiftModifier, ActionId::PreviousBookmark, ActionId::PreviousReference},
    };
    auto errors = support::expectErrors(); // Qt says that the key is ambiguous
    errors.mayStayEmpty();
    for (const auto& shared : kShared) {
        QAction* first = frame.action(shared.first);
        QAction* second = frame.action(shared.second);
        EXPECT_EQ(first->shortcut(), second->shortcut());
        first->setEnabled(true);
        second->setEnabled(true);
        const QSignalSpy one(first, &QAction::triggered);
        const QSignalSpy two(second, &QAction::triggered);
        QTest::keyClick(&frame, shared.key, shared.modifiers);
        EXPECT_EQ(one.count() + two.count(), 0) << first->text().toStdString();
        second->setEnabled(false);
        QTest::keyClick(&frame, shared.key, shared.modifiers);
        EXPECT_EQ(one.count(), 1) << first->text().toStdString();
    }
}

TEST_F(MainFrameTest, AHostsSceneIsNotReplaced)
{
    SoCommandManager hostedHub;
    SoMiraboMainFrame hosted;
    hosted.setUp(&hostedHub, false);
    hostedHub.setUp(&hosted, nullptr, nullptr, nullptr);
    hub.setUp(&frame, nullptr, nullptr, nullptr);
    for (const ActionId id : {ActionId::Open, ActionId::Close}) {
        EXPECT_TRUE(frame.action(id)->isEnabled());
        EXPECT_FALSE(hosted.action(id)->isEnabled());
    }
    EXPECT_TRUE(frame.findChild<QMenu*>("RecentFilesMenu")->isEnabled());
    EXPECT_FALSE(hosted.findChild<QMenu*>("RecentFilesMenu")->isEnabled());
}

TEST_F(MainFrameTest, FilterMaskFollowsTheCategories)
{
    const QSignalSpy spy(&frame, &SoMiraboMainFrame::filterChanged);
    EXPECT_EQ(frame.getFilterMask(), 16383);
    frame.action(ActionId::Appearance)->setChecked(false);
    EXPECT_EQ(frame.getFilterMask(), 16382);
    frame.action(ActionId::Transform)->setChecked(false);
    EXPECT_EQ(frame.getFilterMask(), 16382 - 8192);
    EXPECT_EQ(spy.count(), 2);
    frame.action(ActionId::ToggleFilters)->setChecked(false);
    EXPECT_EQ(frame.getFilterMask(), 16383) << "everything is shown while the filter is off";
    EXPECT_EQ(spy.count(), 3);
    frame.action(ActionId::ToggleFilters)->setChecked(true);
    EXPECT_EQ(frame.getFilterMask(), 16382 - 8192) << "the last choice is back";
    frame.action(ActionId::ToggleFilters)->setChecked(false);
    frame.checkCategories(1024 + 512);
    EXPECT_EQ(frame.getFilterMask(), 1024 + 512);
    EXPECT_TRUE(frame.action(ActionId::ToggleFilters)->isChecked());
    EXPECT_EQ(spy.count(), 6) << "once for all of them";
}

TEST_F(MainFrameTest, ViewMenuShowsAndHidesDocksAndToolBars)
{
    auto* dock = new QDockWidget("A dock", &frame);
    frame.addDockWidget(Qt::LeftDockWidgetArea, dock);
    frame.fillViewMenu();
    EXPECT_EQ(
        entriesOf(menu("&View")),
        QStringList({"A dock", "-", "File Tool Bar", "Edit Tool Bar", "Search Tool Bar",
                     "Bookmark Tool Bar", "Filter Tool Bar", "-", "Next Pane", "Previous Pane"}));
    frame.show();
    menu("&View")->actions()[0]->trigger();
    EXPECT_FALSE(dock->isVisible());
    menu("&View")->actions()[2]->trigger();
    EXPECT_FALSE(bar("File Tool Bar")->isVisible());
}

TEST_F(MainFrameTest, F6WalksThePanesAndTheOneWithTheFocusIsMarked)
{
    std::vector<QDockWidget*> docks;
    for (const char* name : {"left", "right", "behind"}) {
        docks.push_back(new QDockWidget(name, &frame));
        auto* content = new QWidget;
        auto* layout = new QVBoxLayout(content);
        layout->addWidget(new QLabel("no focus"));
        layout->addWidget(new QLineEdit(name));
        layout->addWidget(new QLineEdit(name));
        docks.back()->setWidget(content);
        frame.addDockWidget(Qt::LeftDockWidgetArea, docks.back(), Qt::Horizontal);
    }
    frame.tabifyDockWidget(docks[1], docks[2]);
    docks[1]->raise();
    frame.fillViewMenu();
    frame.show();
    support::flush();
    QApplication::setActiveWindow(&frame);
    QLineEdit* chosen = docks[0]->findChildren<QLineEdit*>()[1];
    chosen->setFocus();
    const auto marked = [&] {
        std::vector<QDockWidget*> with;
        for (QDockWidget* dock : docks)
            if (dock->findChild<QWidget*>("paneMark"))
                with.push_back(dock);
        return with.size() == 1 ? with.front() : nullptr;
    };
    EXPECT_EQ(marked(), docks[0]);
    std::set<QDockWidget*> seen;
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6);
        support::flush();
        ASSERT_TRUE(marked());
        EXPECT_TRUE(marked()->isAncestorOf(QApplication::focusWidget()));
        EXPECT_TRUE(qobject_cast<QLineEdit*>(QApplication::focusWidget()));
        seen.insert(marked());
    }
    EXPECT_EQ(seen.size(), 3u);
    EXPECT_EQ(QApplication::focusWidget(), chosen) << "where it was in that pane";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_NE(marked(), docks[0]);
    QDockWidget* const dying = marked();
    std::erase(docks, dying);
    delete dying;
    QTest::keyClick(&frame, Qt::Key_F6);
    EXPECT_TRUE(marked());
}

TEST_F(MainFrameTest, AboutNamesVersionLibrariesAndLicence)
{
    const mirabo::AboutDialog about(&frame);
    QString text;
    for (const QLabel* label : about.findChildren<QLabel*>())
        text += label->text();
    for (const char* part : {"Mirabo", "0.1", "Kalmyr", "Qt", "MIT"})
        EXPECT_TRUE(text.contains(part)) << part;
}

} // namespace
