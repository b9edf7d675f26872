#include "LaunchSupport.h"
#include "support/Clock.h"
#include "support/DialogAnswers.h"
#include "support/TestExtension.h"

#include <kalmyr/sensors/SoNodeSensor.h>
#include <mirabo/extender/MrbCommand.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/launch/SoMirabo.h>

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <iterator>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

Q_DECLARE_METATYPE(std::function<void()>)

namespace {

/// What a host may do to the tool from anywhere.
struct Act {
    const char* name;
    void (*perform)(QPointer<QWidget>& parent, SoNode* scene);
    bool runsOn = false; ///< the tool runs afterwards
};

const Act kActs[] = {
    {"Stop", [](QPointer<QWidget>&, SoNode*) { SoMirabo::stop(); }},
    {"StopTwice",
     [](QPointer<QWidget>&, SoNode*) {
         SoMirabo::stop();
         SoMirabo::stop();
         EXPECT_FALSE(SoMirabo::processEvents());
     }},
    {"DeleteTheParent", [](QPointer<QWidget>& parent, SoNode*) { delete parent.data(); }},
    {"StopAndDeleteTheParent",
     [](QPointer<QWidget>& parent, SoNode*) {
         SoMirabo::stop();
         delete parent.data();
     }},
    {"StopAndStart",
     [](QPointer<QWidget>&, SoNode* scene) {
         SoMirabo::stop();
         SoMirabo::start(scene);
         EXPECT_TRUE(SoMirabo::isRunning());
     },
     true},
    {"StartAndPump",
     [](QPointer<QWidget>&, SoNode* scene) {
         SoMirabo::start(scene);
         EXPECT_TRUE(SoMirabo::processEvents());
     },
     true},
};

class NoEdit final : public MrbCommand {
public:
    bool execute() override { return true; }
    void undo() override {}
    void redo() override {}
};

/// A place from which the host's code is called while code of the tool is on the stack.
struct Place {
    const char* name;
    void (*reach)(const std::function<void()>& act);
};

class EndsTest : public LaunchTest {
public:
    using LaunchTest::action;
    using LaunchTest::openRecent;
    using LaunchTest::pass;
    using LaunchTest::tree;
    using LaunchTest::window;

    static QTreeWidget* list(const char* name) { return window()->findChild<QTreeWidget*>(name); }
    static QPoint place(QTreeWidget* in, QTreeWidgetItem* item)
    {
        in->scrollToItem(item);
        pass();
        return (in->visualItemRect(item) & in->viewport()->rect()).center();
    }
    /// As the window system sends it: QTest's way for widgets goes past Qt's delivery.
    static void clickAt(QWidget* widget, const QPoint& at, Qt::MouseButton button = Qt::LeftButton,
                        Qt::KeyboardModifiers modifiers = {})
    {
        const QPointer<QWindow> to = widget->window()->windowHandle();
        const QPoint place = widget->mapTo(widget->window(), at);
        QTest::mousePress(to, button, modifiers, place);
        if (to)
            QTest::mouseRelease(to, button, modifiers, place);
    }
    static void press(QWidget* widget, Qt::Key key)
    {
        QApplication::setActiveWindow(widget->window());
        widget->setFocus();
        const QPointer<QWindow> to = widget->window()->windowHandle();
        QTest::keyPress(to, key);
        if (to)
            QTest::keyRelease(to, key);
    }
    static void click(QTreeWidget* in, QTreeWidgetItem* item)
    {
        clickAt(in->viewport(), place(in, item));
    }
    static QTreeWidgetItem* cube() { return tree()->topLevelItem(0)->child(0)->child(1); }

    /// Acts in the loop of whatever opens next: a dialog, a box, a menu.
    static void inLoop(const std::function<void()>& act)
    {
        QTimer::singleShot(0, [act] {
            EXPECT_TRUE(QApplication::activeModalWidget() || QApplication::activePopupWidget());
            act();
        });
    }
    static void inMenuOf(const std::function<void()>& act, QWidget* widget, const QPoint& at)
    {
        inLoop([act] {
            const QPointer<QWidget> popup = QApplication::activePopupWidget();
            act();
            if (popup)
                popup->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, at, widget->mapToGlobal(at));
        QCoreApplication::sendEvent(widget, &event);
    }
    static void inDialogOf(const std::function<void()>& act, const QString& actionText)
    {
        inLoop([act] {
            const QPointer<QWidget> dialog = QApplication::activeModalWidget();
            act();
            if (dialog)
                dialog->close();
        });
        action(actionText)->trigger();
    }
    static void onSelection(const std::function<void()>& act, const std::function<void()>& select)
    {
        const auto once = std::make_shared<bool>(false);
        QObject::connect(MrbServices::getInstance(), &MrbServices::selectedNodeChanged,
                         MrbServices::getInstance(), [act, once](SoFieldContainer*) {
                             if (!std::exchange(*once, true))
                                 act();
                         });
        select();
        EXPECT_TRUE(*once);
    }

    static void watchCube()
    {
        click(tree(), cube());
        QTreeWidget* fields = list("m_nodeOverviewList");
        click(fields, fields->topLevelItem(0));
        window()->findChild<QAbstractButton*>("m_watchButton")->click();
        EXPECT_EQ(list("m_fieldWatch")->topLevelItemCount(), 1);
    }
};

const std::vector<Place>& places()
{
    using Act = const std::function<void()>&;
    static const std::vector<Place> s_places = {
        {"About", [](Act act) { EndsTest::inDialogOf(act, "&About Mirabo"); }},
        {"Preferences", [](Act act) { EndsTest::inDialogOf(act, "&Preferences..."); }},
        {"SaveDialog", [](Act act) { EndsTest::inDialogOf(act, "Save &As..."); }},
        {"ExportDialog", [](Act act) { EndsTest::inDialogOf(act, "&Export"); }},
        {"PrintDialog", [](Act act) { EndsTest::inDialogOf(act, "&Print..."); }},
        {"ProgressOfAnExport",
         [](Act act) {
             const QTemporaryDir folder;
             const support::SlowWork slow;
             support::DialogAnswers answers(
                 {[&folder](QDialog* dialog) {
                      static_cast<QFileDialog*>(dialog)->selectNameFilter("PDF - using Plotrel");
                      dialog->findChild<QLineEdit*>("fileNameEdit")
                          ->setText(folder.filePath("drawing"));
                      dialog->accept();
                  },
                  [act](QDialog*) { act(); }});
             EndsTest::action("&Export")->trigger();
             EXPECT_EQ(answers.count(), 2);
         }},
        {"MenuOfTheTree",
         [](Act act) { // it has no loop of its own
             QTreeWidget* tree = EndsTest::tree();
             const QPoint at = EndsTest::place(tree, EndsTest::cube());
             QContextMenuEvent event(QContextMenuEvent::Mouse, at,
                                     tree->viewport()->mapToGlobal(at));
             QCoreApplication::sendEvent(tree->viewport(), &event);
             EXPECT_TRUE(QApplication::activePopupWidget());
             act();
             if (QWidget* popup = QApplication::activePopupWidget())
                 popup->close();
         }},
        {"BoxOfARefusal",
         [](Act act) {
             QGuiApplication::clipboard()->setText("no scene");
             EndsTest::pass();
             EndsTest::inDialogOf(act, "Insert &clipboard");
             QGuiApplication::clipboard()->clear();
         }},
        {"AddDialog",
         [](Act act) { // it has no loop of its own
             EndsTest::click(EndsTest::tree(), EndsTest::cube());
             EndsTest::pass();
             EndsTest::action("&Insert...")->trigger();
             EndsTest::pass();
             QWidget* dialog = EndsTest::window()->findChild<QWidget*>("AddDialog");
             ASSERT_NE(dialog, nullptr);
             dialog->findChild<QLineEdit*>()->setText("Cone");
             auto* add = dialog->findChild<QPushButton*>("AddButton");
             const auto once = std::make_shared<bool>(false);
             QObject::connect(add, &QPushButton::clicked, [act, once] {
                 *once = true;
                 MrbServices::getInstance()->undo(); // the rows are counted afterwards
                 act();
             });
             EndsTest::clickAt(add, add->rect().center());
             EXPECT_TRUE(*once);
         }},
        {"MenuOfTheOverview",
         [](Act act) {
             EndsTest::click(EndsTest::tree(), EndsTest::cube());
             QTreeWidget* fields = EndsTest::list("m_nodeOverviewList");
             EndsTest::inMenuOf(act, fields->viewport(), QPoint(5, 5));
         }},
        {"MenuOfTheHeader",
         [](Act act) {
             QWidget* header = EndsTest::list("m_nodeOverviewList")->header()->viewport();
             QWindow* to = header->window()->windowHandle();
             const QPoint at = header->mapTo(header->window(), QPoint(60, 5));
             QTest::mousePress(to, Qt::RightButton, {}, at);
             EndsTest::inLoop([act] {
                 const QPointer<QWidget> popup = QApplication::activePopupWidget();
                 act();
                 if (popup)
                     popup->close();
             });
             QTest::mouseRelease(to, Qt::RightButton, {}, at);
         }},
        {"MenuOfTheWatch",
         [](Act act) {
             EndsTest::watchCube();
             QTreeWidget* watch = EndsTest::list("m_fieldWatch");
             const QPoint at = EndsTest::place(watch, watch->topLevelItem(0));
             EndsTest::inMenuOf(act, watch->viewport(), at);
         }},
        {"ClickInTheTree",
         [](Act act) {
             EndsTest::onSelection(act,
                                   [] { EndsTest::click(EndsTest::tree(), EndsTest::cube()); });
         }},
        {"KeyInTheTree",
         [](Act act) {
             EndsTest::onSelection(act, [] { EndsTest::press(EndsTest::tree(), Qt::Key_Down); });
         }},
        {"CurrentItem",
         [](Act act) {
             EndsTest::onSelection(act, [] { EndsTest::tree()->setCurrentItem(EndsTest::cube()); });
         }},
        {"ServicesOfTheTool",
         [](Act act) {
             EndsTest::onSelection(act,
                                   [] { MrbServices::getInstance()->setSelectedNode(nullptr); });
         }},
        {"RowInserted",
         [](Act act) { // within an edit of the host
             const SoRef<SoGroup> group(new SoGroup);
             EndsTest::click(EndsTest::tree(), EndsTest::tree()->topLevelItem(0));
             SoFieldContainer* root = MrbServices::getInstance()->getSelectedNode();
             const auto connection = std::make_shared<QMetaObject::Connection>();
             *connection = QObject::connect(EndsTest::tree()->model(),
                                            &QAbstractItemModel::rowsInserted, [act, connection] {
                                                QObject::disconnect(*connection);
                                                act();
                                            });
             static_cast<SoGroup*>(root)->addChild(group.get());
             static_cast<SoGroup*>(root)->removeChild(group.get());
         }},
        {"ColumnResized",
         [](Act act) { // in the pass after an edit of the host
             EndsTest::click(EndsTest::tree(), EndsTest::cube());
             SoFieldContainer* cube = MrbServices::getInstance()->getSelectedNode();
             const auto connection = std::make_shared<QMetaObject::Connection>();
             *connection = QObject::connect(EndsTest::tree()->header(),
                                            &QHeaderView::sectionResized, [act, connection] {
                                                QObject::disconnect(*connection);
                                                act();
                                            });
             cube->setName(std::string(40, 'n').c_str());
             QTreeWidgetItem* branch = EndsTest::cube()->parent();
             branch->setExpanded(false);
             branch->setExpanded(true);
             EndsTest::pass();
         }},
        {"History",
         [](Act act) { // told of a command by the event loop
             EndsTest::window()->findChild<QDockWidget*>("dockHistory")->show();
             EndsTest::pass();
             auto* list = EndsTest::window()->findChild<QAbstractItemView*>("historyList");
             const auto connection = std::make_shared<QMetaObject::Connection>();
             *connection = QObject::connect(
                 list->selectionModel(), &QItemSelectionModel::currentChanged, [act, connection] {
                     QObject::disconnect(*connection);
                     act();
                 });
             static NoEdit s_command;
             MrbServices::getInstance()->pushCommand(&s_command);
             EndsTest::pass();
         }},
        {"ScrollBar",
         [](Act act) {
             // Any signal of any widget of the tool.
             auto* bar = EndsTest::tree()->verticalScrollBar();
             bar->setRange(0, 100);
             const auto connection = std::make_shared<QMetaObject::Connection>();
             *connection = QObject::connect(bar, &QScrollBar::valueChanged, [act, connection] {
                 QObject::disconnect(*connection);
                 act();
             });
             EndsTest::press(bar, Qt::Key_PageDown);
         }},
        {"TabBar",
         [](Act act) {
             auto* tabs = EndsTest::window()->findChild<QTabWidget*>("SoTabNodeOverview");
             EndsTest::clickAt(EndsTest::tree()->viewport(),
                               EndsTest::place(EndsTest::tree(), EndsTest::cube()), Qt::LeftButton,
                               Qt::ShiftModifier);
             ASSERT_EQ(tabs->count(), 2);
             const auto connection = std::make_shared<QMetaObject::Connection>();
             *connection = QObject::connect(tabs, &QTabWidget::currentChanged, [act, connection] {
                 QObject::disconnect(*connection);
                 act();
             });
             auto* bar = tabs->findChild<QTabBar*>();
             EndsTest::clickAt(bar, bar->tabRect(0).center());
         }},
        {"Field",
         [](Act act) {
             EndsTest::click(EndsTest::tree(), EndsTest::cube());
             const auto connection = std::make_shared<QMetaObject::Connection>();
             *connection = QObject::connect(MrbServices::getInstance(),
                                            &MrbServices::selectedFieldChanged, [act, connection] {
                                                QObject::disconnect(*connection);
                                                act();
                                            });
             QTreeWidget* fields = EndsTest::list("m_nodeOverviewList");
             EndsTest::click(fields, fields->topLevelItem(1));
         }},
        {"FilterDialog",
         [](Act act) {
             EndsTest::click(EndsTest::tree(), EndsTest::cube());
             EndsTest::action("Custom...")->trigger();
             auto* dialog = EndsTest::window()->findChild<QDialog*>("FilterDialog");
             ASSERT_TRUE(dialog && QTest::qWaitForWindowExposed(dialog));
             const auto connection = std::make_shared<QMetaObject::Connection>();
             *connection = QObject::connect(EndsTest::tree(), &QTreeWidget::currentItemChanged,
                                            [act, connection] { // the filter hides it
                                                QObject::disconnect(*connection);
                                                act();
                                            });
             for (auto* box : dialog->findChildren<QAbstractButton*>())
                 if (box->text() == "Shape") {
                     EndsTest::clickAt(box, QPoint(5, box->height() / 2));
                     break;
                 }
             if (SoMirabo::isRunning())
                 EndsTest::action("Toggle Filters")->setChecked(false);
         }},
    };
    return s_places;
}

class EndsAnywhere : public EndsTest,
                     public testing::WithParamInterface<std::tuple<std::size_t, std::size_t>> {};

TEST_P(EndsAnywhere, TheHostGoesOn)
{
    const Place& place = places()[std::get<0>(GetParam())];
    const Act& act = kActs[std::get<1>(GetParam())];
    QPointer<QWidget> parent = new QWidget;
    parent->show();
    SoMirabo::start(scene.get(), parent.data());
    window()->resize(1400, 900);
    tree()->expandAll();
    pass();
    int acted = 0;
    place.reach([&] {
        ++acted;
        act.perform(parent, scene.get());
        EXPECT_EQ(SoMirabo::isRunning(), act.runsOn);
        EXPECT_TRUE(act.runsOn || !window() || !window()->isVisible()) << "hidden at once";
    });
    EXPECT_EQ(acted, 1);
    scene->addChild(new SoCube); // the host edits on
    pass();
    pass();
    EXPECT_EQ(SoMirabo::isRunning(), act.runsOn);
    if (act.runsOn) {
        ASSERT_NE(window(), nullptr);
        EXPECT_TRUE(window()->isVisible());
        EXPECT_EQ(rowCount(), support::kHostSceneRows + 1);
        SoMirabo::stop();
    }
    EXPECT_EQ(window(), nullptr) << "torn down once its calls have returned";
    SoMirabo::processEvents(); // what a window that the host deleted outside of them waits for
    EXPECT_EQ(scene->getAuditors().getLength(), 0);
    SoMirabo::start(scene.get());
    EXPECT_TRUE(SoMirabo::isRunning());
    EXPECT_EQ(rowCount(), support::kHostSceneRows + 1);
    SoMirabo::stop();
    delete parent;
}

INSTANTIATE_TEST_SUITE_P(All, EndsAnywhere,
                         testing::Combine(testing::Range(std::size_t(0), places().size()),
                                          testing::Range(std::size_t(0), std::size(kActs))),
                         [](const auto& info) {
                             return std::string(places()[std::get<0>(info.param)].name) + "_"
                                    + kActs[std::get<1>(info.param)].name;
                         });

TEST_F(EndsTest, StopsUnderTheDialogsOfAStandaloneTool)
{
    const std::function<void()> openers[] = {
        [] { action("&Open...")->trigger(); },
        [] { openRecent("/nowhere/missing.ky"); }, // tells that there is no such file
    };
    for (const auto& open : openers) {
        hooks().m_mirabo_startStandalone(0, nullptr);
        bool stopped = false;
        inLoop([&stopped] {
            SoMirabo::stop();
            stopped = true;
        });
        open();
        EXPECT_TRUE(stopped);
        EXPECT_FALSE(SoMirabo::isRunning());
        pass();
        EXPECT_EQ(window(), nullptr);
    }
}

// While the tool starts, extensions are asked for this and that.
TEST_F(EndsTest, StartsNotWhenTheWindowIsDeletedInACallOfAnExtension)
{
    const support::TestExtension extension(folder);
    qApp->setProperty("task", QVariant::fromValue(std::function<void()>([] { delete window(); })));
    for (const char* where : {"getInfo", "activate", "createView"}) {
        SCOPED_TRACE(where);
        qApp->setProperty("log", QStringList());
        qApp->setProperty("taskAt", where);
        SoMirabo::start(scene.get());
        pass();
        EXPECT_EQ(window(), nullptr);
        SoMirabo::stop();
        EXPECT_EQ(scene->getAuditors().getLength(), 0);
        EXPECT_TRUE(qApp->property("log").toStringList().contains(where));
    }
    qApp->setProperty("taskAt", QVariant());
    qApp->setProperty("task", QVariant());
}

TEST_F(EndsTest, APlainCallThatIsStoppedInsideHasTornDownWhenItReturns)
{
    SoMirabo::start(scene.get());
    bool stillThere = false;
    onSelection(
        [&] {
            SoMirabo::stop();
            stillThere = window() != nullptr;
        },
        [] { MrbServices::getInstance()->setSelectedNode(nullptr); });
    EXPECT_TRUE(stillThere);
    EXPECT_EQ(window(), nullptr);
}

TEST_F(EndsTest, SensorsOfTheHostMayStopTheToolThatCausedThem)
{
    SoMirabo::start(scene.get());
    SoNodeSensor sensor([](void*, SoSensor*) { SoMirabo::stop(); }, nullptr);
    sensor.setPriority(0);
    sensor.attach(scene.get());
    tree()->setCurrentItem(tree()->topLevelItem(0)->child(0));
    action("&Set Ignored/Enable")->trigger(); // takes the node out
    EXPECT_FALSE(SoMirabo::isRunning());
    pass();
    EXPECT_EQ(window(), nullptr);
    sensor.detach();
}

/// Closes the next modal window as soon as it is there.
void closeNextModal()
{
    QTimer::singleShot(0, [] {
        if (QWidget* modal = QApplication::activeModalWidget())
            modal->close();
        else
            closeNextModal();
    });
}

/// Runs the host's loop; returns what it ended with, 99 when nothing ended it.
int runLoop(const std::function<void()>& inside)
{
    QTimer::singleShot(0, inside);
    QTimer rescue;
    QObject::connect(&rescue, &QTimer::timeout, [] { QCoreApplication::exit(99); });
    rescue.start(20000);
    return QApplication::exec();
}

TEST_F(EndsTest, TheHostsLoopEndsWithItsOwnLastWindow)
{
    QWidget host;
    host.show();
    SoMirabo::start(scene.get());
    window()->findChild<QDockWidget*>("dockFieldWatch")->setFloating(true);
    const int status = runLoop([&host] {
        QTimer::singleShot(0, [&host] { host.close(); });
        action("&About Mirabo")->trigger(); // open while the host ends
    });
    EXPECT_EQ(status, 0);
}

TEST_F(EndsTest, ClosingTheToolEndsNoLoop)
{
    for (const bool hasWindow : {false, true}) {
        QWidget host; // hidden
        if (hasWindow) {
            host.show();
            host.hide();
        }
        SoMirabo::start(scene.get());
        auto* torn = window()->findChild<QDockWidget*>("dockFieldWatch");
        torn->setFloating(true);
        torn->show();
        const int status = runLoop([torn] {
            torn->close();
            closeNextModal();
            action("&About Mirabo")->trigger();
            window()->close();
            SoMirabo::processEvents();
            // Qt's own wish to quit would come before.
            QTimer::singleShot(0, [] { QTimer::singleShot(0, [] { QCoreApplication::exit(7); }); });
        });
        EXPECT_EQ(status, 7);
        EXPECT_EQ(window(), nullptr);
    }
}

TEST_F(EndsTest, ClosingAStandaloneToolEndsTheLoop)
{
    hooks().m_mirabo_startStandalone(0, nullptr);
    EXPECT_EQ(runLoop([] { window()->close(); }), 0);
}

TEST_F(EndsTest, RefusesToStartOnNothing)
{
    const auto refused = [](const std::function<void()>& start) {
        auto errors = support::expectErrors();
        start();
        EXPECT_EQ(errors.count(), 1U);
        EXPECT_FALSE(SoMirabo::isRunning());
        EXPECT_EQ(window(), nullptr);
    };
    refused([] { SoMirabo::start(static_cast<SoNode*>(nullptr)); });
    refused([] { SoMirabo::start(static_cast<SoNode*>(nullptr), nullptr); });
    refused([] { SoMirabo::start(static_cast<SoSceneManager*>(nullptr)); });
    refused([] { SoMirabo::start(static_cast<SoSceneManager*>(nullptr), nullptr); });
    refused([] { SoMirabo::start(static_cast<const SoRenderAreaCore*>(nullptr)); });
    refused([] { SoMirabo::launch(0, nullptr, nullptr); });
    refused([] { SoMirabo::setInstance(1, nullptr, nullptr, true); });
    refused([] { hooks().m_mirabo_startRenderArea(nullptr); });
    refused([] { hooks().m_mirabo_startStandalone(2, nullptr); });
    SoMirabo::setPickAction(SbViewportRegion(10, 10), SbVec2s(1, 1));
    hooks().m_mirabo_setPickAction(SbViewportRegion(10, 10), SbVec2s(1, 1));
    // While it runs, any other start is ignored.
    SoMirabo::start(scene.get());
    SoMirabo::start(static_cast<SoNode*>(nullptr));
    EXPECT_TRUE(SoMirabo::isRunning());
}

} // namespace
