#include "OverviewSupport.h"

#include "mirabo/core/SoMiraboState.h"
#include "mirabo/core/SoMiraboStateManager.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/overview/SoTabNodeOverview.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDockWidget>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

using List = SoMiraboList;

/// Both panels in a window, on the screen.
class EditionTest : public OverviewTest {
protected:
    EditionTest()
    {
        m_window.addDockWidget(Qt::LeftDockWidgetArea, m_overviewDock);
        m_window.addDockWidget(Qt::RightDockWidgetArea, m_watchDock);
        m_window.resize(1200, 600);
        show(m_window);
    }

    List* list() const { return edition.getTabs()->currentOverview()->getList(); }
    SoFieldWatch* watch() const { return edition.getWatch(); }
    /// Selects the probe's field and watches it.
    void watchField(const char* name)
    {
        edition.showNode(m_probe.get(), nullptr, false);
        list()->chooseRow(row(*list(), name));
        edition.addFieldWatch();
    }

    QMainWindow m_window;
    QDockWidget* m_overviewDock = new QDockWidget(&m_window);
    QDockWidget* m_watchDock = new QDockWidget(&m_window);
    SoMiraboEdition edition{m_overviewDock, m_watchDock};
};

/// A state that writes down what happens to it.
class State final : public SoMiraboState {
public:
    void enter() override { log += '+'; }
    void leave() override { log += '-'; }
    void contextMenu(QContextMenuEvent* event) override { asked = event->pos(); }

    std::string log;
    QPoint asked;
};

} // namespace

TEST_F(EditionTest, ShowsANodeInTheCurrentTabOrANewOne)
{
    m_overviewDock->hide();
    QSignalSpy spy(&edition, &SoMiraboEdition::fieldSelected);
    edition.showNode(nullptr, nullptr, true);
    EXPECT_EQ(edition.getTabs()->count(), 1);
    edition.showNode(m_probe.get(), nullptr, false);
    EXPECT_TRUE(m_overviewDock->isVisible());
    EXPECT_EQ(edition.getTabs()->count(), 1);
    EXPECT_EQ(edition.getTabs()->tabText(0), "Probe");
    EXPECT_EQ(edition.getSelectedField(), &m_probe->number);
    EXPECT_EQ(spy.last().at(0).value<SoField*>(), &m_probe->number);

    const SoRef<SoCone> cone(new SoCone);
    edition.showNode(cone.get(), nullptr, true);
    EXPECT_EQ(edition.getTabs()->count(), 2);
    EXPECT_EQ(edition.getNode(), cone.get());
    // A node that a tab shows comes up there only when asked for.
    edition.bringUp(m_probe.get());
    EXPECT_EQ(edition.getTabs()->currentIndex(), 0);
    EXPECT_EQ(edition.getSelectedField(), &m_probe->number);
    edition.showNode(cone.get(), nullptr, false);
    EXPECT_EQ(edition.getTabs()->currentIndex(), 0);
    EXPECT_EQ(edition.getNode(), cone.get());

    edition.clear();
    EXPECT_EQ(edition.getTabs()->count(), 1);
    EXPECT_EQ(edition.getNode(), nullptr);
    EXPECT_EQ(edition.getSelectedField(), nullptr);
}

TEST_F(EditionTest, TellsEditorsOfANodeWithoutAnythingToEdit)
{
    edition.showNode(m_probe.get(), nullptr, false);
    QSignalSpy spy(&edition, &SoMiraboEdition::clearFieldEditorEvent);
    const SoRef<SoGroup> group(new SoGroup);
    edition.showNode(group.get(), nullptr, false);
    EXPECT_EQ(spy.count(), list()->firstEnabledItem() ? 0 : 1);
    EXPECT_EQ(edition.getSelectedField() != nullptr, list()->firstEnabledItem() != nullptr);
}

TEST_F(EditionTest, ReportsGreyFieldsButDoesNotWatchThem)
{
    edition.showNode(m_probe.get(), nullptr, false);
    auto* button = edition.getTabs()->currentOverview()->findChild<QPushButton*>("m_watchButton");
    for (const char* name : {"one", "nodes"}) {
        list()->chooseRow(row(*list(), name));
        EXPECT_EQ(edition.getSelectedField(), row(*list(), name)->getField());
        button->click();
        EXPECT_EQ(watch()->topLevelItemCount(), 0);
    }
    list()->chooseRow(row(*list(), "out")); // grey as well, but with a value to watch
    button->click();
    EXPECT_EQ(watch()->topLevelItemCount(), 1);
    list()->setCurrentItem(nullptr);
    EXPECT_EQ(edition.getSelectedField(), nullptr);
}

TEST_F(EditionTest, WatchesAFieldOnceAndFollowsItElsewhere)
{
    watchField("number");
    edition.addFieldWatch();
    ASSERT_EQ(watch()->topLevelItemCount(), 1);
    const SoRef<SoCone> cone(new SoCone);
    edition.showNode(cone.get(), nullptr, false);
    edition.getTabs()->addOverview();
    m_probe->number.setValue(77);
    pass();
    EXPECT_EQ(watch()->fieldItem(0)->text(List::FieldValue), "77");
    EXPECT_EQ(watch()->fieldItem(0)->text(List::FieldName), "number");

    m_watchDock->hide();
    EXPECT_EQ(m_probe->number.getAuditors().getLength(), 0);
    m_watchDock->show();
    QCoreApplication::processEvents();
    EXPECT_EQ(m_probe->number.getAuditors().getLength(), 1);

    // A row of the watch is a selected field as one of the overview is.
    watch()->setCurrentItem(watch()->topLevelItem(0));
    EXPECT_EQ(edition.getSelectedField(), &m_probe->number);
}

TEST_F(EditionTest, NamesWatchedNodesOrTellsTheirPlace)
{
    edition.setPlaceProvider([](const SoNode*) { return QString("Root > Probe"); });
    watchField("number");
    EXPECT_GT(watch()->columnWidth(List::NodeName), 0);
    EXPECT_EQ(watch()->fieldItem(0)->text(List::NodeName), "Root > Probe");
    Q_EMIT edition.getTabs()->renamed(m_probe.get());
    EXPECT_EQ(watch()->fieldItem(0)->text(List::NodeName), "Root > Probe");
    m_probe->setName(SbName("probe"));
    edition.refresh();
    EXPECT_EQ(watch()->fieldItem(0)->text(List::NodeName), "probe");
    m_probe = nullptr;
    EXPECT_EQ(watch()->fieldItem(0)->text(List::NodeName), "probe (deleted)");
}

TEST_F(EditionTest, RemovesWatchedRowsAndTellsOfTheLast)
{
    watchField("number");
    watchField("vector");
    QSignalSpy cleared(watch(), &SoFieldWatch::listCleared);
    QSignalSpy reveal(watch(), &SoFieldWatch::revealRequested);
    QTest::keyClick(watch(), Qt::Key_Delete); // no current row
    EXPECT_EQ(watch()->topLevelItemCount(), 2);
    const QPoint first = watch()->visualItemRect(watch()->topLevelItem(0)).center();
    QTest::mouseClick(watch()->viewport(), Qt::LeftButton, {}, first);
    QTest::mouseDClick(watch()->viewport(), Qt::LeftButton, {}, first);
    ASSERT_EQ(reveal.count(), 1);
    QTest::keyClick(watch(), Qt::Key_Delete);
    EXPECT_EQ(watch()->topLevelItemCount(), 1);
    EXPECT_EQ(cleared.count(), 0);
    edition.clear();
    EXPECT_EQ(cleared.count(), 1);
    edition.clear();
    EXPECT_EQ(cleared.count(), 1);
}

TEST_F(EditionTest, HandsContextMenusAndFocusToTheState)
{
    using Manager = SoMiraboStateManager;
    State state;
    State other;
    watch()->setFieldWatchState(&state);
    Manager::registerState("Other", &other);
    watch()->showContextMenu(QPoint(3, 4));
    EXPECT_EQ(state.asked, QPoint(3, 4));
    QFocusEvent focus(QEvent::FocusIn);
    QCoreApplication::sendEvent(watch(), &focus);
    EXPECT_EQ(Manager::getCurrentState(), "FieldWatchState");
    QCoreApplication::sendEvent(watch(), &focus);
    EXPECT_EQ(state.log, "+");
    Manager::setCurrentState("Other");
    EXPECT_EQ(state.log, "+-");
    edition.enterFieldWatchState();
    EXPECT_EQ(other.log, "+-");

    // What is not there ends the switch; the panel can be entered again.
    testing::internal::CaptureStderr();
    Manager::setCurrentState("Nobody");
    Manager::registerState("Null", nullptr);
    Manager::setCurrentState("Null");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[E] SoMiraboStateManager::setCurrentState: Error state not found\n"
              "[E] SoMiraboStateManager::setCurrentState: Error state is NULL\n");
    EXPECT_EQ(state.log, "+-+-");
    Manager::forget(nullptr);
    {
        State gone;
        Manager::registerState("Gone", &gone);
        Manager::setCurrentState("Gone");
    }
    EXPECT_EQ(Manager::getCurrentState(), "");
    testing::internal::CaptureStderr();
    Manager::setCurrentState("Gone");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[E] SoMiraboStateManager::setCurrentState: Error wrapper is NULL\n");
    edition.enterFieldWatchState();
    EXPECT_EQ(state.log, "+-+-+");
}

TEST_F(EditionTest, OffersWhatAFieldCanDoInAMenu)
{
    edition.showNode(m_probe.get(), nullptr, false);
    QSignalSpy ignores(&edition, &SoMiraboEdition::ignoreRequested);
    const auto choose = [this](const QString& wanted) {
        QStringList entries;
        QTimer::singleShot(0, [&entries, wanted] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            for (QAction* action : menu->actions()) {
                entries << (action->isEnabled() ? "+" : "-") + action->text().remove('&');
                if (entries.last() == "+" + wanted)
                    action->trigger();
            }
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QCoreApplication::sendEvent(list()->viewport(), &event);
        return entries.join(' ');
    };
    EXPECT_EQ(choose("Watch"),
              "+Copy Value -Paste Value +Edit -Reset to Default + +Watch +Set Ignored/Enable + "
              "+Show Catalog Parts +Columns");
    EXPECT_EQ(watch()->topLevelItemCount(), 1);
    choose("Set Ignored/Enable");
    EXPECT_EQ(ignores.count(), 1);
    choose("Show Catalog Parts");
    EXPECT_TRUE(mirabo::readShowCatalogPart());
    list()->chooseRow(row(*list(), "one"));
    EXPECT_EQ(choose("Watch"), "+Copy Value -Paste Value -Edit -Reset to Default + -Watch "
                               "+Set Ignored/Enable + +Show Catalog Parts +Columns");
    edition.clear();
    EXPECT_EQ(choose("Watch"), "+Show Catalog Parts +Columns");
}

TEST_F(EditionTest, KeepsTheLayoutOfTheWatch)
{
    {
        SoFieldWatch first;
        first.resize(1000, 200);
        first.show();
        first.setColumnWidth(List::FieldName, 111);
        first.setColumnWidth(List::NodeName, 0);
        first.saveColumnWidths();
    }
    mirabo::writeFieldWatchHeight(90);
    mirabo::releaseSettings();
    SoFieldWatch again;
    EXPECT_EQ(again.columnWidth(List::FieldName), 111);
    EXPECT_EQ(again.columnWidth(List::NodeName), 0);
    EXPECT_EQ(again.columnWidth(List::NodeType), 0);
    EXPECT_EQ(again.minimumHeight(), 90);
    EXPECT_EQ(again.storedWidth(List::FieldTypeColumn), -1);
    again.resize(800, 200);
    again.show();
    EXPECT_GT(again.columnWidth(List::FieldValue), 300); // fills the list still
}

TEST_F(EditionTest, MakesCommandsThatCanBeUndone)
{
    EXPECT_EQ(edition.makeOverrideCommand(true), nullptr);
    EXPECT_EQ(edition.makeIgnoreCommand(), nullptr);
    const SoRef<SoMaterial> material(new SoMaterial);
    material->setOverride(true);
    edition.showNode(material.get(), nullptr, false);
    std::unique_ptr<MrbCommand> command(edition.makeOverrideCommand(true));
    EXPECT_TRUE(command->execute());
    EXPECT_TRUE(material->isOverride());
    command->undo();
    EXPECT_FALSE(material->isOverride()); // intended: the opposite, not what it was
    command->redo();
    EXPECT_TRUE(material->isOverride());

    const SoField* field = edition.getSelectedField();
    ASSERT_NE(field, nullptr);
    command.reset(edition.makeIgnoreCommand());
    EXPECT_TRUE(command->execute());
    EXPECT_TRUE(field->isIgnored());
    command->undo();
    EXPECT_FALSE(field->isIgnored());
    command->redo();
    EXPECT_TRUE(field->isIgnored());
    std::unique_ptr<MrbCommand>(edition.makeIgnoreCommand())->execute();
    EXPECT_FALSE(field->isIgnored());
}

TEST_F(EditionTest, LetsANodeDieUnderEveryHolder)
{
    // Shown in a tab in view and in one behind it, watched, selected, and on two commands.
    watchField("number");
    edition.showNode(m_probe.get(), nullptr, true);
    edition.showNode(m_probe.get(), nullptr, true);
    watch()->setCurrentItem(watch()->topLevelItem(0));
    ASSERT_EQ(edition.getSelectedField(), &m_probe->number);
    std::unique_ptr<MrbCommand> overrides(edition.makeOverrideCommand(true));
    std::unique_ptr<MrbCommand> ignores(edition.makeIgnoreCommand());
    overrides->execute();
    ignores->execute();
    m_probe->number.setValue(12);
    pass();

    // Commands do not keep it alive, and do nothing from then on.
    QSignalSpy spy(&edition, &SoMiraboEdition::fieldSelected);
    EXPECT_EQ(m_probe->getRefCount(), 1);
    m_probe = nullptr;
    ignores->undo();
    overrides->undo();
    EXPECT_FALSE(overrides->execute());
    pass();
    EXPECT_EQ(edition.getSelectedField(), nullptr);
    ASSERT_GE(spy.count(), 1);
    EXPECT_EQ(spy.last().at(0).value<SoField*>(), nullptr);
    EXPECT_EQ(edition.getNode(), nullptr);
    EXPECT_EQ(edition.makeIgnoreCommand(), nullptr);
    EXPECT_EQ(edition.makeOverrideCommand(true), nullptr);
    EXPECT_EQ(watch()->fieldItem(0)->text(List::FieldValue), "12");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(edition.getTabs()->tabText(i), "Probe (deleted)");

    // A dead row can be chosen and removed, and nothing else.
    m_window.grab();
    const QPoint place = watch()->visualItemRect(watch()->topLevelItem(0)).center();
    QTest::mouseClick(watch()->viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(edition.getSelectedField(), nullptr);
    edition.addFieldWatch();
    QTest::keyClick(watch(), Qt::Key_Delete);
    EXPECT_EQ(watch()->topLevelItemCount(), 0);
    edition.getTabs()->tabClose(2);
    edition.getTabs()->tabClose(1);
    pass();
}

TEST_F(EditionTest, LetsAFieldDieUnderEveryHolder)
{
    // Selected, watched, in a tab behind another and on a command; its node lives on.
    SoRef<Declared> node(new Declared);
    edition.showNode(node.get(), nullptr, false);
    edition.addFieldWatch();
    const std::unique_ptr<MrbCommand> ignores(edition.makeIgnoreCommand());
    ignores->execute();
    EXPECT_TRUE(node->field->isIgnored());
    edition.showNode(m_probe.get(), nullptr, true);
    watch()->setCurrentItem(watch()->topLevelItem(0));
    m_watchDock->hide();
    ASSERT_EQ(edition.getSelectedField(), node->field.get());
    node->field.reset();
    EXPECT_EQ(edition.getSelectedField(), nullptr);
    EXPECT_EQ(edition.makeIgnoreCommand(), nullptr);
    ignores->undo();
    ignores->redo();
    m_watchDock->show();
    edition.getTabs()->setCurrentIndex(0);
    pass();
    EXPECT_EQ(watch()->fieldItem(0)->text(List::NodeName), "(deleted)");

    // The selected field is told of its death even when no row shows it any more.
    edition.getTabs()->setCurrentIndex(1);
    watchField("vector");
    watch()->setCurrentItem(watch()->topLevelItem(1));
    ASSERT_EQ(edition.getSelectedField(), &m_probe->vector);
    edition.getTabs()->tabClose(1);
    pass();
    for (const int index : {0, 1})
        watch()->chooseRow(watch()->topLevelItem(index));
    {
        const QSignalBlocker unheard(watch());
        watch()->deleteCurrent();
    }
    ASSERT_EQ(edition.getSelectedField(), &m_probe->vector);
    m_probe = nullptr;
    EXPECT_EQ(edition.getSelectedField(), nullptr);
}

TEST_F(EditionTest, TellsFieldsThatTheUserPicksFromThoseThatCameWithANode)
{
    QSignalSpy picked(&edition, &SoMiraboEdition::fieldPicked);
    watchField("number");
    EXPECT_EQ(picked.count(), 0); // it is the first one, selected already
    edition.showNode(m_probe.get(), nullptr, true);
    EXPECT_EQ(picked.count(), 0);
    const auto click = [](List* list, const char* field) {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(row(*list, field)).center());
    };
    click(list(), "vector");
    EXPECT_EQ(picked.takeLast().at(0).value<SoField*>(), &m_probe->vector);
    click(watch(), "number");
    EXPECT_EQ(picked.takeLast().at(0).value<SoField*>(), &m_probe->number);
    click(list(), "vector"); // current there all the time
    EXPECT_EQ(picked.takeLast().at(0).value<SoField*>(), &m_probe->vector);
    EXPECT_EQ(edition.getSelectedField(), &m_probe->vector);
    click(watch(), "number");
    QTest::keyClick(watch(), Qt::Key_Delete); // the last row of the watch
    EXPECT_EQ(picked.takeLast().at(0).value<SoField*>(), nullptr);
    edition.getTabs()->setCurrentIndex(0);
    EXPECT_EQ(picked.takeLast().at(0).value<SoField*>(), &m_probe->number);
}

TEST_F(EditionTest, OutlivesItsWindow)
{
    auto window = std::make_unique<QMainWindow>();
    auto* overviewDock = new QDockWidget(window.get());
    auto* watchDock = new QDockWidget(window.get());
    SoMiraboEdition other(overviewDock, watchDock);
    other.showNode(m_probe.get(), nullptr, false);
    window.reset();
    other.showNode(m_probe.get(), nullptr, true);
    other.bringUp(m_probe.get());
    other.addFieldWatch();
    other.refresh();
    other.clear();
    EXPECT_EQ(other.getNode(), nullptr);
    EXPECT_EQ(m_probe->number.getAuditors().getLength(), 0);
}
