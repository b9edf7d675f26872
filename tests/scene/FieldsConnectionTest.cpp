#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/core/SoFieldConverter.h>
#include <kalmyr/engines/SoEnginesInit.h>
#include <kalmyr/engines/SoInterpolate.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoSensorsInit.h>

#include "FieldsSupport.h"
#include "support/ErrorGuard.h"

#include <memory>
#include <random>

#include <gtest/gtest.h>

using namespace fieldtest;

namespace {

/// The sum of its inputs; counts how often it computes.
class Sum final : public SoEngine {
    SO_ENGINE_HEADER(Sum)

public:
    Sum()
    {
        SO_ENGINE_CONSTRUCTOR(SoEngine);
        SO_ADD_FIELD(a, (0.0f));
        SO_ADD_FIELD(b, (0.0f));
        SO_ADD_OUTPUT(out);
        ++s_alive;
    }
    static void initClass() { SO_ENGINE_INIT_CLASS(Sum, SoEngine, "TestSum"); }

    SoSFFloat a, b;
    SoSFFloat out;
    int computed = 0;
    static inline int s_alive = 0;

protected:
    ~Sum() override { --s_alive; }
    void evaluate() override
    {
        ++computed;
        out.setValue(a.getValue() + b.getValue());
    }
};
SO_ENGINE_SOURCE(Sum)

class Connections : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        initTypes();
        kalmyr::initSensors();
        kalmyr::initEngines();
        Sum::initClass();
    }
    void TearDown() override { EXPECT_EQ(Sum::s_alive, 0); }
};

template <class From, class To>
std::string converted(const char* text)
{
    From from;
    To to;
    EXPECT_TRUE(from.set(text));
    EXPECT_TRUE(to.connectFrom(&from));
    return textOf(to);
}

TEST_F(Connections, ConvertBetweenTypes)
{
    EXPECT_EQ((converted<SoSFFloat, SoSFInt32>("-2.9")), "-2");
    EXPECT_EQ((converted<SoSFDouble, SoSFInt32>("1e300")), "2147483647") << "the nearest there is";
    EXPECT_EQ((converted<SoSFFloat, SoSFUShort>("-7")), "0");
    EXPECT_EQ((converted<SoSFFloat, SoSFInt32>("nan")), "0");
    EXPECT_EQ((converted<SoSFInt32, SoSFBool>("3")), "TRUE");
    EXPECT_EQ((converted<SoSFTime, SoMFDouble>("2.5")), "2.5");
    EXPECT_EQ((converted<SoMFInt32, SoMFFloat>("[ 1, -2, 3 ]")), "[ 1, -2, 3 ]");
    EXPECT_EQ((converted<SoMFFloat, SoSFInt32>("[ 7.5, 8 ]")), "7") << "the first of many";
    EXPECT_EQ((converted<SoSFVec3d, SoMFVec3f>("1 2 3")), "1 2 3");
    EXPECT_EQ((converted<SoMFVec2f, SoMFVec2s>("[ 1 2, 3 -4 ]")), "[ 1 2, 3 -4 ]");
    EXPECT_EQ((converted<SoSFColor, SoSFVec3f>("0.5 0 1")), "0.5 0 1");
    EXPECT_EQ((converted<SoSFColor, SoSFColorRGBA>("0.5 0 1")), "0.5 0 1 1");
    EXPECT_EQ((converted<SoMFColorRGBA, SoSFColor>("[ 1 0 0 0.5 ]")), "1 0 0");
    EXPECT_EQ((converted<SoSFVec3f, SoSFString>("1 2 3")), "\"1 2 3\"");
    EXPECT_EQ((converted<SoMFFloat, SoMFString>("[ 1, 2.5 ]")), "[ \"1\", \"2.5\" ]");
    EXPECT_EQ((converted<SoSFString, SoSFVec3f>("\"4 5 6\"")), "4 5 6");
    EXPECT_EQ((converted<SoMFString, SoMFInt32>("[ \"4\", \"-5\" ]")), "[ 4, -5 ]");
    EXPECT_EQ((converted<SoSFString, SoSFFloat>("\"no number\"")), "0") << "and no error";
    EXPECT_EQ((converted<SoSFName, SoMFString>("front")), "\"front\"");
}

TEST_F(Connections, ConvertRotationsAndMatricesBothWays)
{
    SoSFRotation first, last;
    SoMFMatrix middle;
    ASSERT_TRUE(middle.connectFrom(&first));
    ASSERT_TRUE(last.connectFrom(&middle));
    std::mt19937 random(5);
    std::normal_distribution<float> number;
    for (int i = 0; i < 100; ++i) {
        const SbRotation r(number(random), number(random), number(random), number(random));
        first.setValue(r);
        EXPECT_TRUE(last.getValue().equals(r, 1e-5f));
    }
}

TEST_F(Connections, AreRefusedBetweenStrangers)
{
    SoSFVec3f vector;
    SoSFRotation rotation;
    SoSFNode node;
    SoSFTrigger trigger;
    const auto errors = support::expectErrors();
    EXPECT_FALSE(vector.connectFrom(&rotation));
    EXPECT_FALSE(node.connectFrom(&vector));
    EXPECT_FALSE(vector.connectFrom(&trigger));
    EXPECT_FALSE(vector.connectFrom(nullptr));
    EXPECT_FALSE(vector.isConnected());
    EXPECT_TRUE(trigger.connectFrom(&vector)) << "every change can set off a trigger";
}

TEST_F(Connections, PassNodesOn)
{
    const SoRef<SoNode> a(new Holder), b(new Holder);
    SoSFNode one;
    SoMFNode many;
    SoMFUniformShaderParameter parameters;
    ASSERT_TRUE(many.connectFrom(&one));
    one.setValue(a.get());
    ASSERT_EQ(many.getNum(), 1);
    EXPECT_EQ(many[0], a.get());
    SoSFNode back;
    ASSERT_TRUE(back.connectFrom(&many));
    one.setValue(b.get());
    EXPECT_EQ(back.getValue(), b.get());
    const SoRef<Bound> bound(new Bound);
    const auto errors = support::expectErrors();
    EXPECT_FALSE(bound->children.connectFrom(&many)) << "child lists have no master";
}

TEST_F(Connections, KeepWhatIsSetUntilTheMasterChanges)
{
    SoSFFloat master, follower;
    master.setValue(1);
    ASSERT_TRUE(follower.connectFrom(&master));
    follower.setValue(5);
    EXPECT_EQ(follower.getValue(), 5);
    master.setValue(2);
    EXPECT_EQ(follower.getValue(), 2);
    follower.enableConnection(false);
    master.setValue(3);
    EXPECT_EQ(follower.getValue(), 2);
    follower.enableConnection(true);
    EXPECT_EQ(follower.getValue(), 3);
    follower.disconnect();
    master.setValue(4);
    EXPECT_EQ(follower.getValue(), 3);
    EXPECT_TRUE(master.getFollowers().empty());
}

TEST_F(Connections, GiveTheLastValueWhenTheMastersNodeDies)
{
    SoSFFloat follower;
    {
        const SoRef<Holder> node(new Holder);
        node->size.setValue(1);
        ASSERT_TRUE(follower.connectFrom(&node->size));
        node->size.setValue(7);
    }
    EXPECT_FALSE(follower.isConnected());
    EXPECT_EQ(follower.getValue(), 7) << "never read while the node lived";
}

TEST_F(Connections, KeepEnginesAlive)
{
    const SoRef<Holder> node(new Holder);
    auto* sum = new Sum;
    ASSERT_TRUE(node->size.connectFrom(&sum->out));
    EXPECT_EQ(sum->getRefCount(), 1);
    auto* before = new Sum;
    ASSERT_TRUE(sum->a.connectFrom(&before->out));
    before->a.setValue(2);
    sum->b.setValue(3);
    EXPECT_EQ(node->size.getValue(), 5);
    EXPECT_EQ(SoEngine::getDriver(&node->size), sum);
    ASSERT_TRUE(node->size.connectFrom(&before->out));
    EXPECT_EQ(Sum::s_alive, 1) << "nobody follows the second one any more";
    EXPECT_EQ(node->size.getValue(), 2);
    node->size.disconnect();
    EXPECT_EQ(Sum::s_alive, 0);
    EXPECT_EQ(node->size.getValue(), 2);
}

TEST_F(Connections, ComputeOnceForAllFollowersAndOnlyWhenRead)
{
    auto* sum = new Sum;
    const SoRef<Sum> keep(sum);
    std::vector<SoSFFloat> followers(10);
    for (SoSFFloat& f : followers)
        ASSERT_TRUE(f.connectFrom(&sum->out));
    for (int i = 0; i < 5; ++i)
        sum->a.setValue(static_cast<float>(i));
    EXPECT_EQ(sum->computed, 0);
    for (const SoSFFloat& f : followers)
        EXPECT_EQ(f.getValue(), 4);
    EXPECT_EQ(sum->computed, 1);
    EXPECT_EQ(sum->out.getFollowers().size(), 10u);
}

TEST_F(Connections, RefuseCyclesAndNameTheFields)
{
    const SoRef<Holder> a(new Holder), b(new Holder);
    a->setName("first");
    b->setName("second");
    const SoRef<Sum> sum(new Sum);
    ASSERT_TRUE(b->size.connectFrom(&a->size));
    ASSERT_TRUE(sum->a.connectFrom(&b->size));
    auto errors = support::expectErrors();
    EXPECT_FALSE(a->size.connectFrom(&b->size));
    EXPECT_FALSE(a->size.connectFrom(&sum->out));
    EXPECT_FALSE(a->size.connectFrom(&a->size));
    EXPECT_FALSE(sum->b.connectFrom(&sum->out));
    EXPECT_FALSE(sum->out.connectFrom(&a->size)) << "outputs follow nobody";
    const auto texts = errors.texts();
    ASSERT_GE(texts.size(), 2u);
    for (const char* name : {"\"first\".size", "\"second\".size", "cycle"})
        EXPECT_NE(texts[0].find(name), std::string::npos) << texts[0];
    EXPECT_NE(texts[1].find("TestSum"), std::string::npos) << texts[1];
    a->size.setValue(3);
    EXPECT_EQ(sum->out.getValue(), 3);
}

TEST_F(Connections, TellEveryListenerOfEveryChange)
{
    const SoRef<Holder> a(new Holder), b(new Holder);
    ASSERT_TRUE(b->size.connectFrom(&a->size));
    Listener onField, onNode;
    b->size.addAuditor(&onField, SoAuditor::SENSOR);
    b->addAuditor(&onNode, SoAuditor::SENSOR);
    for (int i = 1; i <= 3; ++i) {
        a->size.setValue(static_cast<float>(i));
        EXPECT_EQ(onField.take(), 1);
        EXPECT_EQ(onNode.take(), 1);
        EXPECT_EQ(onNode.field, &b->size);
    }
    b->size.removeAuditor(&onField);
    b->removeAuditor(&onNode);
}

TEST_F(Connections, ReportMasterAndFollowerToOneImmediateSensor)
{
    const SoRef<Holder> root(new Holder);
    auto *a = new Holder, *b = new Holder;
    root->parts.addNode(a);
    root->parts.addNode(b);
    ASSERT_TRUE(b->size.connectFrom(&a->size));
    std::vector<SoField*> changed;
    SoNodeSensor sensor(
        [](void* data, SoSensor* s) {
            static_cast<std::vector<SoField*>*>(data)->push_back(
                static_cast<SoNodeSensor*>(s)->getTriggerField());
        },
        &changed);
    sensor.setPriority(0);
    sensor.attach(root.get());
    a->size.setValue(1);
    EXPECT_EQ(changed, (std::vector<SoField*>{&a->size, &b->size}));
}

TEST_F(Connections, BearLongChains)
{
    constexpr std::size_t kLength = 100'000; // must not cost a stack frame each
    std::vector<SoSFInt32> chain(kLength);
    for (std::size_t i = 1; i < kLength; ++i)
        ASSERT_TRUE(chain[i].connectFrom(&chain[i - 1]));
    Listener last;
    chain.back().addAuditor(&last, SoAuditor::SENSOR);
    chain[0].setValue(42);
    EXPECT_EQ(last.take(), 1);
    EXPECT_EQ(chain.back().getValue(), 42);
    chain.back().removeAuditor(&last);
}

TEST_F(Connections, MeetAgainWithoutMultiplying)
{
    // Thirty engines in a row, each fed twice by the one before: 2^30 ways down, 30 evaluations.
    std::vector<SoRef<Sum>> row;
    for (int i = 0; i < 30; ++i) {
        row.emplace_back(new Sum);
        if (i > 0) {
            ASSERT_TRUE(row.back()->a.connectFrom(&row[row.size() - 2]->out));
            ASSERT_TRUE(row.back()->b.connectFrom(&row[row.size() - 2]->out));
        }
    }
    Listener end;
    row.back()->out.addAuditor(&end, SoAuditor::SENSOR);
    row[0]->a.setValue(1);
    EXPECT_EQ(end.take(), 1);
    EXPECT_EQ(row.back()->out.getValue(), static_cast<float>(1 << 29));
    for (const auto& sum : row)
        EXPECT_EQ(sum->computed, 1);
    row.back()->out.removeAuditor(&end);
}

TEST_F(Connections, SurviveWhateverEndsFirst)
{
    auto master = std::make_unique<SoSFFloat>();
    auto follower = std::make_unique<SoSFFloat>();
    SoSFFloat third;
    ASSERT_TRUE(follower->connectFrom(master.get()));
    ASSERT_TRUE(third.connectFrom(follower.get()));
    master->setValue(1);
    follower.reset(); // dies out of date
    EXPECT_FALSE(third.isConnected());
    master->setValue(2);
    EXPECT_TRUE(master->getFollowers().empty());
}

TEST_F(Connections, EngineFieldsHoldEngines)
{
    SoSFEngine one;
    SoMFEngine many;
    one.setValue(new Sum);
    many.addEngine(one.getValue());
    many.addEngine(new Sum);
    EXPECT_EQ(Sum::s_alive, 2);
    EXPECT_EQ(many.find(one), 0);
    many.insertSpace(0, 1);
    EXPECT_EQ(many.getNum(), 3);
    EXPECT_EQ(many[0], nullptr);
    many.deleteValues(1, 1);
    EXPECT_EQ(Sum::s_alive, 2);
    SoMFEngine follower;
    ASSERT_TRUE(follower.connectFrom(&one));
    EXPECT_EQ(follower[0], one.getValue());
    EXPECT_TRUE(many.set("[ NULL, NULL ]"));
    EXPECT_EQ(many.getNum(), 2);
    EXPECT_EQ(Sum::s_alive, 1);
}

TEST_F(Connections, EnginesAreCopiedWithWhatTheyFollow)
{
    const SoRef<Holder> node(new Holder);
    const SoRef<Sum> sum(new Sum);
    ASSERT_TRUE(sum->a.connectFrom(&node->size));
    sum->b.setValue(10);
    const SoRef<SoEngine> copy(sum->copy());
    node->size.setValue(5);
    EXPECT_EQ(static_cast<Sum*>(copy.get())->out.getValue(), 15);
    EXPECT_EQ(copy->getOutputs().size(), 1u);
    EXPECT_EQ(copy->getOutputName(copy->getOutput("out")), "out");
    EXPECT_EQ(copy->getOutput("a"), nullptr) << "an input";
}

// ---- random edits against a model

/// Fields and engines, connected at random; the model knows only the values last set and who
/// follows whom, and computes everything anew.
class Network {
public:
    static constexpr std::size_t kNodes = 12, kSums = 6;

    Network()
    {
        for (std::size_t i = 0; i < kNodes; ++i) {
            m_nodes.emplace_back(new Holder);
            m_fields.push_back(&m_nodes.back()->size);
        }
        for (std::size_t i = 0; i < kSums; ++i) {
            m_sums.emplace_back(new Sum);
            m_fields.push_back(&m_sums.back()->a);
            m_fields.push_back(&m_sums.back()->b);
        }
        for (const SoSFFloat* field : m_fields)
            m_values.push_back(field->getValue());
        m_masters.resize(m_fields.size(), kNone);
    }

    void step(std::mt19937& random)
    {
        const std::size_t at = random() % m_fields.size();
        switch (random() % 8) {
        case 0:
        case 1:
        case 2:
            connect(at, random() % (m_fields.size() + kSums));
            break;
        case 3:
            m_values[at] = valueOf(at);
            m_masters[at] = kNone;
            m_fields[at]->disconnect();
            break;
        default:
            if (m_masters[at] != kNone)
                break; // what is set there only lasts until its master changes
            m_values[at] = static_cast<float>(random() % 100);
            m_fields[at]->setValue(m_values[at]);
        }
        if (random() % 4 == 0)
            check(random() % m_fields.size());
    }
    void checkAll() const
    {
        for (std::size_t i = 0; i < m_fields.size(); ++i)
            check(i);
    }
    int refused = 0, made = 0;

private:
    static constexpr std::size_t kNone = ~std::size_t(0);

    // A source is a field by its index, or behind them the output of a sum.
    float sourceValue(std::size_t source) const
    {
        if (source < m_fields.size())
            return valueOf(source);
        const std::size_t first = kNodes + 2 * (source - m_fields.size());
        return valueOf(first) + valueOf(first + 1);
    }
    float valueOf(std::size_t at) const
    {
        return m_masters[at] == kNone ? m_values[at] : sourceValue(m_masters[at]);
    }
    bool dependsOn(std::size_t source, std::size_t at) const
    {
        if (source == at)
            return true;
        if (source < m_fields.size())
            return m_masters[source] != kNone && dependsOn(m_masters[source], at);
        const std::size_t first = kNodes + 2 * (source - m_fields.size());
        return dependsOn(first, at) || dependsOn(first + 1, at);
    }
    void connect(std::size_t at, std::size_t source)
    {
        SoField* master =
            source < m_fields.size() ? m_fields[source] : &m_sums[source - m_fields.size()]->out;
        if (dependsOn(source, at)) {
            const auto errors = support::expectErrors();
            EXPECT_FALSE(m_fields[at]->connectFrom(master));
            ++refused;
            return;
        }
        EXPECT_TRUE(m_fields[at]->connectFrom(master));
        m_masters[at] = source;
        ++made;
    }
    void check(std::size_t at) const
    {
        ASSERT_EQ(m_fields[at]->getValue(), valueOf(at)) << "field " << at;
        ASSERT_EQ(m_fields[at]->isConnected(), m_masters[at] != kNone);
    }

    std::vector<SoRef<Holder>> m_nodes;
    std::vector<SoRef<Sum>> m_sums;
    std::vector<SoSFFloat*> m_fields;
    std::vector<float> m_values;
    std::vector<std::size_t> m_masters;
};

TEST_F(Connections, RandomNetworksGiveWhatTheirModelGives)
{
    int refused = 0, made = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Network network;
        for (int i = 0; i < 400; ++i)
            network.step(random);
        network.checkAll();
        refused += network.refused;
        made += network.made;
    }
    EXPECT_GT(refused, 100);
    EXPECT_GT(made, 1000);
}

} // namespace
