#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/sensors/SoRoute.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

namespace fs = std::filesystem;

namespace {

/// What readers must not lose.
class KeptTest : public io::IoTest {
protected:
    static std::string writtenAs(SoNode* node, const char* header)
    {
        SoOutput out;
        out.setHeaderString(header);
        out.setBuffer();
        SoWriteAction action(&out);
        action.apply(node);
        return std::string(out.getText());
    }
    static std::string again(const std::string& text, const char* header)
    {
        SoInput in;
        in.setBuffer(text.data(), text.size());
        SoRef<SoNode> scene(in.isFileVRML2() ? static_cast<SoNode*>(SoDB::readAllVRML(&in))
                                             : SoDB::readAll(&in));
        // What was one node in Kalmyr text got a separator around it.
        if (scene && in.getFormat() == SoInput::KALMYR_ASCII)
            scene = (*scene->getChildren())[0];
        return scene ? writtenAs(scene.get(), header) : std::string();
    }
    static SoRef<SoVRMLGroup> world(const std::string& text)
    {
        SoInput in;
        in.setBuffer(text.data(), text.size());
        return SoRef<SoVRMLGroup>(SoDB::readAllVRML(&in));
    }
    static bool has(const std::string& text, const std::string& part)
    {
        return text.find(part) != std::string::npos;
    }
    static void expectParts(const std::string& text, std::initializer_list<const char*> parts)
    {
        for (const char* part : parts)
            EXPECT_TRUE(has(text, part)) << part << "\n" << text;
    }
};

constexpr const char* kVrml1 = "#VRML V1.0 ascii\n";

} // namespace

TEST_F(KeptTest, FieldsThatTheClassDoesNotHave)
{
    auto warnings = support::expectErrors();
    const std::string text = std::string(io::kVrml97)
                             + "Shape { metadata MetadataString { name \"a}\" value [ \"b\" ] }\n"
                               "  weights [ 1.50 2 ] geometry Box { edge TRUE shade 0 0.5 1 } }";
    const std::string once = again(text, "#VRML V2.0 utf8");
    expectParts(once, {"metadata MetadataString { name \"a}\" value [ \"b\" ] }",
                       "weights [ 1.50 2 ]", "edge TRUE", "shade 0 0.5 1"});
    EXPECT_EQ(again(once, "#VRML V2.0 utf8"), once);
    // Through the toolkit's own format, and in copies.
    const std::string own = again(once, "#Kalmyr V1.0 ascii");
    EXPECT_EQ(again(own, "#Kalmyr V1.0 ascii"), own);
    const SoRef<SoNode> scene = io::read(own);
    ASSERT_TRUE(scene);
    const SoRef<SoNode> copy((*scene->getChildren())[0]->copy());
    EXPECT_EQ(writtenAs(copy.get(), "#Kalmyr V1.0 ascii"), own);
}

TEST_F(KeptTest, DeclaredFieldsOfKnownNodes)
{
    auto warnings = support::expectErrors();
    warnings.mayStayEmpty();
    const std::string text = std::string(kVrml1)
                             + "Cube { fields [ SFFloat width, SFString part, SFBitMask m ]\n"
                               "  width 3 part \"x\" m (A | B) unheard 0xFF 7 }";
    const std::string once = again(text, "#VRML V1.0 ascii");
    expectParts(once, {"fields [ SFFloat width, SFString part, SFBitMask m ]", "part \"x\"",
                       "m (A | B)", "unheard 0xFF 7", "width 3"});
    EXPECT_EQ(again(once, "#VRML V1.0 ascii"), once);
    const std::string own = again(
        "#Kalmyr V1.0 ascii\nCube { fields [ SFString part ] part \"x\" }", "#Kalmyr V1.0 ascii");
    EXPECT_TRUE(has(own, "KEEP \"part\"")) << own;
}

TEST_F(KeptTest, RoutesInFrontOfNamesAndToLists)
{
    auto warnings = support::expectErrors();
    const std::string once = again(std::string(io::kVrml97) + R"(
ROUTE T.scale TO S.set_center
PROTO P [ exposedField MFNode list [ ] eventIn MFNode set ] { Group { children IS list set_children IS set } }
DEF S Transform { } DEF G Group { children [ ROUTE H.children TO G.set_children ] } DEF H Group { }
DEF X P { list DEF T Transform { } } ROUTE G.children_changed TO X.list ROUTE H.children TO X.set)",
                                   "#VRML V2.0 utf8");
    expectParts(once, {"ROUTE T.scale TO S.center", "ROUTE H.children TO G.children",
                       "ROUTE G.children TO X.list", "ROUTE H.children TO X.set"});
}

TEST_F(KeptTest, SeveralSourcesOfAField)
{
    const std::string text = std::string(io::kVrml97) + R"(
DEF A PositionInterpolator { key [ 0 1 ] keyValue [ 0 0 0, 1 0 0 ] }
DEF B PositionInterpolator { key [ 0 1 ] keyValue [ 0 0 0, 0 1 0 ] }
DEF T Transform { } DEF U Transform { }
ROUTE A.value_changed TO T.translation
ROUTE B.value_changed TO T.translation
ROUTE T.translation TO U.translation
ROUTE U.translation TO T.translation)";
    SoRef<SoVRMLGroup> scene = world(text);
    ASSERT_TRUE(scene);
    const auto field = [&](int node, const char* name) {
        return scene->getChild(node)->getField(SbName(name));
    };
    const auto* t = static_cast<SoVRMLTransform*>(scene->getChild(2));
    auto* u = static_cast<SoVRMLTransform*>(scene->getChild(3));
    for (const auto& [source, wanted] : {std::pair(0, SbVec3f(1, 0, 0)), {1, {0, 1, 0}}}) {
        field(source, "set_fraction")->set("0");
        field(source, "set_fraction")->set("1");
        EXPECT_EQ(t->translation.getValue(), wanted);
        EXPECT_EQ(u->translation.getValue(), wanted);
    }
    u->translation.setValue(5, 5, 5); // against the circle
    EXPECT_EQ(t->translation.getValue(), SbVec3f(5, 5, 5));
    const std::string once = writtenAs(scene.get(), "#VRML V2.0 utf8");
    expectParts(once,
                {"ROUTE A.value_changed TO T.translation", "ROUTE B.value_changed TO T.translation",
                 "ROUTE T.translation TO U.translation", "ROUTE U.translation TO T.translation"});
    EXPECT_EQ(again(once, "#VRML V2.0 utf8"), once);
    // A source may die, and so may the field.
    const SoRef<SoNode> b(scene->getChild(1));
    scene->removeChild(2);
    b->getField(SbName("set_fraction"))->set("0.5");
    scene = nullptr;
    b->getField(SbName("set_fraction"))->set("0");
}

TEST_F(KeptTest, CopiesKeepRoutes)
{
    const std::string text = std::string(io::kVrml97) + R"(
PROTO Mover [ eventIn SFFloat go exposedField SFVec3f goal 7 7 7 eventOut SFVec3f at ] {
  DEF T Transform { translation IS goal }
  DEF A PositionInterpolator { set_fraction IS go key [ 0 1 ] keyValue [ 0 0 0, 1 0 0 ] value_changed IS at }
  DEF B PositionInterpolator { set_fraction IS go key [ 0 1 ] keyValue [ 0 0 0, 0 3 0 ] }
  ROUTE A.value_changed TO T.center
  ROUTE B.value_changed TO T.center
}
DEF C TimeSensor { loop TRUE stopTime 1 }
DEF D TimeSensor { stopTime 1 }
DEF T Transform { translation 9 9 9 } DEF U Transform { center 8 8 8 }
DEF M Mover { goal 1 2 3 } DEF N Mover { }
ROUTE C.fraction_changed TO M.go
ROUTE D.fraction_changed TO M.go
ROUTE M.at TO T.translation
ROUTE N.at TO T.translation
ROUTE T.translation TO U.center
ROUTE U.center TO T.translation
ROUTE U.center TO T.center)";
    const SoRef<SoVRMLGroup> scene = world(text);
    ASSERT_TRUE(scene);
    const std::string once = writtenAs(scene.get(), "#VRML V2.0 utf8");
    expectParts(once, {"translation 9 9 9", "center 8 8 8", "ROUTE D.fraction_changed TO M.go",
                       "ROUTE N.at TO T.translation", "ROUTE U.center TO T.translation"});
    EXPECT_EQ(again(once, "#VRML V2.0 utf8"), once);
    const SoRef<SoNode> copy(scene->copy());
    EXPECT_EQ(writtenAs(copy.get(), "#VRML V2.0 utf8"), once);
    const auto fieldOf = [](const SoRef<SoNode>& world, int node, const char* name) {
        return (*world->getChildren())[node]->getField(SbName(name));
    };
    for (const int mover : {4, 5}) {
        fieldOf(copy, mover, "go")->set("0");
        fieldOf(copy, mover, "go")->set("1");
        SbString at;
        fieldOf(copy, 2, "translation")->get(at);
        EXPECT_EQ(at, "1 0 0");
        // The second route inside has the last word.
        const SoNode* part = (*(*copy->getChildren())[mover]->getInternalChildren())[0];
        part->getField(SbName("center"))->get(at);
        EXPECT_EQ(at, "0 3 0");
    }
    EXPECT_EQ(writtenAs(scene.get(), "#VRML V2.0 utf8"), once);
}

TEST_F(KeptTest, RoutesOfUnknownNodes)
{
    auto warnings = support::expectErrors();
    const std::string once = again(std::string(io::kVrml97) + R"(
DEF X Wobble { speed 3 }
DEF T Transform { }
ROUTE X.moved TO T.translation
ROUTE T.scale TO X.set_size)",
                                   "#VRML V2.0 utf8");
    EXPECT_TRUE(has(once, "ROUTE X.moved TO T.translation")) << once;
    EXPECT_TRUE(has(once, "ROUTE T.scale TO X.set_size")) << once;
    EXPECT_EQ(again(once, "#VRML V2.0 utf8"), once);
}

TEST_F(KeptTest, PrototypesOfOneNameAndUnusedOnes)
{
    const std::string one = writeFile("one.wrl", std::string(io::kVrml97)
                                                     + "PROTO P [ ] { Box { } }\n"
                                                       "PROTO Q [ ] { Shape { geometry P { } } }\n"
                                                       "PROTO Spare [ ] { Cone { } }\n"
                                                       "PROTO R [ ] { PROTO In [ ] { Group { } } "
                                                       "In { } }\nQ { } R { }");
    const std::string two =
        writeFile("two.wrl", std::string(io::kVrml97)
                                 + "PROTO P [ ] { Shape { geometry Sphere { } } }\nP { }");
    SoRef<SoVRMLGroup> both(new SoVRMLGroup);
    for (const std::string& file : {one, two}) {
        SoInput in;
        ASSERT_TRUE(in.openFile(SbString(file)));
        both->addChild(SoDB::readAllVRML(&in));
    }
    const std::string text = writtenAs(both.get(), "#VRML V2.0 utf8");
    EXPECT_TRUE(has(text, "PROTO Spare [ ] { Cone { } }")) << text;
    EXPECT_TRUE(has(text, "PROTO P_1 [ ] { Shape { geometry Sphere")) << text;
    EXPECT_TRUE(has(text, "P_1 {")) << text;
    EXPECT_EQ(again(text, "#VRML V2.0 utf8"), text);
}

TEST_F(KeptTest, RelativeUrlsLeadToTheSameFile)
{
    writeFile("part.wrl", std::string(kVrml1) + "Cube { }");
    const std::string file =
        writeFile("scene.wrl", std::string(kVrml1) + "WWWInline { name \"part.wrl\" }");
    SoInput in;
    ASSERT_TRUE(in.openFile(SbString(file)));
    const SoRef<SoSeparator> scene(SoDB::readAll(&in));
    ASSERT_TRUE(scene);
    SoToVRML2Action convert;
    convert.apply(scene.get());
    const fs::path other = fs::path(folder()) / "elsewhere";
    fs::create_directory(other);
    SoOutput out;
    out.setHeaderString("#VRML V2.0 utf8");
    ASSERT_TRUE(out.openFile(SbString((other / "scene.wrl").string())));
    SoWriteAction(&out).apply(static_cast<SoNode*>(convert.getVRML2SceneGraph()));
    ASSERT_TRUE(out.closeFile());
    EXPECT_TRUE(has(io::readFile((other / "scene.wrl").string()), "../part.wrl"));
    // In its own folder it stays as it was.
    EXPECT_TRUE(has(writtenAs(scene.get(), "#VRML V1.0 ascii"), "\"part.wrl\""));
}

TEST_F(KeptTest, InlinesMayWaitUntilTheyAreNeeded)
{
    writeFile("part.wrl", std::string(kVrml1) + "Cube { }");
    const std::string file =
        writeFile("scene.wrl", std::string(kVrml1) + "WWWInline { name \"part.wrl\" }");
    SoInlineNode::setLoading(SoInlineNode::ON_DEMAND);
    SoInput in;
    ASSERT_TRUE(in.openFile(SbString(file)));
    const SoRef<SoSeparator> scene(SoDB::readAll(&in));
    SoInlineNode::setLoading(SoInlineNode::WITH_FILE);
    ASSERT_TRUE(scene);
    const auto* link = static_cast<SoWWWInline*>(scene->getChild(0));
    EXPECT_FALSE(link->getChildData());
    SoGetBoundingBoxAction bounds{SbViewportRegion(100, 100)};
    bounds.apply(scene.get());
    EXPECT_TRUE(bounds.getBoundingBox().isEmpty());
    SoSensorManager::processDelayQueue(true);
    EXPECT_TRUE(link->getChildData());
    bounds.apply(scene.get());
    EXPECT_FALSE(bounds.getBoundingBox().isEmpty());
}

TEST_F(KeptTest, StrayIndicesHaveTheirPlace)
{
    auto warnings = support::expectErrors();
    io::read(std::string(kVrml1)
             + "Separator {\n"
               "  DEF C Coordinate3 { point [ 0 0 0, 1 0 0, 0 1 0 ] }\n"
               "  IndexedFaceSet { coordIndex [ 0 1 2 -1 ] }\n"
               "  Separator { Coordinate3 { point [ 0 0 0 ] } }\n"
               "    IndexedLineSet { coordIndex [ 0 1 7 -1 ] }\n"
               "}\n"
               "USE C\n"
               "  IndexedFaceSet { coordIndex [ 0 1 2 -1 0 1 3 ] }\n");
    ASSERT_EQ(warnings.count(), 2u);
    EXPECT_TRUE(warnings.contains("<memory>:6:5: coordIndex[2] is 7, but there are 3 points"));
    EXPECT_TRUE(warnings.contains("<memory>:9:3: coordIndex[6] is 3, but there are 3 points"));
}

TEST_F(KeptTest, UnknownNodesShowWhatTheyAreAKindOf)
{
    const auto boxOf = [](const std::string& text) {
        const SoRef<SoNode> scene = io::read(std::string(kVrml1) + text);
        SoGetBoundingBoxAction bounds{SbViewportRegion(100, 100)};
        bounds.apply(scene.get());
        return bounds.getBoundingBox();
    };
    const SbBox3f box = boxOf("Crate { fields [ MFString isA, SFFloat width, SFFloat age ] "
                              "isA [ \"Chest\", \"Cube\" ] width 6 age 3 }");
    EXPECT_EQ(box.getMax(), SbVec3f(3, 1, 1));
    const SbBox3f other = boxOf("Crate { fields [ SFNode alternateRep ] "
                                "alternateRep Separator { Sphere { radius 4 } } }");
    EXPECT_EQ(other.getMax(), SbVec3f(4, 4, 4));
}

TEST_F(KeptTest, NodesInsideUnknownOnes)
{
    auto warnings = support::expectErrors();
    const std::string text = std::string(io::kVrml97) + R"(
Cage { bars 12 label "a } b" children [ Shape { geometry DEF B Box { } } DEF M Mouse { } ]
  floor Shape { geometry USE B } ROUTE M.moved TO T.translation }
Shape { geometry USE B }
DEF T Transform { }
ROUTE M.moved TO T.translation
Odd { field SFFloat x 1 DEF Q Box { } }
Shape { geometry USE Q })";
    const std::string once = again(text, "#VRML V2.0 utf8");
    expectParts(once,
                {"bars 12", "label \"a } b\"", "geometry DEF B Box",
                 "ROUTE M.moved TO T.translation", "Odd { field SFFloat x 1 DEF Q Box { } }"});
    std::size_t uses = 0;
    for (std::size_t at = 0; (at = once.find("USE B", at)) != std::string::npos; ++at)
        ++uses;
    EXPECT_EQ(uses, 2u) << once;
    EXPECT_EQ(again(once, "#VRML V2.0 utf8"), once);
    const std::string own = again(once, "#Kalmyr V1.0 ascii");
    EXPECT_EQ(again(own, "#Kalmyr V1.0 ascii"), own);
    EXPECT_EQ(again(own, "#VRML V2.0 utf8"), once);
}
