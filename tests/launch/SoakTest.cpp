// The whole tool in use while another thread of the host edits without a pause.

#include "LaunchSupport.h"
#include "support/Passes.h"

#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoGroup.h>

#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <random>
#include <thread>

namespace {

/// Edits of every kind, in a thread of their own, each under the write lock. Without a pause, but
/// never so far ahead of the user that he would have nothing to do with it.
class EditingThread {
public:
    static constexpr int kEditsAStep = 100;

    EditingThread(SoSeparator* root, int edits)
        : m_root(root), m_edits(edits), m_thread([this] { run(); })
    {
    }
    ~EditingThread()
    {
        m_steps = m_edits; // it waits for nobody any more
        join();
    }
    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    bool isDone() const { return m_done; }
    /// The user has done something.
    void stepDone() { ++m_steps; }

private:
    void run()
    {
        for (int i = 1; i <= m_edits; ++i) {
            while (i / kEditsAStep > m_steps)
                std::this_thread::yield();
            const SoWriteLock lock;
            edit(i);
        }
        m_done = true;
    }

    void edit(int i)
    {
        const int last = m_root->getNumChildren() - 1;
        SoNode* child = m_root->getChild(static_cast<int>(m_random() % unsigned(last + 1)));
        switch (m_random() % 8) {
        case 0:
            if (last < 60)
                m_root->addChild(part());
            break;
        case 1:
            if (last < 60)
                m_root->insertChild(part(), last / 2);
            break;
        case 2:
            if (last > 20)
                m_root->removeChild(last / 3);
            break;
        case 3:
            m_root->replaceChild(last / 4, part());
            break;
        case 4:
            child->setName(i % 2 ? "odd" : "even");
            child->touch();
            break;
        case 5: { // a death that no notification tells of
            const bool was = m_root->enableNotify(false);
            if (last > 20)
                m_root->removeChild(last);
            m_root->enableNotify(was);
            m_root->touch();
            break;
        }
        default:
            if (child->isOfType(SoGroup::getClassTypeId()))
                move(static_cast<SoGroup*>(child), float(i));
        }
    }

    static SoSeparator* part()
    {
        auto* part = new SoSeparator;
        part->addChild(new SoTranslation);
        part->addChild(new SoCube);
        return part;
    }
    static void move(SoGroup* part, float to)
    {
        if (part->getNumChildren() > 0
            && part->getChild(0)->isOfType(SoTranslation::getClassTypeId()))
            static_cast<SoTranslation*>(part->getChild(0))->translation = SbVec3f(to, 0, 0);
    }

    SoSeparator* m_root; // Not owned.
    int m_edits;
    std::mt19937 m_random{7};
    std::atomic<int> m_steps{0};
    std::atomic<bool> m_done{false};
    std::thread m_thread;
};

/// Resident memory of the process in KiB; 0 where it is not known.
int residentMemory()
{
    std::ifstream statm("/proc/self/statm");
    long total = 0;
    long resident = 0;
    statm >> total >> resident;
    return static_cast<int>(resident * (sysconf(_SC_PAGESIZE) / 1024));
}

class SoakTest : public LaunchTest {
protected:
    static QTabWidget* tabs() { return window()->findChild<QTabWidget*>("SoTabNodeOverview"); }
    static QTreeWidget* fields()
    {
        return tabs()->currentWidget()->findChild<QTreeWidget*>("m_nodeOverviewList");
    }
    static QTreeWidget* watch() { return window()->findChild<QTreeWidget*>("m_fieldWatch"); }

    /// One thing that a user does.
    void use(int step)
    {
        const QTreeWidgetItem* root = tree()->topLevelItem(0);
        const int rows = root ? root->childCount() : 0;
        switch (step % 8) {
        case 0:
        case 1:
            if (rows > 0)
                tree()->setCurrentItem(root->child(step % rows));
            break;
        case 2:
            if (rows > 0)
                root->child(step % rows)->setExpanded(step % 16 == 2);
            break;
        case 3:
            if (fields()->topLevelItemCount() > 0)
                fields()->setCurrentItem(fields()->topLevelItem(0));
            tabs()->currentWidget()->findChild<QPushButton*>("m_watchButton")->click();
            break;
        case 4:
            tree()->verticalScrollBar()->setValue(step * 7 % 200);
            break;
        case 5:
            QTest::keyClick(tree(), Qt::Key_Down, step % 2 ? Qt::ShiftModifier : Qt::NoModifier);
            break;
        case 6:
            window()->grab();
            break;
        default:
            if (watch()->topLevelItemCount() > 8) {
                watch()->setCurrentItem(watch()->topLevelItem(0));
                QTest::keyClick(watch(), Qt::Key_Delete);
            }
            if (tabs()->count() > 3)
                QTest::mouseClick(tabs()->tabBar(), Qt::MiddleButton, {},
                                  tabs()->tabBar()->tabRect(0).center());
        }
        pass();
    }

    static int occurrences(const SoNode* node)
    {
        int count = 1;
        if (node->isOfType(SoGroup::getClassTypeId()))
            for (int i = 0; i < static_cast<const SoGroup*>(node)->getNumChildren(); ++i)
                count += occurrences(static_cast<const SoGroup*>(node)->getChild(i));
        return count;
    }
};

} // namespace

TEST_F(SoakTest, AnotherThreadEditsWhileTheToolIsUsed)
{
    const int edits = std::getenv("MIRABO_FULL") ? 1'000'000 : 20'000;
    for (int i = 0; i < 30; ++i)
        scene->addChild(new SoCube);
    hooks().m_mirabo_startNode(scene.get());
    window()->resize(1400, 900);
    tree()->expandAll();
    pass();
    RecordProperty("KiB at the start", residentMemory());
    EditingThread host(scene.get(), edits);
    int step = 0;
    while (!host.isDone()) {
        use(step++);
        host.stepDone();
    }
    host.join();
    RecordProperty("steps", step);
    RecordProperty("KiB at the end", residentMemory());
    const int expected = occurrences(scene.get());
    EXPECT_TRUE(support::passUntil([&] { return rowCount() == expected; }))
        << rowCount() << " rows for " << expected << " places";
    use(0);
    window()->grab();
}
