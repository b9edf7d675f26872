// What mirrors of a graph hear that no notification tells.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoDeathObserver.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

class Log final : public SoDeathObserver {
public:
    std::vector<std::string> lines;

    void mark(const SoNode* node, const std::string& name)
    {
        node->tellOfDeath();
        m_names.push_back({node, name});
    }

private:
    void objectDies(const SoBase* object) override { add("dies", object); }
    void nameChanged(const SoBase* object) override
    {
        add(std::string("named ") + object->getName().getString(), object);
    }
    void changedUnheard(const SoFieldContainer* container) override
    {
        add("silent", container);
        if (container->getChangeId() == 0)
            lines.emplace_back("without a stamp");
    }
    void add(const std::string& what, const SoBase* object)
    {
        for (const auto& [base, name] : m_names)
            if (base == object)
                lines.push_back(name + ' ' + what);
    }

    std::vector<std::pair<const SoBase*, std::string>> m_names;
};

using Lines = std::vector<std::string>;

struct SoDeathObserverTest : ::testing::Test {
    SoDeathObserverTest()
    {
        SoDB::init();
        root = new SoSeparator;
        group = new SoSeparator;
        cube = new SoCube;
        group->addChild(cube);
        root->addChild(group);
        log.mark(root.get(), "root");
        log.mark(group, "group");
        log.mark(cube, "cube");
    }
    SoRef<SoSeparator> root;
    SoSeparator* group;
    SoCube* cube;
    Log log;
};

TEST_F(SoDeathObserverTest, HearsOfDeathsThatAreNotNotified)
{
    root->enableNotify(false);
    cube->enableNotify(false);
    root->removeChild(0);
    EXPECT_EQ(log.lines, (Lines{"root silent", "group dies", "cube dies"}));
    log.lines.clear();
    std::thread([this] { root.reset(); }).join();
    EXPECT_EQ(log.lines, (Lines{"root dies"}));
}

TEST_F(SoDeathObserverTest, HearsOfEveryNewName)
{
    cube->setName("a b");
    cube->setName("");
    root->addChild(new SoCube);
    static_cast<SoNode*>(root->getChild(1))->setName("nobody asked");
    EXPECT_EQ(log.lines, (Lines{"cube named a_b", "cube named "}));
}

TEST_F(SoDeathObserverTest, HearsOnceOfEachTimeOfSilence)
{
    group->enableNotify(false);
    EXPECT_TRUE(log.lines.empty());
    cube->width = 5;
    group->enableNotify(false);
    group->addChild(new SoCube);
    cube->width = 6;
    EXPECT_EQ(log.lines, (Lines{"group silent"}));
    group->enableNotify(true);
    group->touch();
    EXPECT_EQ(log.lines.size(), 1u);
    group->enableNotify(false);
    cube->touch();
    EXPECT_EQ(log.lines.size(), 2u);
}

} // namespace
