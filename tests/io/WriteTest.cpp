#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <cstdint>
#include <cstring>
#include <set>

using WriteTest = io::IoTest;

namespace {

std::string writePath(SoPath* path)
{
    SoOutput out;
    out.setBuffer();
    SoWriteAction(&out).apply(path);
    return std::string(out.getText());
}

SoRef<SoPath> readPath(const std::string& text)
{
    SoInput in;
    SoPath* path = nullptr;
    if (!in.setBuffer(text.data(), text.size()) || !SoDB::read(&in, path))
        return nullptr;
    return SoRef<SoPath>(path);
}

} // namespace

TEST_F(WriteTest, GivesEverySharedOrNamedNodeANameOfItsOwn)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    for (int i = 0; i < 6; ++i) {
        auto* cube = new SoCube;
        // Clashes on purpose: equal names, none, and one that looks like a numbered one.
        if (i % 3 == 0)
            cube->setName("Box");
        if (i == 5)
            cube->setName("Box_1");
        root->addChild(cube);
        root->addChild(cube);
    }
    for (const char* prefix : {"+", "_"}) {
        SoBase::setInstancePrefix(prefix);
        const std::string text = io::write(root.get());
        std::set<std::string> names;
        int uses = 0;
        for (std::size_t at = 0; (at = text.find_first_of("DU", at)) != std::string::npos; ++at) {
            const std::string name =
                text.substr(at + 4, text.find_first_of(" \n", at + 4) - at - 4);
            if (text.compare(at, 4, "DEF ") == 0) {
                EXPECT_TRUE(names.insert(name).second) << name;
            } else if (text.compare(at, 4, "USE ") == 0) {
                EXPECT_TRUE(names.count(name)) << name;
                ++uses;
            }
        }
        EXPECT_EQ(names.size(), 6u);
        EXPECT_EQ(uses, 6);
        const auto back = io::read(text);
        ASSERT_TRUE(back);
        EXPECT_EQ(io::write(back.get()), text);
    }
    SoBase::setInstancePrefix("+");
}

TEST_F(WriteTest, RestoresNamesWithoutTheirNumbers)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* plain = new SoCube;
    root->addChild(plain);
    root->addChild(plain);
    for (int i = 0; i < 2; ++i) {
        root->addChild(new SoMaterial);
        root->getChild(2 + i)->setName("Paint");
    }
    const auto back = io::read(io::write(root.get()));
    ASSERT_TRUE(back);
    const SoChildList& children = *back->getChildren();
    EXPECT_EQ(children[0]->getName(), "");
    EXPECT_EQ(children[0], children[1]);
    EXPECT_EQ(children[2]->getName(), "Paint");
    EXPECT_EQ(children[3]->getName(), "Paint");
    EXPECT_NE(children[2], children[3]);
}

TEST_F(WriteTest, WritesOnlyWhatDiffers)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* cube = new SoCube;
    root->addChild(cube);
    EXPECT_EQ(io::write(root.get()), "#Kalmyr V1.0 ascii\n\nSeparator {\n  Cube { }\n}\n");
    cube->depth.setIgnored(true);
    cube->height = 2; // as large as the default, but set
    EXPECT_EQ(io::write(root.get()),
              "#Kalmyr V1.0 ascii\n\nSeparator {\n  Cube {\n    height 2\n    depth 2 ~\n  }\n}\n");
}

TEST_F(WriteTest, CutsAPathOutOfTheScene)
{
    const auto root = io::read(std::string(io::kAscii) + R"(
        Separator {
            DEF Beside Separator { Cube { } }
            DEF Paint Material { }
            DEF Middle Separator {
                Translation { }
                DEF Before Separator { }
                DEF Target Separator { Cube { } USE Paint }
                DEF After Material { }
            }
            DEF Last Material { }
        })");
    ASSERT_TRUE(root);
    const SoRef<SoPath> path(new SoPath(root.get()));
    path->append(2);
    path->append(2);
    const std::string text = writePath(path.get());
    const auto back = readPath(text);
    ASSERT_TRUE(back) << text;
    ASSERT_EQ(back->getLength(), 3);
    EXPECT_EQ(back->getNode(1)->getName(), "Middle");
    EXPECT_EQ(back->getTail()->getName(), "Target");
    EXPECT_EQ(back->getTail()->getChildren()->getLength(), 2);
    for (const char* gone : {"Beside", "Before", "After", "Last"})
        EXPECT_EQ(text.find(gone), std::string::npos) << gone;
    // What affects the target comes along, and is still shared.
    EXPECT_EQ((*back->getHead()->getChildren())[0], (*back->getTail()->getChildren())[1]);
    EXPECT_EQ(writePath(back.get()), text);
}

TEST_F(WriteTest, CutsAPathOutOfVrmlGroups)
{
    const auto root = io::read(
        std::string(io::kVrml97)
        + "Group { children [ Group { } DEF T Transform { children Shape { } } ] } Group { }");
    const SoRef<SoPath> path(new SoPath(root.get()));
    for (const int index : {0, 0, 1})
        path->append(index);
    const auto back = readPath(writePath(path.get()));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->getTail()->getName(), "T");
    EXPECT_EQ(back->getTail()->getChildren()->getLength(), 1);
    EXPECT_EQ(back->getNodeFromTail(1)->getChildren()->getLength(), 1);
}

TEST_F(WriteTest, RefusesTextThatIsNoPath)
{
    auto errors = support::expectErrors();
    EXPECT_FALSE(readPath(""));
    EXPECT_FALSE(readPath("Separator { }"));
    EXPECT_FALSE(readPath("Path { head Separator { } indices [ 0 ] }"));
    EXPECT_TRUE(errors.contains("expected the index of a child"));
    EXPECT_FALSE(readPath("Path { head NULL indices [ ] }"));
    EXPECT_TRUE(readPath("Path { head Separator { } indices [ ] }"));
}

TEST_F(WriteTest, KeepsFloatsToTheBit)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* coords = new SoCoordinate3;
    root->addChild(coords);
    std::uint32_t bits = 1;
    for (int i = 0; i < 3000; ++i) {
        SbVec3f point;
        for (int k = 0; k < 3; ++k) {
            bits = bits * 1664525u + 1013904223u;
            const std::uint32_t finite =
                (bits & 0x7f800000u) == 0x7f800000u ? bits & ~0x40000000u : bits;
            std::memcpy(&point[k], &finite, sizeof finite);
        }
        coords->point.set1Value(i, point);
    }
    const auto back = io::read(io::write(root.get()));
    ASSERT_TRUE(back);
    const auto& points = static_cast<SoCoordinate3*>((*back->getChildren())[0])->point;
    ASSERT_EQ(points.getNum(), coords->point.getNum());
    EXPECT_EQ(std::memcmp(points.getValues(), coords->point.getValues(), sizeof(SbVec3f) * 3000),
              0);
}

TEST_F(WriteTest, LeavesTheFieldsOutWithTheRoot)
{
    const SoRef<SoSeparator> holder(new SoSeparator);
    holder->renderCaching = SoSeparator::OFF;
    holder->addChild(new SoCube);
    holder->addChild(new SoMaterial);
    SoOutput out;
    out.setBuffer();
    SoWriteAction write(&out);
    write.setRootWritten(false);
    write.apply(holder.get());
    EXPECT_EQ(std::string(out.getText()), std::string(io::kAscii) + "\nCube { }\nMaterial { }\n");
}
