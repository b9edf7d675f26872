#include "NodesSupport.h"

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoLightPath.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoFaceSet.h>
#include <kalmyr/shapes/SoVertexProperty.h>

#include <algorithm>
#include <memory>
#include <random>

namespace {

using PathTest = nodetest::NodesTest;

/// A graph of groups with a number for every place in it that stays the same wherever the place
/// moves: what a path names, kept by other means than the path.
class NumberedGraph {
public:
    explicit NumberedGraph(unsigned seed) : m_random(seed)
    {
        for (int i = 0; i < kLevels * kWidth; ++i)
            m_groups.emplace_back(new SoGroup);
        m_places.resize(m_groups.size());
        for (int i = 0; i < 4 * kLevels * kWidth; ++i)
            insert();
    }

    /// A way down along random children, with the numbers of its places.
    struct Tracked {
        SoRef<SoPath> path;
        std::vector<std::size_t> groups;
        std::vector<int> places;
    };
    Tracked track()
    {
        Tracked t;
        t.groups.push_back(number(kWidth));
        t.path = SoRef<SoPath>(new SoPath(m_groups[t.groups[0]].get()));
        while (!m_places[t.groups.back()].empty()) {
            const std::size_t above = t.groups.back();
            const std::size_t index = number(m_places[above].size());
            t.places.push_back(m_places[above][index]);
            t.path->append(static_cast<int>(index));
            t.groups.push_back(indexOf(t.path->getTail()));
        }
        return t;
    }

    void check(const Tracked& t) const
    {
        std::size_t length = 1;
        for (; length < t.groups.size(); ++length) {
            const std::vector<int>& now = m_places[t.groups[length - 1]];
            const auto at = std::find(now.begin(), now.end(), t.places[length - 1]);
            if (at == now.end())
                break;
            ASSERT_GT(t.path->getLength(), static_cast<int>(length));
            ASSERT_EQ(t.path->getIndex(static_cast<int>(length)), at - now.begin());
            ASSERT_EQ(t.path->getNode(static_cast<int>(length)), m_groups[t.groups[length]].get());
        }
        ASSERT_EQ(t.path->getLength(), static_cast<int>(length));
    }

    void edit()
    {
        const std::size_t above = number(m_groups.size() - kWidth);
        std::vector<int>& places = m_places[above];
        SoGroup* group = m_groups[above].get();
        const auto n = places.size();
        switch (number(8)) {
        case 0:
            if (n) {
                const std::size_t i = number(n);
                places.erase(places.begin() + static_cast<std::ptrdiff_t>(i));
                group->removeChild(static_cast<int>(i));
            }
            break;
        case 1:
            if (n) {
                const std::size_t i = number(n);
                SoNode* node = below(above);
                if (node != group->getChild(static_cast<int>(i)))
                    places[i] = m_next++;
                group->replaceChild(static_cast<int>(i), node);
            }
            break;
        case 2:
            if (number(10) == 0) {
                places.clear();
                group->removeAllChildren();
            }
            break;
        default:
            insert();
        }
    }

    std::size_t number(std::size_t limit) { return m_random() % limit; }

private:
    static constexpr int kLevels = 6, kWidth = 5;

    std::size_t indexOf(const SoNode* node) const
    {
        return static_cast<std::size_t>(
            std::find_if(m_groups.begin(), m_groups.end(),
                         [=](const SoRef<SoGroup>& g) { return g.get() == node; })
            - m_groups.begin());
    }
    SoNode* below(std::size_t above)
    {
        const std::size_t level = above / kWidth + 1;
        return m_groups[level * kWidth + number(kWidth)].get();
    }
    void insert()
    {
        const std::size_t above = number(m_groups.size() - kWidth);
        std::vector<int>& places = m_places[above];
        const std::size_t i = number(places.size() + 1);
        places.insert(places.begin() + static_cast<std::ptrdiff_t>(i), m_next++);
        m_groups[above]->insertChild(below(above), static_cast<int>(i));
    }

    std::mt19937 m_random;
    std::vector<SoRef<SoGroup>> m_groups;
    std::vector<std::vector<int>> m_places;
    int m_next = 0;
};

TEST_F(PathTest, FollowsRandomEditsOfSharedGroups)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        NumberedGraph graph(seed);
        std::vector<NumberedGraph::Tracked> tracked;
        for (int step = 0; step < 200; ++step) {
            tracked.push_back(graph.track());
            if (tracked.size() > 40) // others have to stand the death of paths among them
                tracked.erase(tracked.begin() + static_cast<std::ptrdiff_t>(graph.number(40)));
            graph.edit();
            for (const auto& t : tracked) {
                graph.check(t);
                ASSERT_FALSE(HasFatalFailure()) << "seed " << seed << " step " << step;
            }
        }
    }
}

TEST_F(PathTest, EndsWhereAFieldLetsGoOfItsNode)
{
    const SoRef<SoFaceSet> shape(new SoFaceSet);
    shape->vertexProperty.setValue(new SoVertexProperty);
    const SoRef<SoPath> path(new SoPath(shape.get()));
    path->append(shape->vertexProperty.getValue(), -1);
    shape->vertexProperty.getValue()->touch();
    shape->numVertices.setValue(4);
    EXPECT_EQ(path->getLength(), 2);
    shape->vertexProperty.setValue(new SoVertexProperty);
    EXPECT_EQ(path->getLength(), 1);
}

TEST_F(PathTest, ReplacingAllChildrenKeepsTheWayToThoseThatStay)
{
    const SoRef<SoGroup> root(new SoGroup);
    SoGroup* kept = new SoGroup;
    SoGroup* lost = new SoGroup;
    root->addChild(lost);
    root->addChild(kept);
    kept->addChild(new SoCube);
    const SoRef<SoPath> toKept(new SoPath(root.get())), toLost(new SoPath(root.get()));
    toKept->append(1);
    toKept->append(0);
    toLost->append(0);
    root->setChildren({kept, new SoCube});
    EXPECT_EQ(toKept->getIndex(1), 0);
    EXPECT_EQ(toKept->getLength(), 3);
    EXPECT_EQ(toLost->getLength(), 1);
}

TEST_F(PathTest, LightPathsFindTheirWayAgain)
{
    const SoRef<SoGroup> root(new SoGroup);
    auto* part = new SoGroup;
    SoRef<SoNode> cube(new SoCube);
    root->addChild(part);
    part->addChild(cube.get());
    const SoRef<SoPath> full(new SoPath(root.get()));
    full->append(0);
    full->append(0);
    const SoLightPath light(*full);
    EXPECT_EQ(cube->getRefCount(), 3); // the test, the group, the full path
    root->insertChild(new SoGroup, 0);
    part->insertChild(new SoCube, 0);
    EXPECT_TRUE(*light.resolve() == *full);
    EXPECT_EQ(full->getIndex(2), 1);
    part->removeChild(1);
    EXPECT_FALSE(light.resolve());
    EXPECT_FALSE(SoLightPath().resolve());
}

/// Who lists many places must not slow down those who edit elsewhere.
TEST_F(PathTest, HeldPathsCostNothingWhereTheyDoNotLead)
{
    const SoRef<SoGroup> root(new SoGroup);
    for (int i = 0; i < 20000; ++i)
        root->addChild(new SoCube);
    SoSearchAction search;
    search.setType(SoCube::getClassTypeId());
    search.setInterest(SoSearchAction::ALL);
    search.apply(root.get());
    ASSERT_EQ(search.getPaths().size(), 20000u);
    // 400 million steps if each change went through every path.
    for (int i = 0; i < 20000; ++i)
        static_cast<SoCube*>(root->getChild(i))->width = 3;
    root->removeChild(0);
    EXPECT_EQ(search.getPaths()[0]->getLength(), 1);
    EXPECT_EQ(search.getPaths()[19999]->getIndex(1), 19998);
}

} // namespace
