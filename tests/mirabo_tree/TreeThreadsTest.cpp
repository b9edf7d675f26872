// Other threads edit the graph while the tree shows it.

#include "TreeTestScene.h"

#include "support/ErrorGuard.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/SoGraphTopologyManager.h"

#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <latch>
#include <memory>
#include <random>
#include <thread>

namespace {

/// Edits a graph under the write lock, and what it has taken out without any.
class Editor {
public:
    Editor(SoGroup* root, unsigned seed) : m_random(seed)
    {
        m_groups.emplace_back(root);
        for (int i = 0; i < 8; ++i) {
            m_groups.emplace_back(new SoSeparator);
            root->addChild(m_groups.back().get());
        }
        for (int i = 0; i < 3; ++i) {
            m_holders.emplace_back(new FieldHolder);
            root->addChild(m_holders.back().get());
            m_kits.emplace_back(new SoShapeKit);
            root->addChild(m_kits.back().get());
        }
        m_first = root->getNumChildren();
    }

    void edit()
    {
        {
            const SoWriteLock lock;
            ASSERT_TRUE(lock);
            for (int i = 0; i <= below(3); ++i)
                editOnce();
        }
        // What nobody else knows needs no lock.
        for (const SoRef<SoNode>& node : m_private)
            node->setName(below(2) ? "mine" : "");
        if (m_private.size() > 5)
            m_private.clear();
    }

private:
    int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
    template <class T>
    T* any(const std::vector<SoRef<T>>& nodes)
    {
        return nodes[static_cast<std::size_t>(below(static_cast<int>(nodes.size())))].get();
    }
    SoNode* make()
    {
        if (below(3))
            return new SoCube;
        auto* pair = new SoSeparator;
        pair->addChild(new SoMaterial);
        pair->addChild(new SoCube);
        pair->setName("pair");
        return pair;
    }
    void keep(SoNode* node)
    {
        if (below(2) && node->getRefCount() == 1)
            m_private.emplace_back(node);
    }
    void editOnce()
    {
        SoGroup* group = any(m_groups);
        switch (below(8)) {
        case 0:
            editHolder(any(m_holders));
            break;
        case 1:
            any(m_kits)->setPart("shape", below(2) ? new SoCube : nullptr);
            break;
        case 2:
            group->setName(below(2) ? "group" : "");
            break;
        case 3:
            group->enableNotify(false);
            editGroup(group);
            editGroup(group);
            group->enableNotify(true);
            if (below(2))
                group->touch();
            else
                any(m_holders)->number = 1; // the next notification may come from elsewhere
            break;
        default:
            editGroup(group);
        }
    }
    void editGroup(SoGroup* group)
    {
        const int first = group == m_groups[0].get() ? m_first : 0; // what is edited stays
        const int count = group->getNumChildren() - first;
        switch (count > 6 ? 2 : below(4)) {
        case 0:
            group->addChild(make());
            break;
        case 1:
            group->insertChild(make(), first + below(count + 1));
            break;
        case 2:
            if (count > 0) {
                const int at = first + below(count);
                keep(group->getChild(at));
                group->removeChild(at);
            }
            break;
        default:
            if (count > 0)
                group->replaceChild(first + below(count), make());
        }
    }
    void editHolder(FieldHolder* holder)
    {
        const int count = holder->many.getNum();
        if (below(3) == 0)
            holder->one = below(2) ? make() : nullptr;
        else if (count < 5 && below(2))
            holder->many.insertNode(make(), below(count + 1));
        else if (count > 0)
            holder->many.removeNode(below(count));
    }

public:
    /// Says what was left unsaid.
    void speak()
    {
        const SoWriteLock lock;
        for (const SoRef<SoGroup>& group : m_groups)
            group->touch();
    }

private:
    std::mt19937 m_random;
    int m_first = 0;
    std::vector<SoRef<SoGroup>> m_groups;
    std::vector<SoRef<FieldHolder>> m_holders;
    std::vector<SoRef<SoShapeKit>> m_kits;
    std::vector<SoRef<SoNode>> m_private;
};

/// MIRABO_TREE_EDITS asks for longer runs.
int edits()
{
    const char* text = std::getenv("MIRABO_TREE_EDITS");
    return text ? std::atoi(text) : 3000;
}

/// Does with the tree what a user does.
void useTree(SoMiraboTreeView& view, std::mt19937& random)
{
    QTreeWidgetItem* item = view.itemAt(40, static_cast<int>(random() % 400));
    switch (random() % 6) {
    case 0:
        if (item)
            view.setCurrentItem(item);
        break;
    case 1:
        if (item)
            item->setExpanded(!item->isExpanded());
        break;
    case 2:
        QTest::keyClicks(&view, "cub");
        break;
    case 3:
        view.resizeAllColumns();
        break;
    case 4:
        view.showReferencesOfCurrent();
        break;
    default:
        view.viewport()->update();
    }
}

QString textOf(const QTreeWidgetItem* item, int column)
{
    return item->text(column);
}

class TreeThreads : public TreeTest, public ::testing::WithParamInterface<int> {};

} // namespace

TEST_P(TreeThreads, FollowsEditorsOfOtherThreads)
{
    std::vector<std::unique_ptr<Editor>> editors;
    const SoRef<SoGroup> container(new SoSeparator);
    container->addChild(root.get());
    view.setContainer(container.get());
    for (int i = 0; i < GetParam(); ++i) {
        SoGroup* part = i == 2 ? container.get() : new SoSeparator; // its top-level rows
        if (part != container)
            root->addChild(part);
        editors.push_back(std::make_unique<Editor>(part, static_cast<unsigned>(i) + 1));
    }
    view.show();
    view.expandAll();
    pass();
    std::atomic<int> running{GetParam()};
    std::vector<std::thread> threads;
    for (const auto& editor : editors)
        threads.emplace_back([&running, &editor] {
            for (int i = 0; i < edits(); ++i)
                editor->edit();
            editor->speak();
            --running;
        });
    std::mt19937 random(7);
    while (running > 0) {
        useTree(view, random);
        pass();
    }
    for (std::thread& thread : threads)
        thread.join();
    // The last pass may have met an editor and put the comparison off.
    for (int i = 0; view.context().changedElsewhere && i < 10000; ++i)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(check(), "");
    std::thread([&editors] { editors.clear(); }).join(); // and what is left of the private nodes
    view.grab();
    EXPECT_EQ(check(), "");
}

INSTANTIATE_TEST_SUITE_P(Editors, TreeThreads, ::testing::Values(1, 2, 3));

TEST_F(TreeTest, ComparesWhatAnotherThreadChanged)
{
    root->addChild(new SoSeparator);
    QSignalSpy structure(&view, &SoMiraboTreeView::outsideStructureChange);
    std::thread([this] {
        const SoWriteLock lock;
        root->addChild(new SoSeparator);
        root->removeChild(0);
    }).join();
    EXPECT_EQ(structure.size(), 0); // nothing of the user interface in that thread
    pass();
    EXPECT_EQ(check(), "");
    EXPECT_EQ(view.rootItem()->childCount(), 1);
    EXPECT_EQ(structure.size(), 1);
    std::thread([this] {
        const SoWriteLock lock;
        root.reset();
    }).join();
    view.grab();
    pass();
    EXPECT_EQ(view.topLevelItemCount(), 0);
}

TEST_F(TreeTest, ReportsAChangeInAnotherThreadWithoutTheLockOnce)
{
    const auto errors = support::expectErrors();
    std::thread([this] {
        root->addChild(new SoSeparator);
        root->addChild(new SoCube);
    }).join();
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(errors.contains("without the write lock"));
    pass();
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, GoesOnWhileAnEditorWaitsForTheUserInterface)
{
    auto* group = new SoSeparator;
    group->setName("group");
    root->addChild(group);
    view.show();
    view.expandAll();
    pass();
    std::latch edited(1);
    std::latch answered(1);
    std::thread editor([&] {
        const SoWriteLock lock;
        group->addChild(new SoCube);
        edited.count_down();
        answered.wait(); // holding the lock
    });
    edited.wait();
    view.grab();
    QTest::keyClicks(&view, "sep");
    view.setCurrentItem(row(group));
    EXPECT_EQ(textOf(row(group), SoTreeViewItem::Type), "Separator");
    EXPECT_EQ(textOf(row(group), SoTreeViewItem::Name), "");
    QSignalSpy chosen(&view, &SoMiraboTreeView::itemChosen);
    pass();
    EXPECT_EQ(chosen.size(), 0);
    answered.count_down();
    editor.join();
    for (int i = 0; chosen.empty() && i < 10000; ++i)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(chosen.size(), 1);
    EXPECT_EQ(textOf(row(group), SoTreeViewItem::Name), "group");
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, ShowsTheSceneThatAnotherThreadPutsIntoTheContainer)
{
    view.setSceneGraph(nullptr);
    const SoRef<SoSeparator> container(new SoSeparator);
    view.topologyManager().attach(container.get());
    const SoRef<SoSeparator> first(new SoSeparator);
    const SoRef<SoSeparator> second(new SoSeparator);
    second->addChild(new SoCube);
    const auto elsewhere = [&](auto edit) {
        std::thread([&] {
            const SoWriteLock lock;
            edit();
        }).join();
        view.grab();
        pass();
        EXPECT_EQ(check(), "");
    };
    elsewhere([&] { container->addChild(first.get()); });
    EXPECT_EQ(view.getRoot(), first.get());
    elsewhere([&] { container->replaceChild(0, second.get()); });
    EXPECT_EQ(view.getRoot(), second.get());
    elsewhere([&] { container->removeAllChildren(); });
    EXPECT_EQ(view.getRoot(), nullptr);
}
