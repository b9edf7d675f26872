#include "TreeTestScene.h"

#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/NodeCategory.h"

#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QAbstractItemModelTester>
#include <QIdentityProxyModel>

#include <cstdlib>
#include <random>

namespace {

/// Random edits of a graph with shared groups, holders, node kits, files, inlines and VRML groups,
/// and of the container that holds the root, if there is one. Refused edits (cycles) post errors in
/// the toolkit, so the script looks first.
class Script {
public:
    Script(SoMiraboTreeView& view, SoGroup* root, unsigned seed, SoGroup* container = nullptr)
        : m_view(view), m_root(root), m_container(container), m_random(seed)
    {
        SoWWWInline::setFetchURLCallBack(fetch<SoWWWInline>, this);
        SoVRMLInline::setFetchURLCallBack(fetch<SoVRMLInline>, this);
        m_groups.emplace_back(root);
        for (int i = 0; i < 12; ++i)
            m_groups.emplace_back(i % 3 ? new SoSeparator : static_cast<SoGroup*>(new SoVRMLGroup));
        for (int i = 0; i < 6; ++i) {
            m_holders.emplace_back(new FieldHolder);
            m_leaves.emplace_back(new SoCube);
        }
        for (int i = 0; i < 3; ++i) {
            m_kits.emplace_back(new SoShapeKit);
            m_contents.emplace_back(new SoFile);
            auto* web = new SoWWWInline;
            web->name = "http://host/web";
            m_contents.emplace_back(web);
            auto* link = new SoVRMLInline;
            link->url.set1Value(0, "http://host/link");
            m_contents.emplace_back(link);
        }
    }
    ~Script()
    {
        SoWWWInline::setFetchURLCallBack(nullptr, nullptr);
        SoVRMLInline::setFetchURLCallBack(nullptr, nullptr);
    }

    void step()
    {
        // The number of occurrences may explode: then it is time to tidy up.
        if (m_view.context().index.itemCount() > kMostRows)
            m_groups[below(m_groups.size())]->removeAllChildren();
        if (m_container && below(6) == 0) {
            editTops();
            return;
        }
        switch (below(5)) {
        case 0:
            editKit(m_kits[below(m_kits.size())].get());
            break;
        case 1:
            editHolder(m_holders[below(m_holders.size())].get());
            break;
        case 2:
            editOther();
            break;
        default:
            editGroup(m_groups[below(m_groups.size())].get());
        }
    }

    /// An edit to be made in the midst of another one. Kits are left alone: they make parts in
    /// several edits, and hand them out in the end.
    void stepInside()
    {
        if (m_container && below(4) == 0)
            editTops();
        else
            editGroup(m_groups[below(m_groups.size())].get());
    }

    template <class N>
    int below(N n)
    {
        return static_cast<int>(m_random() % static_cast<unsigned>(n));
    }

private:
    void editGroup(SoGroup* group)
    {
        const int count = group->getNumChildren();
        switch (below(10)) {
        case 0:
        case 1:
        case 2:
            add(group, count);
            break;
        case 3:
        case 4:
            add(group, below(count + 1));
            break;
        case 5:
        case 6:
            if (count > 0)
                group->removeChild(below(count));
            break;
        case 7:
            if (const SoRef<SoNode> node = pick(group); node && count > 0)
                group->replaceChild(below(count), node.get());
            break;
        case 8:
            if (below(4) == 0)
                group->removeAllChildren();
            break;
        default:
            shuffle(group);
        }
    }

    /// The root stays, though other nodes, or itself once more, may come before it.
    void editTops()
    {
        std::vector<SoNode*> nodes = m_container->getChildren()->getNodes();
        const int at = below(nodes.size());
        const bool mayGo = nodes[static_cast<std::size_t>(at)] != m_root
                           || std::count(nodes.begin(), nodes.end(), m_root) > 1;
        switch (below(6)) {
        case 0:
        case 1:
            add(m_container, below(nodes.size() + 1));
            break;
        case 2:
            if (mayGo)
                m_container->removeChild(at);
            break;
        case 3:
            if (const SoRef<SoNode> node = pick(m_container); node && mayGo)
                m_container->replaceChild(at, node.get());
            break;
        case 4:
            std::shuffle(nodes.begin(), nodes.end(), m_random);
            if (nodes.back() != m_root)
                nodes.pop_back();
            m_container->setChildren(nodes);
            break;
        default:
            if (!m_container->isNotifyEnabled())
                break;
            m_container->enableNotify(false);
            for (int i = 0; i < 3; ++i)
                editTops();
            if (below(2))
                editGroup(m_groups[below(m_groups.size())].get());
            if (below(3) == 0)
                QCoreApplication::processEvents();
            m_container->enableNotify(true);
            m_container->touch();
        }
    }

    void editHolder(FieldHolder* holder)
    {
        const int count = holder->many.getNum();
        const SoRef<SoNode> node = pick(holder);
        if (below(3) == 0 && node)
            holder->one = below(3) ? node.get() : nullptr;
        else if (below(2) && node && count < kWidest)
            holder->many.insertNode(node.get(), below(count + 1));
        else if (count > 0)
            holder->many.removeNode(below(count));
    }

    void editKit(SoShapeKit* kit)
    {
        const bool drop = below(3) == 0;
        switch (below(4)) {
        case 0:
            kit->setPart("transform", drop ? nullptr : new SoTransform);
            break;
        case 1:
            if (below(3))
                kit->getPart("appearance.material");
            else
                kit->setPart("appearance", nullptr);
            break;
        case 2:
            kit->setPart("shape", drop ? nullptr : new SoCube);
            break;
        default:
            editList(static_cast<SoNodeKitListPart*>(kit->getPart("childList")));
        }
    }

    void editList(SoNodeKitListPart* list)
    {
        SoShapeKit* entry = m_kits[below(m_kits.size())].get();
        const int count = list->getNumChildren();
        if (count < 2 && !list->isAtOrBelow(entry))
            list->insertChild(entry, below(count + 1));
        else if (count > 0)
            list->removeChild(below(count));
    }

    /// Comes in the midst of a pass of the event loop; one of three fetches fails.
    template <class Inline>
    static void fetch(const SbString&, void* data, Inline* link)
    {
        auto* self = static_cast<Script*>(data);
        if (self->below(3))
            link->setChildData(self->pick(link).get());
    }

    /// Another content, none, or word that there is a new one.
    void editContent(SoNode* node)
    {
        const SoRef<SoNode> content = below(3) ? pick(node) : SoRef<SoNode>();
        if (below(4) == 0)
            node->touch();
        else if (node->isOfType(SoFile::getClassTypeId()))
            static_cast<SoFile*>(node)->setChildData(content.get());
        else if (node->isOfType(SoWWWInline::getClassTypeId()))
            static_cast<SoWWWInline*>(node)->setChildData(content.get());
        else
            static_cast<SoVRMLInline*>(node)->setChildData(content.get());
    }

    void editOther()
    {
        SoGroup* group = m_groups[below(m_groups.size())].get();
        switch (below(7)) {
        case 0:
        case 4:
            editContent(m_contents[below(m_contents.size())].get());
            break;
        case 1: // unseen, and found with the next report
            group->enableNotify(false);
            editGroup(group);
            editGroup(group);
            group->enableNotify(true);
            group->touch();
            break;
        case 5:
            editInSilence();
            break;
        case 6:
            group->setName(below(2) ? "named" : "");
            break;
        default:
            turnOver(m_groups[below(m_groups.size() - 1) + 1].get());
        }
    }

    /// Edits anywhere while some nodes are silent, one of them perhaps shown in that state first.
    /// Then each tells once of itself, in any order.
    void editInSilence()
    {
        std::vector<SoNode*> silent;
        for (int i = 0; i <= below(3); ++i) {
            SoNode* node = below(3) ? static_cast<SoNode*>(m_groups[below(m_groups.size())].get())
                                    : m_holders[below(m_holders.size())].get();
            node->enableNotify(false);
            silent.push_back(node);
        }
        for (int i = 0; i < 4; ++i) {
            editGroup(m_groups[below(m_groups.size())].get());
            editHolder(m_holders[below(m_holders.size())].get());
            if (below(3) == 0)
                QCoreApplication::processEvents(); // rows of dead nodes go meanwhile
        }
        std::shuffle(silent.begin(), silent.end(), m_random);
        for (SoNode* node : silent)
            node->enableNotify(true);
        for (SoNode* node : silent)
            node->touch();
    }

    /// Disables a node or enables it again.
    void turnOver(SoNode* node)
    {
        if (const auto known = m_view.context().disabled.find(node))
            mirabo::enableNode(m_view, *known);
        else if (const auto saved = mirabo::disableNode(m_view, node); saved && below(2))
            m_undoable = saved;
    }

    /// Any node that `parent` may hold, or null.
    SoRef<SoNode> pick(const SoNode* parent)
    {
        SoRef<SoNode> node;
        switch (below(8)) {
        case 0:
        case 1:
            node = m_groups[below(m_groups.size())];
            break;
        case 2:
            node = m_holders[below(m_holders.size())];
            break;
        case 3:
            node = m_kits[below(m_kits.size())];
            break;
        case 4:
            node = m_contents[below(m_contents.size())];
            break;
        case 5:
            node = new SoCube;
            break;
        default:
            node = m_leaves[below(m_leaves.size())];
        }
        return parent->isAtOrBelow(node.get()) ? SoRef<SoNode>() : node;
    }
    void add(SoGroup* group, int index)
    {
        if (group->getNumChildren() > kWidest)
            return;
        if (const SoRef<SoNode> node = pick(group))
            group->insertChild(node.get(), index);
    }
    void shuffle(SoGroup* group)
    {
        std::vector<SoNode*> nodes = group->getChildren()->getNodes();
        std::shuffle(nodes.begin(), nodes.end(), m_random);
        if (!nodes.empty() && below(2))
            nodes.pop_back();
        group->setChildren(nodes);
    }

    static constexpr int kWidest = 4;
    static constexpr std::size_t kMostRows = 3000;
    SoMiraboTreeView& m_view;
    SoNode* m_root;
    SoGroup* m_container;
    std::mt19937 m_random;
    std::vector<SoRef<SoGroup>> m_groups;
    std::vector<SoRef<FieldHolder>> m_holders;
    std::vector<SoRef<SoShapeKit>> m_kits;
    std::vector<SoRef<SoNode>> m_contents; ///< files and inlines
    std::vector<SoRef<SoNode>> m_leaves;
    std::shared_ptr<const mirabo::SavedLinks> m_undoable;
};

/// Another program's sensor that edits the graph when it hears of a change.
class Meddler {
public:
    explicit Meddler(Script& script, SoNode* root) : m_script(script)
    {
        m_sensor.setPriority(0);
        m_sensor.attach(root);
    }

private:
    static void meddle(void* data, SoSensor*)
    {
        auto* self = static_cast<Meddler*>(data);
        if (self->m_busy || self->m_script.below(20) > 0)
            return;
        self->m_busy = true;
        self->m_script.stepInside();
        self->m_busy = false;
    }

    Script& m_script;
    SoNodeSensor m_sensor{&Meddler::meddle, this};
    bool m_busy = false;
};

/// MIRABO_TREE_STEPS asks for longer runs.
int steps()
{
    const char* text = std::getenv("MIRABO_TREE_STEPS");
    return text ? std::atoi(text) : 1000;
}

} // namespace

/// Seeds 3 and above have a container with further top-level rows.
class TreeRandomEdits : public TreeTest, public ::testing::WithParamInterface<unsigned> {
protected:
    void useContainer(SoMiraboTreeView& tree)
    {
        if (GetParam() < 3)
            return;
        if (!container)
            container = new SoSeparator;
        if (container->getNumChildren() == 0)
            container->addChild(root.get());
        tree.setContainer(container.get());
    }

    SoRef<SoGroup> container;
};

TEST_P(TreeRandomEdits, LeaveTheTreeEqualToTheGraph)
{
    if (GetParam() % 2 == 0) // a VRML97 world
        root = new SoVRMLGroup;
    useContainer(view);
    view.setSceneGraph(root.get());
    Script script(view, root.get(), GetParam(), container.get());
    const Meddler meddler(script, container ? container.get() : root.get());
    view.show();
    std::mt19937 random(GetParam());
    for (int i = 0; i < steps(); ++i) {
        script.step();
        ASSERT_EQ(check(), "") << "after step " << i;
        if (i % 10 == 0) {
            const auto item = view.itemAt(5, static_cast<int>(random() % 400));
            if (item)
                view.setCurrentItem(item);
            if (item)
                item->setExpanded(random() % 4 != 0);
            pass();
        }
    }
    ASSERT_EQ(view.getRoot(), root.get());
}

namespace {

/// The rows of a view that the filter should show, from those of one without a filter. Disabled
/// nodes are a view's own affair, and revealed rows stand against the filter.
std::string filterFault(const SoTreeViewItem* shown, const SoTreeViewItem* all, int mask)
{
    std::vector<SoTreeViewItem*> expected;
    for (int i = 0; i < all->childCount(); ++i) {
        const int category = static_cast<int>(mirabo::categoryOf(all->childItem(i)->getNodeType()));
        if (category == static_cast<int>(mirabo::NodeCategory::Dragger) || (category & mask))
            expected.push_back(all->childItem(i));
    }
    std::size_t next = 0;
    for (int i = 0; i < shown->childCount(); ++i) {
        const SoTreeViewItem* row = shown->childItem(i);
        if (row->isDisabledNode() || row->isRevealed())
            continue;
        if (next == expected.size() || expected[next]->getNode() != row->getNode()
            || expected[next]->getSourceField() != row->getSourceField())
            return "a row that is not expected, number " + std::to_string(i);
        if (const std::string fault = filterFault(row, expected[next++], mask); !fault.empty())
            return fault;
    }
    return next == expected.size() ? "" : "a row is missing";
}

/// Masks that hide nothing, some, and nearly everything.
int maskFrom(std::mt19937& random)
{
    const int mask = static_cast<int>(random()) & mirabo::kAllCategories;
    const int groups = static_cast<int>(mirabo::NodeCategory::Group)
                       | static_cast<int>(mirabo::NodeCategory::Separator);
    switch (random() % 4) {
    case 0:
        return mirabo::kAllCategories;
    case 1:
        return mask;
    default:
        return mask | groups;
    }
}

} // namespace

TEST_P(TreeRandomEdits, ShowWhatTheFilterShows)
{
    SoMiraboTreeView unfiltered;
    unfiltered.setSceneGraph(root.get());
    useContainer(unfiltered);
    useContainer(view);
    Script script(view, root.get(), GetParam(), container.get());
    view.show();
    std::mt19937 random(GetParam());
    int revealed = 0;
    for (int i = 0; i < steps(); ++i) {
        if (i % 7 == 0)
            view.setFilter(maskFrom(random));
        script.step();
        ASSERT_EQ(check(), "") << "after step " << i;
        for (int top = 0; top < view.topLevelItemCount(); ++top)
            if (!asRow(view.topLevelItem(top))->isFilteredOut()) {
                ASSERT_EQ(filterFault(asRow(view.topLevelItem(top)),
                                      asRow(unfiltered.topLevelItem(top)), view.getFilter()),
                          "")
                    << "after step " << i;
            }
        if (i % 10 == 0) {
            if (QTreeWidgetItem* item = view.itemAt(5, static_cast<int>(random() % 400)))
                item->setExpanded(random() % 4 != 0);
            SoTreeViewItem* row = asRow(view.topLevelItem(
                static_cast<int>(random() % static_cast<unsigned>(view.topLevelItemCount()))));
            while (row->rowCount() > 0 && random() % 4)
                row =
                    row->rowAt(static_cast<int>(random() % static_cast<unsigned>(row->rowCount())));
            revealed += !row->isInSight();
            view.showItem(row); // perhaps a hidden one
            EXPECT_TRUE(row->isInSight());
            pass();
        }
    }
    EXPECT_GT(revealed, 0);
    view.setFilter(mirabo::kAllCategories);
    EXPECT_EQ(view.context().hidden.size(), 0u);
    EXPECT_EQ(filterFault(view.rootItem(), unfiltered.rootItem(), mirabo::kAllCategories), "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, TreeRandomEdits, ::testing::Range(1u, 7u));

namespace {

/// The model of a tree widget gives the cells of all columns the children of the first, against the
/// rules; this one does not, so that the remaining rules can be held to account.
class FirstColumnModel : public QIdentityProxyModel {
public:
    explicit FirstColumnModel(QAbstractItemModel* model) { setSourceModel(model); }
    int rowCount(const QModelIndex& parent) const override
    {
        return parent.column() > 0 ? 0 : QIdentityProxyModel::rowCount(parent);
    }
    bool hasChildren(const QModelIndex& parent) const override
    {
        return parent.column() <= 0 && QIdentityProxyModel::hasChildren(parent);
    }
    QModelIndex index(int row, int column, const QModelIndex& parent) const override
    {
        return parent.column() > 0 ? QModelIndex()
                                   : QIdentityProxyModel::index(row, column, parent);
    }
};

} // namespace

TEST_F(TreeTest, KeepsTheRulesOfAnItemModelWhileEdited)
{
    FirstColumnModel model(view.model());
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Warning);
    Script script(view, root.get(), 9);
    for (int i = 0; i < 200; ++i)
        script.step();
    EXPECT_EQ(check(), "");
}
