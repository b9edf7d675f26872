// Panels on a graph that another thread of the host edits, and on values that changed unheard.

#include "OverviewSupport.h"
#include "support/Passes.h"
#include "support/WriteLocked.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/overview/SoTabNodeOverview.h"

#include <kalmyr/io/SoWriteLock.h>

#include <QCheckBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QMainWindow>
#include <QScrollBar>
#include <QTest>
#include <QThread>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>

namespace {

using List = SoMiraboList;

/// Edits once in another thread, under the write lock.
void editElsewhere(const std::function<void()>& edit)
{
    std::thread([&edit] {
        const SoWriteLock lock;
        ASSERT_TRUE(lock);
        edit();
    }).join();
}

/// Both panels in a window, on the screen.
class PanelThreads : public OverviewTest {
protected:
    PanelThreads()
    {
        m_window.addDockWidget(Qt::LeftDockWidgetArea, m_overviewDock);
        m_window.addDockWidget(Qt::RightDockWidgetArea, m_watchDock);
        m_window.resize(1200, 600);
        show(m_window);
    }

    SoNodeOverview* overview() const { return edition.getTabs()->currentOverview(); }
    List* list() const { return overview()->getList(); }
    SoFieldWatch* watch() const { return edition.getWatch(); }
    void watchField(SoNode* node, const char* name)
    {
        edition.showNode(node, nullptr, false);
        list()->chooseRow(row(*list(), name));
        edition.addFieldWatch();
    }
    /// Passes of the event loop until it is so; a hang reaches the limit.
    static bool waitFor(const std::function<bool()>& isSo) { return support::passUntil(isSo); }

    QMainWindow m_window;
    QDockWidget* m_overviewDock = new QDockWidget(&m_window);
    QDockWidget* m_watchDock = new QDockWidget(&m_window);
    SoMiraboEdition edition{m_overviewDock, m_watchDock};
};

} // namespace

TEST_F(PanelThreads, ANodeDiesInAnotherThread)
{
    m_probe->number.setValue(42);
    watchField(m_probe.get(), "number");
    pass();
    ASSERT_EQ(edition.getSelectedField(), &m_probe->number);
    std::vector<QThread*> told; // where each signal was emitted
    const auto tell = [&told] { told.push_back(QThread::currentThread()); };
    QObject::connect(&edition, &SoMiraboEdition::fieldSelected, &edition, tell,
                     Qt::DirectConnection);
    QObject::connect(overview(), &SoNodeOverview::nodeDied, overview(), tell, Qt::DirectConnection);
    QObject::connect(watch(), &List::fieldDied, watch(), tell, Qt::DirectConnection);
    editElsewhere([this] { m_probe = nullptr; });

    // The pointers are gone at once; what the widgets say follows.
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(edition.getSelectedField(), nullptr);
    EXPECT_EQ(edition.getNode(), nullptr);
    EXPECT_EQ(watch()->fieldItem(0)->getField(), nullptr);
    EXPECT_FALSE(watch()->fieldItem(0)->isDisabled());
    m_window.grab();
    pass();
    EXPECT_EQ(edition.getTabs()->tabText(0), "Probe (deleted)");
    for (const List* shown : {static_cast<List*>(watch()), list()}) {
        EXPECT_EQ(value(*shown, "number"), "42");
        EXPECT_EQ(row(*shown, "number")->text(List::NodeName), "(deleted)");
        EXPECT_TRUE(row(*shown, "number")->isDisabled());
    }
    ASSERT_GE(told.size(), 3u);
    for (const QThread* thread : told)
        EXPECT_EQ(thread, QCoreApplication::instance()->thread());
    QTest::keyClick(watch(), Qt::Key_Delete);
    edition.clear();
}

TEST_F(PanelThreads, AFieldDiesInAnotherThreadBeforeItsNode)
{
    SoRef<Declared> node(new Declared);
    watchField(node.get(), "declared");
    node->field->setValue(3);
    pass();
    editElsewhere([&] { node->field.reset(); });
    EXPECT_EQ(edition.getSelectedField(), nullptr);
    edition.clear(); // before anybody was told
    edition.showNode(m_probe.get(), nullptr, false);
    pass();
    EXPECT_EQ(edition.getNode(), m_probe.get());
    node = nullptr;
    EXPECT_EQ(value(*list(), "number"), "1.5");
}

TEST_F(PanelThreads, RowsGoBetweenADeathAndItsNews)
{
    SoRef<Declared> node(new Declared);
    watchField(node.get(), "declared");
    edition.showNode(m_probe.get(), nullptr, true);
    editElsewhere([&] { node->field.reset(); });
    watch()->setCurrentItem(watch()->topLevelItem(0));
    watch()->deleteCurrent();
    node = nullptr; // whoever looked after the row hears of this
    pass();
    EXPECT_EQ(watch()->topLevelItemCount(), 0);
    EXPECT_EQ(edition.getTabs()->tabText(0), "Probe (deleted)");
}

TEST_F(PanelThreads, NodesDieWithoutTheLockWhileTheyAreShown)
{
    // As those do that were taken out of the graph before, and that the host lets go of later.
    std::atomic<Probe*> unwanted{nullptr};
    std::atomic<bool> done{false};
    std::thread host([&] {
        while (!done)
            if (const Probe* node = unwanted.exchange(nullptr))
                node->unref();
            else
                std::this_thread::yield();
    });
    for (int round = 0; round < 200; ++round) {
        auto* node = new Probe;
        node->ref();
        node->number.setValue(static_cast<float>(round));
        watchField(node, "number");
        unwanted = node;
        while (edition.getNode()) {
            watch()->fieldItem(watch()->topLevelItemCount() - 1)->copiedValue();
            m_window.grab();
            list()->updateField(nullptr);
            if (round % 3 == 0)
                edition.refresh();
        }
        if (round % 2)
            delete watch()->topLevelItem(0);
        if (round % 5 == 0)
            edition.showNode(m_probe.get(), nullptr, false);
        pass();
    }
    done = true;
    host.join();
    pass();
    const SoFieldItem* last = watch()->fieldItem(watch()->topLevelItemCount() - 1);
    EXPECT_EQ(last->text(List::FieldValue), "199");
    EXPECT_TRUE(last->isDisabled());
}

TEST_F(PanelThreads, TheUserGoesOnWhileAnotherThreadHoldsTheLock)
{
    watchField(m_probe.get(), "number");
    pass();
    const SoRef<Probe> other(new Probe);
    {
        support::WriteLocked editor;
        m_window.grab();
        EXPECT_EQ(value(*list(), "number"), "1.5") << "what it said last";
        edition.showNode(other.get(), nullptr, true);
        m_overviewDock->hide();
        m_overviewDock->show();
        overview()->getList()->updateField(nullptr);
        m_window.grab();
        auto* name = overview()->findChild<QLineEdit*>("m_nodeNameValue");
        QTest::keyClicks(name, "typed");
        watch()->setCurrentItem(watch()->topLevelItem(0));
        watch()->copyCurrentValue();
        delete watch()->topLevelItem(0);
        EXPECT_EQ(edition.getNode(), m_probe.get());
        EXPECT_STREQ(m_probe->getName().getString(), "");
    }
    ASSERT_TRUE(waitFor(
        [&] { return edition.getNode() == other.get() && m_probe->getName() == SbName("typed"); }));
    EXPECT_EQ(value(*list(), "number"), "1.5");
    editElsewhere([&] { other->number.setValue(8); });
    pass();
    EXPECT_EQ(value(*list(), "number"), "8");
}

TEST_F(PanelThreads, PanelsDieWhileAnotherThreadHoldsTheLock)
{
    const int before = m_probe->getAuditors().getLength();
    auto window = std::make_unique<QMainWindow>();
    auto* overviews = new QDockWidget(window.get());
    auto* watches = new QDockWidget(window.get());
    window->addDockWidget(Qt::LeftDockWidgetArea, overviews);
    window->addDockWidget(Qt::LeftDockWidgetArea, watches);
    auto second = std::make_unique<SoMiraboEdition>(overviews, watches);
    show(*window);
    second->showNode(m_probe.get(), nullptr, false);
    second->addFieldWatch();
    {
        support::WriteLocked editor;
        second.reset();
        window.reset();
    }
    editElsewhere([this] { m_probe->number.setValue(4); }); // nobody is told any more
    ASSERT_TRUE(waitFor([&] { return m_probe->getAuditors().getLength() == before; }));
    EXPECT_EQ(m_probe->number.getAuditors().getLength(), 0);
}

TEST_F(PanelThreads, ShowsWhatChangedUnheardWithTheNextChange)
{
    watchField(m_probe.get(), "number");
    pass();
    const auto change = [this](float to) {
        m_probe->number.enableNotify(false);
        m_probe->number.setValue(to);
        m_probe->number.setIgnored(true);
        m_probe->number.enableNotify(true);
    };
    const auto expect = [this](const char* text) {
        EXPECT_EQ(value(*list(), "number"), text);
        EXPECT_EQ(value(*watch(), "number"), text);
        EXPECT_FALSE(row(*watch(), "number")->icon(List::Ignored).isNull());
    };
    change(2);
    pass();
    m_probe->vector.setValue(0, 0, 0); // a neighbour
    pass();
    expect("2");
    change(3);
    m_probe->touch();
    pass();
    expect("3");
    // The whole node is silent; its fields tell those who listen to them.
    m_probe->enableNotify(false);
    m_probe->setOverride(true);
    change(4);
    m_probe->number.setValue(5);
    m_probe->enableNotify(true);
    pass();
    expect("5");
    // Without any further change: when the panels are shown again, and when they are refreshed.
    change(6);
    m_probe->setName("Named");
    m_overviewDock->hide();
    m_watchDock->hide();
    m_overviewDock->show();
    m_watchDock->show();
    pass();
    expect("6");
    EXPECT_TRUE(overview()->findChild<QCheckBox*>("m_overrideCheckBox")->isChecked());
    EXPECT_EQ(overview()->findChild<QLineEdit*>("m_nodeNameValue")->text(), "Named");
    change(7);
    m_probe->enableNotify(false);
    m_probe->setOverride(false);
    m_probe->enableNotify(true);
    edition.refresh();
    expect("7");
    EXPECT_FALSE(overview()->findChild<QCheckBox*>("m_overrideCheckBox")->isChecked());
}

TEST_F(PanelThreads, AMovingNodeLeavesTheUserAlone)
{
    m_window.resize(1200, 300);
    edition.showNode(m_probe.get(), nullptr, false);
    watchField(m_probe.get(), "vector");
    list()->chooseRow(row(*list(), "many"));
    pass();
    list()->verticalScrollBar()->setValue(list()->verticalScrollBar()->maximum());
    const int scrolled = list()->verticalScrollBar()->value();
    auto* name = overview()->findChild<QLineEdit*>("m_nodeNameValue");
    name->setFocus();
    QTest::keyClicks(name, "abc");
    name->setCursorPosition(1);
    for (int frame = 0; frame < 50; ++frame) {
        m_probe->vector.setValue(static_cast<float>(frame), 0, 0);
        m_probe->setOverride(frame % 2 != 0);
        pass();
    }
    EXPECT_EQ(name->text(), "abc");
    EXPECT_EQ(name->cursorPosition(), 1);
    EXPECT_EQ(list()->verticalScrollBar()->value(), scrolled);
    EXPECT_EQ(list()->currentFieldItem(), row(*list(), "many"));
    EXPECT_EQ(edition.getSelectedField(), &m_probe->many);
    EXPECT_EQ(value(*watch(), "vector"), "49 0 0");
}

TEST_F(PanelThreads, ShowsWhatAThreadThatEditsAllTheTimeLeft)
{
    constexpr int kEdits = 20'000;
    const int edits = std::getenv("MIRABO_FULL") ? 1'000'000 : kEdits;
    watchField(m_probe.get(), "number");
    watchField(m_probe.get(), "vector");
    std::atomic<bool> done{false};
    SoRef<Probe> doomed(new Probe);
    std::thread host([&] {
        for (int i = 1; i <= edits; ++i) {
            const SoWriteLock lock;
            m_probe->number.setValue(static_cast<float>(i));
            m_probe->vector.setValue(static_cast<float>(i), 0, 0);
            m_probe->many.set1Value(i % 7, static_cast<float>(i));
            m_probe->setName(i % 2 ? "odd" : "even");
            if (i % 50 == 0)
                doomed = new Probe; // the last one dies, shown or not
        }
        done = true;
    });
    for (int step = 0; !done; ++step) {
        SoRef<Probe> shown;
        {
            const mirabo::GraphReading graph;
            if (graph)
                shown = step % 2 ? doomed : m_probe;
        }
        if (shown)
            edition.showNode(shown.get(), nullptr, step % 16 == 0);
        {
            const mirabo::GraphReading graph;
            if (graph)
                shown = nullptr; // the last reference goes where nobody edits
            else
                ASSERT_TRUE(waitFor([&] { return static_cast<bool>(mirabo::GraphReading()); }));
        }
        list()->chooseRow(row(*list(), "number"));
        if (step % 4 == 0)
            edition.addFieldWatch();
        if (step % 8 == 0)
            m_watchDock->setVisible(!m_watchDock->isVisible());
        if (step % 8 == 3)
            m_window.grab();
        if (edition.getTabs()->count() > 4)
            edition.getTabs()->tabClose(step % 4);
        if (watch()->topLevelItemCount() > 20)
            delete watch()->topLevelItem(step % 18 + 2);
        pass();
    }
    host.join();
    m_watchDock->show();
    edition.showNode(m_probe.get(), nullptr, false);
    pass();
    EXPECT_EQ(value(*list(), "number").toFloat(), static_cast<float>(edits));
    // The last pass may have met the editor and put the row off.
    EXPECT_TRUE(waitFor([&] {
        return watch()->fieldItem(0)->text(List::FieldValue).toFloat() == static_cast<float>(edits);
    }));
    edition.clear();
    pass();
}
