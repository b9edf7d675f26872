#include <kalmyr/core/SoPath.h>
#include <kalmyr/core/SoPlaces.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

class Places : public testing::Test {
protected:
    static void SetUpTestSuite() { SoDB::init(); }

    /// Indices of each path, sorted, as "0.2 1.0"; every step is checked against the graph.
    static std::string placesOf(SoNode* root, SoNode* node, std::size_t limit = 100)
    {
        std::vector<std::string> texts;
        for (const SoRef<SoPath>& path : kalmyr::findPlaces(root, node, limit)) {
            EXPECT_EQ(path->getHead(), root);
            EXPECT_EQ(path->getTail(), node);
            std::string text;
            for (int i = 1; i < path->getLength(); ++i) {
                const int index = path->getIndex(i);
                const SoChildList* children = path->getNode(i - 1)->getInternalChildren();
                EXPECT_TRUE(index < 0 || (*children)[index] == path->getNode(i));
                text += (i > 1 ? "." : "") + std::to_string(index);
            }
            texts.push_back(text.empty() ? "root" : text);
        }
        std::sort(texts.begin(), texts.end());
        std::string all;
        for (const std::string& text : texts)
            all += (all.empty() ? "" : " ") + text;
        return all;
    }

    const SoRef<SoSeparator> root{new SoSeparator};
};

} // namespace

TEST_F(Places, AreFoundWhereverANodeIsHeld)
{
    auto* shared = new SoSeparator;
    auto* cube = new SoCube;
    auto* other = new SoSeparator;
    shared->addChild(cube);
    root->addChild(shared);
    root->addChild(other);
    root->addChild(shared);
    other->addChild(new SoCube);
    other->addChild(shared);
    const SoRef<SoSeparator> elsewhere(new SoSeparator);
    elsewhere->addChild(cube);

    EXPECT_EQ(placesOf(root.get(), cube), "0.0 1.1.0 2.0");
    EXPECT_EQ(placesOf(root.get(), cube, 2).size(), std::string("0.0 2.0").size());
    EXPECT_EQ(placesOf(elsewhere.get(), cube), "0");
    EXPECT_EQ(placesOf(root.get(), root.get()), "root");
    EXPECT_EQ(placesOf(cube, root.get()), "");
    EXPECT_TRUE(kalmyr::isBelow(root.get(), cube));
    EXPECT_FALSE(kalmyr::isBelow(other, root.get()));
    EXPECT_EQ(kalmyr::findAbove(cube, other), other);
    EXPECT_EQ(kalmyr::findAbove(other, elsewhere.get()), nullptr);
}

TEST_F(Places, AreFoundInFields)
{
    auto* world = new SoVRMLGroup;
    auto* shape = new SoVRMLShape;
    auto* box = new SoVRMLBox;
    shape->geometry.setValue(box);
    world->addChild(shape);
    root->addChild(world);
    EXPECT_EQ(placesOf(root.get(), box), "0.0.-1");
}

/// Nodes that hold others twice, thirty levels deep.
TEST_F(Places, AreGivenUpWhereTheyHaveNoEnd)
{
    SoSeparator* level = root.get();
    for (int i = 0; i < 30; ++i) {
        auto* next = new SoSeparator;
        level->addChild(next);
        level->addChild(next);
        level = next;
    }
    EXPECT_EQ(kalmyr::findPlaces(root.get(), level, 10).size(), 10u);
    const SoRef<SoSeparator> elsewhere(new SoSeparator);
    EXPECT_TRUE(kalmyr::findPlaces(elsewhere.get(), level, 10).empty());
    EXPECT_FALSE(kalmyr::isBelow(elsewhere.get(), level));
}
