#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/vrml/SoVRMLAppearance.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInterpolators.h>
#include <kalmyr/vrml/SoVRMLMaterial.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLScript.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLSphere.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

using ProtoTest = io::IoTest;

namespace {

SoRef<SoVRMLGroup> world(const std::string& body)
{
    const std::string text = io::kVrml97 + body;
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return SoRef<SoVRMLGroup>(SoDB::readAllVRML(&in));
}

template <class T>
T* named(const char* name)
{
    return static_cast<T*>(SoBase::getNamedBase(SbName(name), T::getClassTypeId()));
}

template <class Field>
Field* field(SoNode* node, const char* name)
{
    return static_cast<Field*>(node->getField(SbName(name)));
}

SbVec3f sizeOf(SoNode* root)
{
    SoGetBoundingBoxAction bounds{SbViewportRegion(100, 100)};
    bounds.apply(root);
    return bounds.getBoundingBox().getMax() - bounds.getBoundingBox().getMin();
}

} // namespace

TEST_F(ProtoTest, PassesValuesIntoTheBodyAndShowsItsFirstNode)
{
    const auto root = world(R"(
PROTO Look [ exposedField SFColor tint 1 0 0 ] { Appearance { material DEF M Material { diffuseColor IS tint } } Box { } }
PROTO Solid [ field SFVec3f size 1 1 1 ] { Box { size IS size } }
DEF Thing Shape { appearance DEF L Look { tint 0 1 0 } geometry Solid { size 1 2 3 } }
Transform { translation 10 0 0 children Shape { geometry Solid { } } })");
    ASSERT_TRUE(root);
    auto* look = named<SoVRMLProtoInstance>("L");
    auto* material = named<SoVRMLMaterial>("M");
    ASSERT_TRUE(look && material);
    EXPECT_EQ(look->getProto()->name, "Look");
    EXPECT_EQ(SoVRMLProtoInstance::resolve(look)->getTypeId(), SoVRMLAppearance::getClassTypeId());
    EXPECT_EQ(look->getParts().getLength(), 2);
    EXPECT_EQ(material->diffuseColor.getValue(), SbColor(0, 1, 0));
    // The body follows the fields of the instance from now on.
    field<SoSFColor>(look, "tint")->setValue(0, 0, 1);
    EXPECT_EQ(material->diffuseColor.getValue(), SbColor(0, 0, 1));
    EXPECT_EQ(sizeOf(root.get()), SbVec3f(11, 2, 3));
    SoGetPrimitiveCountAction count;
    count.apply(root.get());
    EXPECT_EQ(count.getTriangleCount(), 24u);
}

TEST_F(ProtoTest, KeepsScopesApart)
{
    auto warnings = support::expectErrors();
    const auto root = world(R"(
DEF Outside Group { }
PROTO A [ field MFNode more [ DEF Outside Group { } ] ] {
  PROTO B [ ] { Sphere { radius 2 } }
  Group { children [ DEF Outside Shape { geometry B { } } USE Outside ] }
}
PROTO B [ ] { Sphere { radius 5 } }
A { }
Shape { geometry B { } }
USE Outside
PROTO C [ ] { Group { children [ USE Outside C { } ] } }
C { })");
    ASSERT_TRUE(root);
    auto* first = static_cast<SoVRMLProtoInstance*>(root->getChild(1));
    auto* inner = static_cast<SoVRMLGroup*>(first->getParts()[0]);
    ASSERT_EQ(inner->getNumChildren(), 2);
    EXPECT_EQ(inner->getChild(0), inner->getChild(1));
    EXPECT_EQ(sizeOf(inner), SbVec3f(4, 4, 4));
    EXPECT_EQ(sizeOf(root->getChild(2)), SbVec3f(10, 10, 10));
    EXPECT_EQ(root->getChild(3), root->getChild(0));
    // Neither names of the file nor the prototype itself are known in its body.
    EXPECT_TRUE(warnings.contains("in prototype 'C': expected a name that DEF gave before"));
    EXPECT_TRUE(warnings.contains("in prototype 'C': node type 'C' is unknown"));
}

TEST_F(ProtoTest, RoutesPassChangesOnAndKeepWhatTheFileSays)
{
    const auto root = world(R"(
PROTO Mover [ eventIn SFVec3f set_place exposedField SFVec3f start 4 5 6 eventOut SFVec3f place_changed ] {
  DEF In Transform { translation IS start set_translation IS set_place translation_changed IS place_changed }
}
DEF From Transform { translation 1 2 3 }
DEF Through Mover { }
DEF To Transform { translation 7 8 9 }
DEF S Script { eventIn SFVec3f got field SFFloat number 2 url "vrmlscript:" }
ROUTE From.translation_changed TO Through.set_place
ROUTE Through.place_changed TO To.set_translation
ROUTE Through.place_changed TO S.got)");
    ASSERT_TRUE(root);
    auto* from = named<SoVRMLTransform>("From");
    auto* to = named<SoVRMLTransform>("To");
    EXPECT_EQ(to->translation.getValue(), SbVec3f(7, 8, 9));
    EXPECT_TRUE(to->translation.isConnected());
    from->translation = SbVec3f(-1, -2, -3);
    EXPECT_EQ(field<SoSFVec3f>(named<SoVRMLProtoInstance>("Through"), "set_place")->getValue(),
              SbVec3f(-1, -2, -3));
    EXPECT_EQ(field<SoSFFloat>(named<SoVRMLScript>("S"), "number")->getValue(), 2);
}

TEST_F(ProtoTest, FindsPrototypesInOtherFilesWhateverTheirOrder)
{
    auto warnings = support::expectErrors();
    writeFile("lib/a.wrl", std::string(io::kVrml97)
                               + "EXTERNPROTO Back [ ] \"../main.wrl#Main\"\n"
                                 "PROTO Size [ field SFFloat r 3 ] { Shape { geometry Sphere { "
                                 "radius IS r } } Back { } }");
    writeFile("lib/b.wrl",
              std::string(io::kVrml97) + "EXTERNPROTO X [ field SFFloat r ] \"a.wrl#Size\"");
    const std::string file =
        writeFile("main.wrl",
                  std::string(io::kVrml97)
                      + "EXTERNPROTO Size [ field SFFloat r ] [ \"lib/none.wrl\" \"lib/b.wrl\" ]\n"
                        "EXTERNPROTO Bare [ ] \"lib/a.wrl#Size\"\n"
                        "PROTO Main [ ] { Group { } }\nSize { r [ 2 ] } Size { } Bare { }");
    SoInput in;
    ASSERT_TRUE(in.openFile(file));
    const SoRef<SoVRMLGroup> root(SoDB::readAllVRML(&in));
    ASSERT_TRUE(root);
    EXPECT_EQ(sizeOf(root->getChild(0)), SbVec3f(4, 4, 4));
    EXPECT_EQ(sizeOf(root->getChild(1)), SbVec3f(6, 6, 6));
    EXPECT_EQ(sizeOf(root->getChild(2)), SbVec3f(6, 6, 6));
    EXPECT_TRUE(warnings.contains("'Back' cannot be found"));
}

TEST_F(ProtoTest, LimitsWhatPrototypesExpandTo)
{
    auto errors = support::expectErrors();
    std::string text = "PROTO P0 [ ] { Group { } }\n";
    for (int i = 1; i < 60; ++i) {
        const std::string below = "P" + std::to_string(i - 1) + " { } ";
        text += "PROTO P" + std::to_string(i) + " [ ] { Group { children [ " + below + below
                + "] } }\n";
    }
    SoVRMLGroup* none = world(text + "P59 { }").get();
    EXPECT_EQ(none, nullptr);
    EXPECT_TRUE(errors.contains("'P59' cannot be made, because prototype 'P"));
    EXPECT_TRUE(errors.contains("expected prototypes that expand to at most 1000000 nodes"));
    errors.clear();
    const std::string deep = [] {
        std::string chain = "PROTO Q0 [ ] { Group { } }\n";
        for (int i = 1; i < 300; ++i)
            chain +=
                "PROTO Q" + std::to_string(i) + " [ ] { Q" + std::to_string(i - 1) + " { } }\n";
        return chain;
    }();
    EXPECT_TRUE(world(deep + "Q150 { }"));
    EXPECT_FALSE(world(deep + "Q299 { }"));
    EXPECT_TRUE(errors.contains("expected prototypes nested at most"));
}

TEST_F(ProtoTest, InstancesAreCopiedWithTheirParts)
{
    const auto root =
        world("PROTO P [ field SFFloat r 1 ] { Shape { geometry Sphere { radius IS r } } "
              "} DEF Old P { r 4 }");
    ASSERT_TRUE(root);
    const SoRef<SoNode> copy(named<SoVRMLProtoInstance>("Old")->copy());
    EXPECT_EQ(sizeOf(copy.get()), SbVec3f(8, 8, 8));
    EXPECT_EQ(io::write(copy.get()), io::write(root->getChild(0)));
}

TEST_F(ProtoTest, PathsBringTheirPrototypesAlong)
{
    const auto root =
        world("PROTO P [ field SFFloat r 1 ] { Shape { geometry Sphere { radius IS r } } "
              "} Group { } DEF G Group { children P { r 4 } }");
    ASSERT_TRUE(root);
    const SoRef<SoPath> path(new SoPath(root.get()));
    path->append(1);
    SoOutput out;
    out.setBuffer();
    SoWriteAction write(&out);
    write.apply(path.get());
    SoInput in;
    in.setBuffer(out.getText().data(), out.getText().size());
    SoPath* read = nullptr;
    ASSERT_TRUE(SoDB::read(&in, read)) << out.getText();
    const SoRef<SoPath> held(read);
    EXPECT_EQ(sizeOf(read->getTail()), SbVec3f(8, 8, 8));
}
