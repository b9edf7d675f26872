#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

using ReaderTest = io::IoTest;

namespace {

std::string text(const char* header, const std::string& body)
{
    return header + body;
}

std::string nested(int depth, const std::string& open, const std::string& close)
{
    std::string result;
    for (int i = 0; i < depth; ++i)
        result += open;
    for (int i = 0; i < depth; ++i)
        result += close;
    return result;
}

template <class T>
T* child(SoNode* node, int index)
{
    return static_cast<T*>((*node->getChildren())[index]);
}

} // namespace

TEST_F(ReaderTest, KeepsTheOnlySeparatorAndWrapsEverythingElse)
{
    const auto one = io::read(text(io::kAscii, "DEF Root Separator { Cube { } }"));
    ASSERT_TRUE(one);
    EXPECT_EQ(one->getName(), "Root");
    EXPECT_EQ(one->getRefCount(), 1); // nobody else keeps it, although it has a name
    const auto two = io::read(text(io::kAscii, "Separator { } Cube { }"));
    EXPECT_EQ(two->getChildren()->getLength(), 2);
    const auto cube = io::read(text(io::kAscii, "Cube { }"));
    EXPECT_EQ(cube->getTypeId(), SoSeparator::getClassTypeId());
    const auto world = io::read(text(io::kVrml97, "Group { } Group { }"));
    ASSERT_EQ(world->getChildren()->getLength(), 1);
    EXPECT_EQ(child<SoNode>(world.get(), 0)->getTypeId(), SoVRMLGroup::getClassTypeId());
    EXPECT_EQ(child<SoNode>(world.get(), 0)->getChildren()->getLength(), 2);
}

TEST_F(ReaderTest, SharesWhatUseNames)
{
    const auto root = io::read(text(io::kVrml97, R"(
        Transform { children [ DEF A Shape { appearance DEF L Appearance { } } Shape { appearance USE L } USE A ] }
        DEF A Group { } USE A)"));
    auto* top = child<SoVRMLGroup>(root.get(), 0);
    auto* transform = child<SoVRMLTransform>(top, 0);
    ASSERT_EQ(transform->children.getNum(), 3);
    EXPECT_EQ(transform->children[0], transform->children[2]);
    const auto* a = static_cast<SoVRMLShape*>(transform->children[0]);
    const auto* b = static_cast<SoVRMLShape*>(transform->children[1]);
    EXPECT_EQ(a->appearance.getValue(), b->appearance.getValue());
    EXPECT_EQ(top->children[1], top->children[2]); // the later A
    EXPECT_NE(top->children[1], transform->children[0]);
    EXPECT_TRUE(transform->isNotifyEnabled());
}

TEST_F(ReaderTest, LeavesNothingBehindAfterAFault)
{
    auto errors = support::expectErrors();
    EXPECT_FALSE(io::read(text(io::kAscii, "DEF Gone Separator { DEF GoneToo Material { } "
                                           "IndexedFaceSet { coordIndex [ 0 1 x ] } }")));
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_FALSE(SoNode::getByName("Gone"));
    EXPECT_FALSE(SoNode::getByName("GoneToo"));
}

TEST_F(ReaderTest, LimitsNesting)
{
    // Deep enough for anything real, and no deeper than reading, writing and deleting stand.
    for (const auto& [header, open, close] :
         {std::tuple(io::kAscii, "Separator {", "}"),
          std::tuple(io::kVrml97, "Group { children [", "]}")}) {
        const auto deep = io::read(text(header, nested(5000, open, close)));
        ASSERT_TRUE(deep);
        EXPECT_TRUE(io::read(io::write(deep.get())));
        auto errors = support::expectErrors();
        EXPECT_FALSE(io::read(text(header, nested(200000, open, close))));
        EXPECT_TRUE(errors.contains("expected nodes nested at most"));
    }
    auto warnings = support::expectErrors();
    const auto kept = io::read(text(io::kAscii, "Bogus {" + nested(200000, "x {", "}") + "}"));
    ASSERT_TRUE(kept);
}

TEST_F(ReaderTest, LimitsNames)
{
    auto errors = support::expectErrors();
    EXPECT_TRUE(io::read(text(io::kAscii, "DEF " + std::string(4000, 'n') + " Cube { }")));
    EXPECT_FALSE(io::read(text(io::kAscii, "DEF " + std::string(5000, 'n') + " Cube { }")));
    EXPECT_TRUE(errors.contains("2:5: error: expected a name of at most 4096 bytes"));
}

TEST_F(ReaderTest, KeepsUnknownNodesWithTheirFields)
{
    const auto root =
        io::read(text(io::kAscii, "Separator { DEF G Gear { fields [ SFFloat teeth, SFNode core ] "
                                  "teeth 12 core Cube { } Cube { } } }"));
    auto* gear = child<SoUnknownNode>(root.get(), 0);
    ASSERT_EQ(gear->getTypeId(), SoUnknownNode::getClassTypeId());
    EXPECT_EQ(gear->getUnknownTypeName(), "Gear");
    SbString teeth;
    gear->getField("teeth")->get(teeth);
    EXPECT_EQ(teeth, "12");
    EXPECT_EQ(gear->getNumChildren(), 1);
    const SoRef<SoNode> copy(gear->copy());
    EXPECT_EQ(io::write(copy.get()), io::write(gear));
}

TEST_F(ReaderTest, WarnsOnceForEachKindOfThingLeftOut)
{
    auto warnings = support::expectErrors();
    const auto root = io::read(text(io::kVrml97, R"(
P { } P { } Q { a [ 1 { } ] }
Box { depth 3 } Box { depth 4 }
ROUTE a.b TO c.d ROUTE a.b TO c.d
Group { children [ P { } Shape { } ROUTE a.b TO c.d USE Nothing ] })"));
    ASSERT_TRUE(root);
    EXPECT_EQ(warnings.count(), 7u);
    EXPECT_TRUE(warnings.contains("<memory>:6:36: 'ROUTE' stands in a list of nodes"));
    EXPECT_TRUE(warnings.contains("<memory>:3:1: node type 'P' is unknown"));
    EXPECT_TRUE(warnings.contains("<memory>:3:13: node type 'Q' is unknown"));
    EXPECT_TRUE(
        warnings.contains("<memory>:4:7: 'depth' is no field of 'Box'; it is kept as text"));
    EXPECT_TRUE(warnings.contains("<memory>:5:7: a route names 'a', which is no node"));
    EXPECT_TRUE(warnings.contains("<memory>:5:14: a route names 'c', which is no node"));
    EXPECT_TRUE(warnings.contains("<memory>:6:57: expected a name that DEF gave before"));
    EXPECT_EQ(child<SoVRMLGroup>(child<SoNode>(root.get(), 0), 5)->children.getNum(), 2);
    warnings.clear();
    std::string many = io::kVrml97;
    for (int i = 0; i < 1000; ++i)
        many += "X" + std::to_string(i) + " { } ";
    EXPECT_TRUE(io::read(many));
    EXPECT_EQ(warnings.count(), static_cast<std::size_t>(SoInput::kMaxWarnings) + 1);
}

TEST_F(ReaderTest, ReadsNodeByNode)
{
    const std::string two = "Cube { width 3 } DEF M Material { } USE M";
    SoInput in;
    ASSERT_TRUE(in.setBuffer(two.data(), two.size())); // no header needed
    SoNode* node = nullptr;
    ASSERT_TRUE(SoDB::read(&in, node));
    const SoRef<SoNode> first(node);
    EXPECT_TRUE(first->isOfType(SoCube::getClassTypeId()));
    ASSERT_TRUE(SoDB::read(&in, node));
    const SoRef<SoNode> second(node);
    ASSERT_TRUE(SoDB::read(&in, node));
    EXPECT_EQ(node, second.get());
    ASSERT_TRUE(SoDB::read(&in, node));
    EXPECT_EQ(node, nullptr); // the end
}

TEST_F(ReaderTest, RefusesOtherFormatsWhereVrmlIsWanted)
{
    auto errors = support::expectErrors();
    const std::string scene = text(io::kAscii, "Cube { }");
    SoInput in;
    ASSERT_TRUE(in.setBuffer(scene.data(), scene.size()));
    EXPECT_EQ(SoDB::readAllVRML(&in), nullptr);
    EXPECT_TRUE(errors.contains("expected the header \"#VRML V2.0 utf8\""));
}

TEST_F(ReaderTest, TakesLinearTime)
{
    // Without end: anything quadratic takes minutes here.
    constexpr int kCount = 30000;
    const auto repeat = [](const char* line) {
        std::string text;
        for (int i = 0; i < kCount; ++i)
            for (const char* c = line; *c; ++c)
                *c == '%' ? text += std::to_string(i) : text += *c;
        return text;
    };
    const auto numChildren = [](const std::string& scene) {
        const auto root = io::read(scene);
        // What was read is written and read in the same time.
        const auto again = root ? io::read(io::write(root.get())) : nullptr;
        return again ? child<SoVRMLGroup>(again.get(), 0)->getNumChildren() : -1;
    };
    const std::string header = io::kVrml97;
    EXPECT_EQ(numChildren(header + repeat("DEF N% Transform { translation 1 2 3 } USE N%\n")),
              2 * kCount);
    EXPECT_EQ(numChildren(header + "DEF A Group { }" + repeat("USE A DEF A Group { }\n")),
              2 * kCount + 1);
    const char* const proto = "PROTO P% [ field SFVec3f v 1 1 1 ] { Box { size IS v } } P% { }\n";
    EXPECT_EQ(numChildren(header + repeat(proto)), kCount);
    EXPECT_EQ(numChildren(header + "PROTO O [ ] { " + repeat(proto) + "} O { }"), 1);
    EXPECT_EQ(numChildren(header + "DEF S Script { "
                          + repeat("eventIn SFBool a% eventOut SFBool b% ") + "} "
                          + repeat("ROUTE S.b% TO S.a%\n")),
              1);
    // Unknown nodes in each other that cannot be taken apart, at any level, and many more levels
    // than are nodes.
    auto warnings = support::expectErrors();
    const std::string filling = "\"" + std::string(kCount * 30, 'x') + "\"";
    for (const auto& [vrml, open, close] :
         {std::tuple(header, "U { f ", " 5 }"), std::tuple(header, "U { f ", " }"),
          std::tuple(std::string("#VRML V1.0 ascii\n"), "U { ", " }")}) {
        for (const int levels : {5000, 20 * kCount}) {
            std::string scene = vrml;
            for (int i = 0; i < levels; ++i)
                scene += open;
            scene += filling;
            for (int i = 0; i < levels; ++i)
                scene += close;
            EXPECT_TRUE(io::read(scene)) << open << close;
        }
    }
}
