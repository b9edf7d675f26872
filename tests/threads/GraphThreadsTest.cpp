// Several threads apply actions to one graph under the read lock, others edit it.

#include "InThreads.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/engines/SoCalculator.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoPackedColor.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <vector>

namespace {

struct Extent {
    double low = 0, high = 0;
    int cubes = 0;

    void add(double from, double to)
    {
        low = cubes ? std::min(low, from) : from;
        high = cubes ? std::max(high, to) : to;
        ++cubes;
    }
};

/// Groups of cubes along the x axis. Each group starts with its translation and may hold groups of
/// higher numbers, which so are shared; widths follow a field, directly or through engines.
class RandomGraph {
public:
    RandomGraph()
    {
        for (int i = 0; i < kGroups; ++i) {
            m_groups.emplace_back(new SoSeparator);
            m_groups.back()->addChild(new SoTranslation);
            m_groups.back()->addChild(new SoPackedColor);
        }
        for (int i = 1; i < kGroups; ++i)
            m_groups[0]->addChild(group(i));
        for (int i = 0; i < kMasters; ++i)
            m_masters.emplace_back(new SoCube);
    }

    SoSeparator* root() const { return m_groups[0].get(); }

    void edit(std::mt19937& random)
    {
        SoSeparator* at = group(static_cast<int>(random() % kGroups));
        switch (random() % 8) {
        case 0:
        case 1:
            if (at->getNumChildren() < kMaxChildren)
                at->insertChild(newShape(random), kFirst);
            break;
        case 2:
            if (at->getNumChildren() > kFirst + kGroups)
                at->removeChild(kFirst);
            break;
        case 3:
            static_cast<SoTranslation*>(at->getChild(0))
                ->translation.setValue(number(random) - 10, 0, 0);
            break;
        case 4:
            master(random).width = number(random) + 1;
            break;
        case 5:
            link(random);
            break;
        case 6:
            static_cast<SoPackedColor*>(at->getChild(1))->orderedRGBA.setValue(random());
            break;
        default:
            if (auto* cube = cubeIn(at))
                feed(cube, random);
        }
    }

    /// Where the cubes are and how many, by arithmetic of its own.
    Extent measure() const
    {
        Extent extent;
        measure(root(), 0, extent);
        return extent;
    }

private:
    static constexpr int kGroups = 6, kMasters = 3, kFirst = 2, kMaxChildren = 14;

    SoSeparator* group(int i) const { return m_groups[static_cast<std::size_t>(i)].get(); }
    static float number(std::mt19937& random) { return static_cast<float>(random() % 20); }
    SoCube& master(std::mt19937& random) { return *m_masters[random() % kMasters]; }

    SoNode* newShape(std::mt19937& random)
    {
        auto* cube = new SoCube;
        if (random() % 2)
            feed(cube, random);
        return cube;
    }

    static SoCube* cubeIn(const SoGroup* group)
    {
        if (group->getNumChildren() <= kFirst)
            return nullptr;
        SoNode* node = group->getChild(kFirst);
        return node->isOfType(SoCube::getClassTypeId()) ? static_cast<SoCube*>(node) : nullptr;
    }

    void feed(SoCube* cube, std::mt19937& random)
    {
        if (random() % 4 == 0) {
            cube->width.disconnect();
            return;
        }
        if (random() % 2) {
            cube->width.connectFrom(&master(random).width);
            return;
        }
        auto* sum = new SoCalculator;
        sum->expression.setValue(SbString("oa = a + b"));
        sum->a.connectFrom(&master(random).width);
        sum->b.connectFrom(&master(random).width);
        cube->width.connectFrom(&sum->oa);
    }

    /// Adds or removes a further place of a group.
    void link(std::mt19937& random)
    {
        const int above = 1 + static_cast<int>(random() % (kGroups - 2));
        SoSeparator* holder = group(above);
        SoNode* below = group(above + 1);
        if (holder->findChild(below) >= 0)
            holder->removeChild(below);
        else
            holder->addChild(below);
    }

    static void measure(const SoNode* node, double origin, Extent& extent)
    {
        if (node->isOfType(SoCube::getClassTypeId())) {
            const double half = static_cast<const SoCube*>(node)->width.getValue() / 2.0;
            extent.add(origin - half, origin + half);
            return;
        }
        if (!node->isOfType(SoSeparator::getClassTypeId()))
            return;
        const auto* group = static_cast<const SoSeparator*>(node);
        const auto* shift = static_cast<const SoTranslation*>(group->getChild(0));
        for (int i = kFirst; i < group->getNumChildren(); ++i)
            measure(group->getChild(i), origin + shift->translation.getValue()[0], extent);
    }

    std::vector<SoRef<SoSeparator>> m_groups;
    std::vector<SoRef<SoCube>> m_masters;
};

void expectBox(const RandomGraph& graph, const Extent& expected)
{
    SoGetBoundingBoxAction action(SbViewportRegion(100, 100));
    action.apply(graph.root());
    const SbBox3f box = action.getBoundingBox();
    ASSERT_EQ(box.isEmpty(), expected.cubes == 0);
    if (expected.cubes == 0)
        return;
    EXPECT_NEAR(box.getMin()[0], expected.low, 1e-3);
    EXPECT_NEAR(box.getMax()[0], expected.high, 1e-3);
}

void expectCubes(const RandomGraph& graph, const Extent& expected)
{
    SoSearchAction search;
    search.setType(SoCube::getClassTypeId());
    search.setInterest(SoSearchAction::ALL);
    search.apply(graph.root());
    EXPECT_EQ(search.getPaths().size(), static_cast<std::size_t>(expected.cubes));
    SoGetPrimitiveCountAction count;
    count.apply(graph.root());
    EXPECT_EQ(count.getTriangleCount(), 12u * static_cast<unsigned>(expected.cubes));
}

void expectHit(const RandomGraph& graph, const Extent& expected)
{
    SoRayPickAction pick(SbViewportRegion(100, 100));
    pick.setRay(SbVec3f(-10000, 0.1f, 0.2f), SbVec3f(1, 0, 0));
    pick.apply(graph.root());
    ASSERT_EQ(pick.getPickedPoint() != nullptr, expected.cubes > 0);
    if (expected.cubes > 0) {
        EXPECT_NEAR(pick.getPickedPoint()->getPoint()[0], expected.low, 0.01);
    }
}

void expectText(const RandomGraph& graph)
{
    SoOutput out;
    out.setBuffer();
    SoWriteAction(&out).apply(graph.root());
    EXPECT_NE(out.getText().find("Separator"), std::string_view::npos);
}

void readOnce(const RandomGraph& graph, unsigned turn)
{
    const SoReadLock lock;
    const Extent expected = graph.measure();
    switch (turn % 4) {
    case 0:
        return expectBox(graph, expected);
    case 1:
        return expectCubes(graph, expected);
    case 2:
        return expectHit(graph, expected);
    default:
        return expectText(graph);
    }
}

class GraphThreads : public ::testing::Test {
protected:
    static void SetUpTestSuite() { SoDB::init(); }
};

TEST_F(GraphThreads, ActionsOfReadersSeeWhatEditorsLeft)
{
    RandomGraph graph;
    std::atomic<unsigned> edits{0}, reads{0};
    inThreads(5, [&](int me) {
        std::mt19937 random(static_cast<unsigned>(me) + 1);
        for (unsigned i = 0; i < 250; ++i) {
            if (me < 2) {
                const SoWriteLock lock;
                for (unsigned n = random() % 4; n-- > 0; ++edits)
                    graph.edit(random);
            } else {
                readOnce(graph, i + static_cast<unsigned>(me));
                ++reads;
            }
        }
    });
    EXPECT_GT(edits, 300u);
    EXPECT_EQ(reads, 750u);
}

TEST_F(GraphThreads, ReadersShareShapesThatNobodyEdits)
{
    // All caches are empty at first and filled by whoever comes first.
    const SoRef<SoSeparator> root(new SoSeparator);
    for (int i = 0; i < 40; ++i) {
        auto* inner = new SoSeparator;
        inner->addChild(new SoTranslation);
        inner->addChild(new SoSphere);
        root->addChild(inner);
    }
    inThreads(4, [&](int) {
        for (int i = 0; i < 20; ++i) {
            const SoReadLock lock;
            SoGetPrimitiveCountAction count;
            count.apply(root.get());
            SoRayPickAction pick(SbViewportRegion(100, 100));
            pick.setRay(SbVec3f(0, 0, 10), SbVec3f(0, 0, -1));
            pick.apply(root.get());
            ASSERT_TRUE(pick.getPickedPoint());
            EXPECT_NEAR(pick.getPickedPoint()->getPoint()[2], 1, 0.02);
        }
    });
}

TEST_F(GraphThreads, QueuedSensorsHearOfEveryEditorUnderTheReadLock)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    const SoRef<SoCube> cube(new SoCube);
    root->addChild(cube.get());
    struct Seen {
        float width = 0;
        int calls = 0;
    } seen;
    SoFieldSensor sensor(
        [](void* data, SoSensor* self) {
            auto* width =
                static_cast<SoSFFloat*>(static_cast<SoFieldSensor*>(self)->getAttachedField());
            static_cast<Seen*>(data)->width = width->getValue();
            ++static_cast<Seen*>(data)->calls;
        },
        &seen);
    sensor.attach(&cube->width);
    int atOnce = 0; // counted by the editors, each under the write lock
    SoNodeSensor immediate([](void* data, SoSensor*) { ++*static_cast<int*>(data); }, &atOnce);
    immediate.setPriority(0);
    immediate.attach(root.get());
    std::atomic<int> editing{2};
    inThreads(3, [&](int me) {
        if (me < 2) {
            for (int i = 1; i <= 500; ++i) {
                const SoWriteLock lock;
                cube->width = static_cast<float>(i);
            }
            --editing;
            return;
        }
        while (editing > 0) {
            const SoReadLock lock;
            SoSensorManager::processDelayQueue(false);
        }
    });
    SoSensorManager::processDelayQueue(false);
    EXPECT_EQ(atOnce, 1000);
    EXPECT_GT(seen.calls, 0);
    EXPECT_EQ(seen.width, cube->width.getValue());
}

TEST_F(GraphThreads, FilesAreReadWithoutTheLockAndHandedOver)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    inThreads(4, [&](int me) {
        for (int i = 0; i < 25; ++i) {
            const std::string name = "part" + std::to_string(me);
            const std::string text = "#Kalmyr V1.0 ascii\nSeparator { DEF " + name
                                     + " Cube { width 2 } Transform { translation 1 2 3 } USE "
                                     + name + " ShapeKit { shape Sphere { } } }";
            SoInput in;
            in.setBuffer(text.data(), text.size());
            const SoRef<SoSeparator> read(SoDB::readAll(&in));
            ASSERT_TRUE(read);
            const SoWriteLock lock;
            root->addChild(read.get());
        }
    });
    EXPECT_EQ(root->getNumChildren(), 100);
    EXPECT_EQ(SoNode::getNamedBases(SbName("part2"), SoCube::getClassTypeId()).size(), 25u);
}

TEST_F(GraphThreads, ReferencesAreCountedInEveryThread)
{
    const SoRef<SoCube> cube(new SoCube);
    inThreads(4, [&](int) {
        std::vector<SoRef<SoCube>> held;
        for (int i = 0; i < 5000; ++i) {
            held.push_back(cube);
            if (held.size() > 50)
                held.clear();
        }
    });
    EXPECT_EQ(cube->getRefCount(), 1);
}

} // namespace
