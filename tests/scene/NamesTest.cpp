#include "NodesSupport.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/shapes/SoCube.h>

#include <algorithm>
#include <map>
#include <random>

namespace {

using NamesTest = nodetest::NodesTest;

TEST_F(NamesTest, BecomeWhatAFileCanHold)
{
    const SoRef<SoNode> node(new SoCube);
    const std::pair<const char*, const char*> cases[] = {
        {"plain", "plain"},
        {"7 up", "_7_up"},
        {"a.b+c", "a_b_c"},
        {"{}", "__"},
        {"Stra\u00dfe", "Stra\u00dfe"},
        {"", ""},
    };
    for (const auto& [given, kept] : cases) {
        node->setName(given);
        EXPECT_STREQ(node->getName().getString(), kept);
    }
}

/// The nodes of a name, against a plain list of who was named when.
TEST_F(NamesTest, LookUpFindsTheLivingInTheOrderOfNaming)
{
    std::mt19937 random(3);
    std::vector<SoRef<SoNode>> nodes(40);
    std::vector<std::pair<std::string, SoNode*>> named; // oldest first
    const auto forget = [&](SoNode* node) {
        named.erase(std::remove_if(named.begin(), named.end(),
                                   [=](const auto& entry) { return entry.second == node; }),
                    named.end());
    };
    for (int step = 0; step < 3000; ++step) {
        SoRef<SoNode>& node = nodes[random() % nodes.size()];
        if (!node || random() % 4 == 0) {
            forget(node.get());
            node = random() % 2 ? static_cast<SoNode*>(new SoCube) : new SoMaterial;
        }
        const std::string name = "name" + std::to_string(random() % 5);
        forget(node.get());
        node->setName(SbName(name));
        named.emplace_back(name, node.get());

        std::vector<SoBase*> all, cubes;
        for (const auto& [other, holder] : named) {
            if (other == name) {
                all.push_back(holder);
                if (holder->isOfType(SoCube::getClassTypeId()))
                    cubes.push_back(holder);
            }
        }
        ASSERT_EQ(SoBase::getNamedBases(SbName(name), SoNode::getClassTypeId()), all);
        ASSERT_EQ(SoBase::getNamedBases(SbName(name), SoCube::getClassTypeId()), cubes);
        ASSERT_EQ(SoNode::getByName(SbName(name)), node.get());
    }
    EXPECT_FALSE(SoNode::getByName("nobody"));
}

TEST_F(NamesTest, TypesOfModulesComeBackToTheirPlace)
{
    const SoType cube = SoCube::getClassTypeId(), node = SoNode::getClassTypeId();
    const SoType type = SoType::createType(cube, "TestComeAndGo");
    const SoType below = SoType::createType(type, "TestComeAndGoBelow");
    SoType::removeType(below);
    SoType::removeType(type);
    EXPECT_TRUE(SoType::fromName("TestComeAndGo").isBad());
    const int types = SoType::getNumTypes();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(SoType::createType(cube, "TestComeAndGo"), type);
        EXPECT_EQ(SoType::createType(type, "TestComeAndGoBelow"), below);
        EXPECT_EQ(SoType::fromName("TestComeAndGoBelow"), below);
        EXPECT_TRUE(below.isDerivedFrom(cube));
        SoType::removeType(below);
        SoType::removeType(type);
    }
    EXPECT_EQ(SoType::getNumTypes(), types);
    const SoType elsewhere = SoType::createType(node, "TestComeAndGo");
    EXPECT_NE(elsewhere, type);
    EXPECT_FALSE(elsewhere.isDerivedFrom(cube));
    SoType::removeType(elsewhere);
}

} // namespace
