#include "mirabo/core/HistoryList.h"
#include "mirabo/core/LiveInput.h"
#include "mirabo/core/RecentFiles.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/private/Observed.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/preferences/Settings.h"
#include "support/Clock.h"
#include "support/ErrorGuard.h"
#include "support/Passes.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QMenu>
#include <QMimeData>
#include <QProgressDialog>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidgetItem>

#include <gtest/gtest.h>

using mirabo::ActionId;

namespace {

/// Panels that write down what they are asked.
struct Panels : mirabo::SceneDocument, mirabo::SceneTree, mirabo::NodePanels {
    void setScene(SoNode* root, bool reset) override { note(root ? "scene" : "empty", reset); }
    SoNode* getScene() const override { return nullptr; }
    bool openSceneFile(const QString& name) override
    {
        log << "open " + name;
        return true;
    }
    bool closeScene() override { return closes; }
    void reopenRecentFile(int index) override { note("reopen", index); }
    bool canReload() const override { return hasFile; }
    void highlight(const SoPath*) override { log << "highlight"; }
    void saveWindowSettings() override {}
    void refresh() override { log << "refresh"; }

    SoNode* getCurrentNode() const override { return current; }
    SoNode* getCurrentKit() const override { return nullptr; }
    bool revealNode(const SoNode*) override
    {
        log << "reveal";
        return true;
    }
    void expandBelow(QTreeWidgetItem*) override { log << "expand"; }
    void nodeTextChanged(const SoNode*) override { log << "text"; }

    void showNode(SoNode*, SoNode*, bool newTab) override { note("show", newTab); }
    void showRow(SoTreeViewItem*, bool newTab) override { note("showRow", newTab); }
    SoNode* getNode() const override { return current; }
    void clear() override {}
    void saveColumnWidths() override {}
    void closeOverview(int index) override { note("closeTab", index); }
    void watchSelectedField() override { log << "watch"; }
    void watchField(SoFieldItem*) override {}
    void deleteWatchedField() override {}
    void selectWatchedField(QTreeWidgetItem*) override { log << "edit"; }
    void showWatchedNode(QTreeWidgetItem*) override { log << "showWatched"; }
    QList<SoTreeViewItem*> shownRows() const override
    {
        QList<SoTreeViewItem*> rows;
        for (int i = 0; i < SoCommandManager::kOverviewCount + 1; ++i)
            rows << nullptr;
        return rows;
    }
    SoMiraboEdition* edition() const override { return nullptr; }

    void note(const QString& what, int number) { log << what + QString::number(number); }
    QStringList taken()
    {
        QStringList all = log;
        log.clear();
        return all;
    }

    QStringList log;
    SoNode* current = nullptr;
    bool closes = true;
    bool hasFile = false;
};

class Edit final : public MrbCommand {
public:
    explicit Edit(SoCommandManager* hub = nullptr) : m_hub(hub) {}
    bool execute() override
    {
        if (m_hub)
            m_hub->outsideStructureChange(); // our own change comes back from the tree
        return true;
    }
    void undo() override {}
    void redo() override {}

private:
    SoCommandManager* m_hub;
};

class HubTest : public testing::Test {
protected:
    HubTest()
    {
        SoDB::init();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, store.path());
        frame.setUp(&hub, true);
        hub.setUp(&frame, &panels, &panels, &panels);
        hub.clearUndoCommand();
    }
    ~HubTest() override
    {
        while (hub.undoStack().canUndo())
            hub.undo();
        if (hub.undoStack().canRedo())
            hub.addCommand(last = new Edit); // deletes what was undone
        hub.clearUndoCommand();
        delete last;
        MrbServicesImpl::destroyInstance();
        mirabo::releaseSettings();
    }
    bool canUndo() const { return frame.action(ActionId::Undo)->isEnabled(); }
    bool canRedo() const { return frame.action(ActionId::Redo)->isEnabled(); }

    QTemporaryDir store;
    Panels panels;
    SoMiraboMainFrame frame;
    SoCommandManager hub;
    MrbCommand* last = nullptr;
};

TEST_F(HubTest, TellsTheNamesOfTheStepsAndGoesToAnyOfThem)
{
    QAction* undo = frame.action(ActionId::Undo);
    QAction* redo = frame.action(ActionId::Redo);
    const QString ownTip = undo->toolTip();
    for (const char* name : {"Delete Cube", "Add Cone", ""}) {
        auto* edit = new Edit;
        edit->setName(name);
        hub.addCommand(edit);
    }
    EXPECT_EQ(undo->toolTip(), "Undo Edit (Ctrl+Z)") << "one without a name";
    hub.undo();
    EXPECT_EQ(undo->toolTip(), "Undo Add Cone (Ctrl+Z)");
    EXPECT_EQ(undo->statusTip(), "Undo Add Cone");
    EXPECT_EQ(redo->toolTip(), "Redo Edit (Ctrl+Y)");
    EXPECT_EQ(undo->text(), "&Undo");
    EXPECT_EQ(frame.statusBar()->currentMessage(), "Undone: Edit");

    mirabo::HistoryList list(&hub);
    const QAbstractItemModelTester tester(list.model());
    const auto shown = [&list] {
        QCoreApplication::processEvents();
        QStringList rows;
        for (int i = 0; i < list.model()->rowCount(); ++i)
            rows << list.model()->index(i, 0).data().toString()
                        + (list.currentIndex().row() == i ? "*" : "");
        return rows.join(", ");
    };
    EXPECT_EQ(shown(), "Scene as it was") << "hidden: nobody counts";
    list.show();
    EXPECT_EQ(shown(), "Scene as it was, Delete Cube, Add Cone*, Edit");
    const auto click = [&list](int row) {
        const QRect place = list.visualRect(list.model()->index(row, 0));
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, place.center());
    };
    click(0);
    EXPECT_FALSE(canUndo());
    EXPECT_EQ(shown(), "Scene as it was*, Delete Cube, Add Cone, Edit");
    EXPECT_EQ(frame.statusBar()->currentMessage(), "Undone: Delete Cube");
    click(3);
    EXPECT_FALSE(canRedo());
    EXPECT_EQ(frame.statusBar()->currentMessage(), "Redone: Edit");
    list.setCurrentIndex(list.model()->index(1, 0));
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(shown(), "Scene as it was, Delete Cube*, Add Cone, Edit");
    hub.goToCommand(1);
    EXPECT_EQ(hub.undoStack().currentIndex(), 0);

    hub.goToCommand(0);
    hub.addCommand(last = new Edit); // deletes what was undone
    EXPECT_EQ(shown(), "Scene as it was, Edit*");
    hub.clearUndoCommand();
    EXPECT_EQ(undo->toolTip(), ownTip);
    EXPECT_EQ(shown(), "Scene as it was*");
}

TEST_F(HubTest, UndoAndRedoActionsFollowTheStack)
{
    EXPECT_FALSE(canUndo());
    hub.addCommand(new Edit);
    hub.addCommand(new Edit);
    EXPECT_TRUE(canUndo());
    EXPECT_FALSE(canRedo());
    frame.action(ActionId::Undo)->trigger();
    EXPECT_TRUE(canRedo());
    hub.undo();
    EXPECT_FALSE(canUndo());
    frame.action(ActionId::Redo)->trigger();
    EXPECT_TRUE(canUndo());
}

TEST_F(HubTest, OnlyChangesFromOutsideForgetWhatWasDone)
{
    hub.addCommand(new Edit(&hub));
    EXPECT_TRUE(canUndo());
    hub.undo();
    last = new Edit;
    hub.addCommand(last);
    hub.outsideStructureChange();
    EXPECT_FALSE(canUndo());
    EXPECT_FALSE(hub.isModified());
}

TEST_F(HubTest, SavingForgetsWhatWasDone)
{
    hub.actions().add(ActionId::Save, &frame, {[this] { panels.log << "save"; }});
    hub.actions().add(ActionId::SaveAs, &frame, {[this] { panels.log << "saveAs"; }});
    last = new Edit;
    hub.addCommand(last);
    hub.saveFile();
    EXPECT_EQ(panels.taken(), QStringList("save"));
    EXPECT_FALSE(canUndo());
    EXPECT_FALSE(canRedo());
    hub.saveAsFile();
    EXPECT_EQ(panels.taken(), QStringList("saveAs"));
}

TEST_F(HubTest, FileActionsReachTheDocument)
{
    EXPECT_FALSE(frame.action(ActionId::Reload)->isEnabled());
    panels.hasFile = true;
    hub.actions().update(ActionId::Reload);
    frame.action(ActionId::Reload)->trigger();
    EXPECT_EQ(panels.taken(), QStringList("reopen0"));
    panels.closes = false;
    frame.action(ActionId::New)->trigger();
    EXPECT_TRUE(frame.action(ActionId::Reload)->isEnabled()) << "the user cancelled";
    panels.closes = true;
    panels.hasFile = false;
    frame.action(ActionId::Close)->trigger();
    EXPECT_FALSE(frame.action(ActionId::Reload)->isEnabled());
    frame.showRecentFiles({"/one.ky", "/two.ky"});
    const auto* menu = frame.findChild<QMenu*>("RecentFilesMenu");
    menu->actions()[1]->trigger();
    EXPECT_EQ(panels.taken(), QStringList("open /two.ky"));
    EXPECT_FALSE(menu->actions()[2]->isVisible());
    frame.showRecentFiles({"/one.ky", QCoreApplication::applicationFilePath()});
    Q_EMIT const_cast<QMenu*>(menu)->aboutToShow();
    ASSERT_TRUE(support::passUntil([&] { return !menu->actions()[0]->icon().isNull(); }));
    EXPECT_TRUE(menu->actions()[1]->icon().isNull()) << "it exists";
    frame.showRecentFiles({"/two.ky"});
    EXPECT_TRUE(menu->actions()[0]->icon().isNull()) << "another file, not looked for yet";
    hub.openFileRecent(); // not by an action
    EXPECT_EQ(panels.taken(), QStringList());
    hub.newFile();
    EXPECT_EQ(panels.taken(), QStringList("empty1"));
}

TEST_F(HubTest, ASelectionIsAnnouncedOnceAndAnExtensionsIsFollowed)
{
    const SoRef<SoNode> node(new SoCube);
    MrbServicesImpl* services = MrbServicesImpl::getInstance();
    QObject::connect(services, &MrbServices::selectedNodeChanged, &hub,
                     &SoCommandManager::selectedNodeChanged);
    int announced = 0;
    QObject::connect(services, &MrbServices::selectedNodeChanged, &hub,
                     [&announced] { ++announced; });
    hub.treeNodeChosen(node.get(), nullptr, true);
    EXPECT_EQ(panels.taken(), QStringList("show1"));
    EXPECT_EQ(announced, 1);
    EXPECT_EQ(services->getSelectedNode(), node.get());
    services->setSelectedNode(node.get());
    EXPECT_EQ(panels.taken(), QStringList({"reveal", "show0"}));
    EXPECT_EQ(announced, 2);
    services->setSelectedNode(nullptr);
    EXPECT_EQ(panels.taken(), QStringList());
}

TEST_F(HubTest, AsksNobodyOnceThePanelsAreGone)
{
    hub.release();
    hub.reloadFile();
    hub.closeFile();
    hub.openFileRecent();
    hub.setNodeOverview();
    hub.expandAll();
    hub.nodeSetOverride(true);
    hub.setFieldWatch(nullptr);
    hub.closeApp();
    EXPECT_EQ(panels.taken(), QStringList());
}

TEST_F(HubTest, TheLastOwnerOfAnActionAnswersUntilItDies)
{
    mirabo::ActionRegistry& actions = hub.actions();
    QAction* find = frame.action(ActionId::Find);
    const QString ownTip = find->toolTip();
    EXPECT_FALSE(find->isEnabled());
    EXPECT_FALSE(actions.run(ActionId::Find));
    auto tree = std::make_unique<QObject>();
    auto watch = std::make_unique<QObject>();
    bool hasRows = false;
    actions.add(ActionId::Find, tree.get(),
                {[this] { panels.log << "tree"; }, [&hasRows] { return hasRows; },
                 [] { return QString("Find a node"); }});
    EXPECT_FALSE(find->isEnabled()) << "there is nothing to do";
    hasRows = true;
    actions.update(ActionId::Find);
    EXPECT_TRUE(find->isEnabled());
    EXPECT_TRUE(find->toolTip().startsWith("Find a node"));
    actions.add(ActionId::Find, watch.get(), {[&] {
                    panels.log << "watch";
                    watch.reset(); // while it runs
                }});
    EXPECT_EQ(find->toolTip(), ownTip);
    hub.showFindDialog();
    hub.showFindDialog();
    EXPECT_EQ(panels.taken(), QStringList({"watch", "tree"}));
    actions.withdraw(ActionId::Find, tree.get());
    EXPECT_FALSE(find->isEnabled());
    EXPECT_FALSE(actions.run(ActionId::Find));
}

TEST_F(HubTest, OverrideSwitchesThroughTheStack)
{
    hub.setOverrideFactory([](bool on) -> MrbCommand* { return on ? new Edit : nullptr; });
    hub.nodeSetOverride(false);
    EXPECT_FALSE(canUndo());
    hub.nodeSetOverride(true);
    EXPECT_TRUE(canUndo());
}

TEST_F(HubTest, RecentFilesMoveToTheFrontButTheOldestIsDoubled)
{
    mirabo::RecentFiles files;
    for (const char* name : {"b", "a"})
        files.add(name);
    EXPECT_EQ(files.paths(), QStringList({"a", "b"}));
    files.add("b");
    EXPECT_EQ(files.paths(), QStringList({"b", "a", "b"}));
    files.add("a");
    EXPECT_EQ(files.paths(), QStringList({"a", "b", "b"}));
    for (int i = 0; i < 9; ++i)
        files.add(QString::number(i));
    EXPECT_EQ(files.paths().size(), 9);
    EXPECT_EQ(files.paths().first(), "8");
    files.write();
    mirabo::RecentFiles again;
    again.read();
    EXPECT_EQ(again.paths(), files.paths());
}

TEST_F(HubTest, ObservedForgetsWhatDied)
{
    SoRef<SoSeparator> node(new SoSeparator);
    {
        mirabo::Observed<SoNode> early;
        early.reset(node.get());
    }
    EXPECT_EQ(node->getAuditors().getLength(), 0);
    mirabo::Observed<SoNode> observed;
    observed.reset(node.get());
    observed.reset(node.get());
    EXPECT_EQ(node->getRefCount(), 1);
    node.reset();
    EXPECT_EQ(observed.get(), nullptr);
}

TEST_F(HubTest, ProgressMovesAndLeavesTheWindowAlive)
{
    const support::Clock clock;
    LiveInput input(&frame);
    static constexpr char kScene[] = "#Kalmyr V1.0 ascii\nSeparator {}\n";
    ASSERT_TRUE(input.setBuffer(kScene, sizeof kScene - 1));
    input.progress(1, 100);
    EXPECT_EQ(frame.findChild<QProgressDialog*>(), nullptr) << "a short read shows none";
    support::Clock::advance(0.35);
    int timerFired = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &frame, [&timerFired] { ++timerFired; });
    timer.start(0);
    input.progress(25, 100);
    auto* dialog = frame.findChild<QProgressDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->labelText().startsWith("Loading "));
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->value(), 25);
    EXPECT_EQ(dialog->maximum(), 100);
    EXPECT_TRUE(dialog->findChildren<QAbstractButton*>().isEmpty()) << "it cannot be cancelled";
    input.progress(80, 100);
    EXPECT_EQ(dialog->value(), 80);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_GE(timerFired, 1);
}

TEST_F(HubTest, RowsDroppedOnTheWindowAreKeptInView)
{
    const SoRef<SoCube> cube(new SoCube);
    panels.current = cube.get();
    const auto drop = [this](const char* format) {
        QMimeData data;
        data.setData(format, QByteArray());
        QDragEnterEvent enter({9, 9}, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&frame, &enter);
        QDropEvent event({9, 9}, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&frame, &event);
        return panels.taken();
    };
    EXPECT_EQ(drop("mirabofielditem"), QStringList("watch"));
    EXPECT_EQ(drop("treeviewnodeobject"), QStringList("show1"));
    EXPECT_EQ(drop("text/plain"), QStringList());
}

TEST_F(HubTest, AsksThePanelsForWatchedRowsAndShownNodes)
{
    auto row = std::make_unique<QTreeWidgetItem>();
    hub.setFieldEditorFromWatch(row.get());
    hub.setNodeOverviewFromWatch(row.get());
    hub.setNodeOverviewFromWatch(nullptr);
    EXPECT_EQ(panels.taken(), QStringList({"edit", "showWatched"}));
    EXPECT_EQ(hub.getItemOverviewList()->size(), SoCommandManager::kOverviewCount);
    hub.release();
    EXPECT_TRUE(hub.getItemOverviewList()->isEmpty());
    EXPECT_EQ(hub.getNodeEdition(), nullptr);
    hub.setNodeOverview();
    hub.setFieldEditorFromWatch(row.get());
}

} // namespace
