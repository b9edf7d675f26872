// Whom a change reaches, however many walks ended early before it.

#include "FieldsSupport.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNotificationWay.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using fieldtest::Bound;
using fieldtest::Holder;
using fieldtest::Listener;

namespace {

/// Counts what comes by; says whether it must hear everything.
class Counting : public Bound {
public:
    explicit Counting(bool mustHear = false) : m_mustHear(mustHear) {}
    static inline int s_calls = 0;

protected:
    ~Counting() override = default;
    bool noteChange(const SoNotification&) override
    {
        ++s_calls;
        return m_mustHear;
    }

private:
    bool m_mustHear;
};

class WalkTest : public testing::Test {
protected:
    static void SetUpTestSuite() { fieldtest::initTypes(); }

    /// A chain from the top down below `top`; returns the number of visits on the way.
    int build(Bound* top, int length)
    {
        Counting::s_calls = 0;
        for (int i = 0; i < length; ++i) {
            auto* next = new Counting;
            top->getChildren()->append(next);
            top = next;
        }
        m_bottom = top;
        return Counting::s_calls;
    }
    int visitsOfAChange()
    {
        Counting::s_calls = 0;
        m_bottom->touch();
        return Counting::s_calls;
    }

    Bound* m_bottom = nullptr;
};

TEST_F(WalkTest, AChainThatNobodyLooksAtIsBuiltInLinearTime)
{
    constexpr int kLength = 500;
    const SoRef<Counting> top(new Counting);
    EXPECT_LE(build(top.get(), kLength), 2 * kLength);
    const auto id = top->getNodeId();
    EXPECT_EQ(visitsOfAChange(), kLength + 1) << "somebody asked";
    EXPECT_LE(visitsOfAChange(), 2);
    EXPECT_NE(top->getNodeId(), id);

    Listener listener;
    top->addAuditor(&listener, SoAuditor::SENSOR);
    EXPECT_EQ(visitsOfAChange(), kLength + 1) << "somebody listens";
    for (int i = 0; i < 3; ++i)
        EXPECT_LE(visitsOfAChange(), 2) << "and those between have news already";
    EXPECT_EQ(listener.take(), 4);
    top->removeAuditor(&listener);
    visitsOfAChange();
    EXPECT_LE(visitsOfAChange(), 2) << "nobody listens any more";
}

TEST_F(WalkTest, AChainBelowAListenerIsBuiltInLinearTime)
{
    constexpr int kLength = 500;
    const SoRef<Counting> top(new Counting);
    Listener listener;
    top->addAuditor(&listener, SoAuditor::SENSOR);
    EXPECT_LE(build(top.get(), kLength), 4 * kLength);
    EXPECT_EQ(listener.take(), kLength);
    top->removeAuditor(&listener);
}

TEST_F(WalkTest, NodesThatMustHearEverythingDo)
{
    const SoRef<Counting> top(new Counting(true));
    build(top.get(), 10);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(visitsOfAChange(), 11);
}

TEST_F(WalkTest, WhatWasBuiltApartIsHeardOnceItIsPutBelowAListener)
{
    const SoRef<Counting> part(new Counting);
    build(part.get(), 10);
    const SoRef<Holder> root(new Holder);
    Listener listener;
    root->addAuditor(&listener, SoAuditor::SENSOR);
    root->part.setValue(part.get());
    EXPECT_EQ(listener.take(), 1);
    m_bottom->touch();
    EXPECT_EQ(listener.take(), 1);
    // By a field that is listened to, in a node that nobody listens to.
    const SoRef<Holder> other(new Holder);
    Listener field;
    other->parts.addAuditor(&field, SoAuditor::SENSOR);
    const SoRef<Counting> second(new Counting);
    build(second.get(), 10);
    other->parts.addNode(second.get());
    field.take();
    m_bottom->touch();
    EXPECT_EQ(field.take(), 1);
    other->parts.removeAuditor(&field);
    root->removeAuditor(&listener);
}

TEST_F(WalkTest, WhatComesSilentlyBelowANodeThatMustHearIsHeard)
{
    /// Must hear of everything below it, and counts that.
    class Hearing : public Holder {
    public:
        int calls = 0;

    protected:
        ~Hearing() override = default;
        bool noteChange(const SoNotification&) override
        {
            ++calls;
            return true;
        }
    };
    const SoRef<Counting> part(new Counting);
    build(part.get(), 10);
    const SoRef<Hearing> holder(new Hearing);
    holder->part.initValue(part.get());
    m_bottom->touch();
    EXPECT_EQ(holder->calls, 1);
    const SoRef<Hearing> other(new Hearing);
    other->parts.enableNotify(false);
    const SoRef<Counting> second(new Counting);
    build(second.get(), 10);
    other->parts.addNode(second.get());
    m_bottom->touch();
    EXPECT_EQ(other->calls, 1);
}

/// Hears what a listener at a node hears, and checks the way that is told along.
class WayListener final : public SoAuditor {
public:
    explicit WayListener(const SoNode* node) : m_node(node) {}
    void auditedChanged(SoNotification& notification) override
    {
        ++m_changes;
        std::vector<SoFieldContainer*> way;
        kalmyr::getWay(notification, way);
        ASSERT_FALSE(way.empty());
        EXPECT_EQ(way.front(), m_node);
        EXPECT_EQ(way.back(), notification.container);
        for (std::size_t i = 1; i < way.size(); ++i)
            EXPECT_TRUE(holds(way[i - 1], way[i])) << i;
    }
    int take() { return std::exchange(m_changes, 0); }

    static bool holds(const SoFieldContainer* holder, const SoFieldContainer* held)
    {
        const auto fields = holder->getFields();
        return std::any_of(fields.begin(), fields.end(), [held](const SoField* field) {
            if (field->isOfType(SoSFNode::getClassTypeId()))
                return static_cast<const SoSFNode*>(field)->getValue() == held;
            return field->isOfType(SoMFNode::getClassTypeId())
                   && static_cast<const SoMFNode*>(field)->find(static_cast<const SoNode*>(held))
                          >= 0;
        });
    }

private:
    const SoNode* m_node;
    int m_changes = 0;
};

/// Random edits, listeners, silence and questions; after each change, whoever is above must have
/// heard of it. Few nodes, held in all ways, or a chain of many, edited here and there.
enum class Graph { TANGLED, DEEP };

class RandomWalks {
public:
    RandomWalks(unsigned seed, Graph graph)
        : m_isDeep(graph == Graph::DEEP), m_count(m_isDeep ? 60 : 14), m_random(seed)
    {
        for (int i = 0; i < m_count; ++i) {
            if (!m_isDeep && i % 3)
                m_nodes.emplace_back(new Holder);
            else if (i % 20 == 9)
                m_nodes.emplace_back(m_hearing.emplace_back(new HearingBound));
            else
                m_nodes.emplace_back(new Bound);
            m_ids.push_back(m_nodes.back()->getNodeId());
            if (m_isDeep && i > 0)
                nodeAt(i - 1)->getChildren()->append(nodeAt(i));
        }
    }
    ~RandomWalks()
    {
        for (const auto& [node, listener] : m_onNodes)
            const_cast<SoNode*>(node)->removeAuditor(listener.get());
        for (const auto& [field, listener] : m_onFields)
            const_cast<SoField*>(field)->removeAuditor(listener.get());
    }

    void step()
    {
        const int above = pick(m_count - 1);
        SoNode* holder = nodeAt(above);
        const int further = m_isDeep && pick(4) ? 0 : pick(m_count - above - 1);
        switch (pick(m_isDeep ? 40 : 8)) {
        case 0:
        case 1:
            edit(holder, nodeAt(above + 1 + further));
            break;
        case 2:
            toggleListener(holder);
            break;
        case 3:
            toggleFieldListener(holder);
            break;
        case 4:
            if (pick(3) == 0)
                holder->enableNotify(!holder->isNotifyEnabled());
            break;
        case 5:
            ask();
            break;
        default:
            break;
        }
        change(nodeAt(pick(3) ? m_count - 1 - pick(4) : pick(m_count)));
    }

private:
    /// Must hear of everything below it.
    class HearingBound final : public Bound {
    public:
        bool take() { return std::exchange(m_heard, false); }

    private:
        ~HearingBound() override = default;
        bool noteChange(const SoNotification&) override { return m_heard = true; }
        bool m_heard = false;
    };

    int pick(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }
    SoNode* nodeAt(int i) const { return m_nodes[static_cast<std::size_t>(i)].get(); }

    void edit(SoNode* holder, SoNode* below)
    {
        if (auto* list = holder->getChildren()) {
            const int at = list->find(below);
            if (m_isDeep && at >= 0 && pick(3)) {
                list->remove(at); // and comes back
                list->append(below);
            } else if (pick(3) == 0 && list->getLength() > 0) {
                list->remove(pick(list->getLength()));
            } else if (at >= 0 && pick(2)) {
                list->set(at, m_nodes.back().get());
            } else {
                list->insert(below, pick(list->getLength() + 1));
            }
            return;
        }
        auto* fields = static_cast<Holder*>(holder);
        if (pick(2)) {
            fields->part.setValue(pick(3) ? below : nullptr);
        } else if (pick(3) == 0) {
            fields->part.initValue(below);
        } else if (pick(3) && fields->parts.getNum() > 0) {
            fields->parts.removeNode(pick(fields->parts.getNum()));
        } else {
            fields->parts.addNode(below);
        }
    }

    template <class Listened, class Hearer>
    void toggle(std::map<const Listened*, std::unique_ptr<Hearer>>& all, Listened* on,
                std::unique_ptr<Hearer> hearer)
    {
        const auto at = all.find(on);
        if (at != all.end()) {
            on->removeAuditor(at->second.get());
            all.erase(at);
        } else {
            const auto& listener = all.emplace(on, std::move(hearer)).first->second;
            on->addAuditor(listener.get(), SoAuditor::SENSOR);
        }
    }
    void toggleListener(SoNode* node)
    {
        if (pick(3) == 0)
            toggle(m_onNodes, node, std::make_unique<WayListener>(node));
    }
    void toggleFieldListener(SoNode* node)
    {
        const auto fields = node->getFields();
        if (pick(3) == 0)
            toggle(m_onFields, fields[static_cast<std::size_t>(pick(int(fields.size())))],
                   std::make_unique<Listener>());
    }

    void ask()
    {
        for (std::size_t i = 0; i < m_nodes.size(); ++i)
            if (pick(2))
                ask(i);
    }
    void ask(std::size_t i)
    {
        const auto before = std::exchange(m_ids[i], m_nodes[i]->getNodeId());
        if (m_changed.erase(i)) {
            ASSERT_NE(m_ids[i], before);
        }
    }

    struct Reached {
        std::set<const SoNode*> changed; ///< their ids are others now
        std::set<const SoNode*> told;
        std::set<const SoField*> fields;
    };
    void climb(const SoNode* node, Reached& reached) const
    {
        if (!reached.changed.insert(node).second || !node->isNotifyEnabled())
            return;
        reached.told.insert(node);
        for (const auto& holder : m_nodes) {
            for (const SoField* field : holder->getFields()) {
                const auto* one = field->isOfType(SoSFNode::getClassTypeId())
                                      ? static_cast<const SoSFNode*>(field)
                                      : nullptr;
                const auto* many = field->isOfType(SoMFNode::getClassTypeId())
                                       ? static_cast<const SoMFNode*>(field)
                                       : nullptr;
                if ((one && one->getValue() == node) || (many && many->find(node) >= 0)) {
                    reached.fields.insert(field);
                    climb(holder.get(), reached);
                }
            }
        }
    }

    void change(SoNode* node)
    {
        for (const auto& [on, listener] : m_onNodes)
            listener->take();
        for (const auto& [on, listener] : m_onFields)
            listener->take();
        for (HearingBound* hearing : m_hearing)
            hearing->take();
        Reached reached;
        climb(node, reached);
        node->touch();
        for (const auto& [on, listener] : m_onNodes)
            ASSERT_EQ(listener->take(), int(reached.told.count(on)));
        for (const auto& [on, listener] : m_onFields)
            ASSERT_EQ(listener->take() > 0, reached.fields.count(on) > 0);
        for (HearingBound* hearing : m_hearing)
            ASSERT_EQ(hearing->take(), reached.changed.count(hearing) > 0);
        for (std::size_t i = 0; i < m_nodes.size(); ++i)
            if (reached.changed.count(m_nodes[i].get()))
                m_changed.insert(i);
        if (pick(4))
            return;
        // Asked now and then only: to ask makes the next walk a whole one.
        while (!m_changed.empty())
            ask(*m_changed.begin());
    }

    bool m_isDeep;
    int m_count;
    std::minstd_rand m_random;
    std::vector<SoRef<SoNode>> m_nodes; ///< each holds later ones only
    std::vector<HearingBound*> m_hearing;
    std::vector<std::uint64_t> m_ids; ///< as last asked
    std::set<std::size_t> m_changed;  ///< since then
    std::map<const SoNode*, std::unique_ptr<WayListener>> m_onNodes;
    std::map<const SoField*, std::unique_ptr<Listener>> m_onFields;
};

class RandomWalkTest : public WalkTest, public testing::WithParamInterface<Graph> {};

INSTANTIATE_TEST_SUITE_P(WalkTest, RandomWalkTest, testing::Values(Graph::TANGLED, Graph::DEEP));

TEST_P(RandomWalkTest, EveryChangeReachesAllWhoListenOrAskLater)
{
    const unsigned seeds = GetParam() == Graph::DEEP ? 50 : 200;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        RandomWalks walks(seed, GetParam());
        for (int i = 0; i < 150; ++i) {
            walks.step();
            if (HasFatalFailure()) {
                ADD_FAILURE() << "seed " << seed << ", step " << i;
                return;
            }
        }
    }
}

/// Finds what it should in a list that is edited all the time.
TEST_F(WalkTest, ALongListKnowsWhereItsChildrenStand)
{
    std::minstd_rand random(5);
    const auto pick = [&random](int count) { return int(random() % unsigned(count)); };
    std::vector<SoRef<Holder>> nodes;
    for (int i = 0; i < 1500; ++i)
        nodes.emplace_back(new Holder);
    const SoRef<Bound> parent(new Bound);
    SoChildList& list = *parent->getChildren();
    for (int i = 0; i < 1000; ++i)
        list.append(nodes[std::size_t(i)].get());
    for (int step = 0; step < 20000; ++step) {
        SoNode* node = nodes[std::size_t(pick(1500))].get();
        const int length = list.getLength();
        const int where = pick(3) == 0 ? 0 : pick(3) == 0 ? length - 1 : pick(length);
        const int known = list.find(node);
        switch (pick(6)) {
        case 0:
            if (known < 0 || pick(20) == 0) // few stand at several places
                list.insert(node, where);
            break;
        case 1:
            if (length > 600)
                list.remove(where);
            break;
        case 2:
            if (known < 0)
                list.set(where, node);
            break;
        case 3:
            if (pick(2000) == 0)
                parent->children.setValues(
                    std::vector<SoNode*>(list.getNodes().rbegin(), list.getNodes().rend()));
            break;
        default:
            break;
        }
        const auto& all = list.getNodes();
        const auto at = std::find(all.begin(), all.end(), node);
        ASSERT_EQ(list.find(node), at == all.end() ? -1 : int(at - all.begin())) << step;
    }
}

} // namespace
