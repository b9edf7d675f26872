#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLSphere.h>

#include <filesystem>

namespace {

/// What files refer to.
class ReferencesTest : public io::IoTest {
protected:
    template <class Root>
    static SoRef<Root> open(const std::string& file)
    {
        SoInput in;
        EXPECT_TRUE(in.openFile(file));
        if constexpr (std::is_same_v<Root, SoVRMLGroup>)
            return SoRef<Root>(SoDB::readAllVRML(&in));
        else
            return SoRef<Root>(SoDB::readAll(&in));
    }
};

} // namespace

TEST_F(ReferencesTest, ToFilesAreFollowedOrToldWhyNot)
{
    auto warnings = support::expectErrors();
    writeFile("a part.wrl", std::string(io::kVrml97) + "Group { }");
    writeFile("100%25.wrl", std::string(io::kVrml97) + "Group { }");
    std::filesystem::create_directory(folder() + "/folder.wrl");
    const auto root =
        open<SoVRMLGroup>(writeFile("main.wrl", std::string(io::kVrml97)
                                                    + "Inline { url \"a%20part.wrl\" }\n"
                                                      "Inline { url \"100%25.wrl\" }\n"
                                                      "Inline { url \"folder.wrl\" }\n"
                                                      "Inline { url \"none.wrl\" }\n"));
    ASSERT_TRUE(root);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(static_cast<SoVRMLInline*>(root->getChild(i))->getChildData() != nullptr, i < 2);
    EXPECT_EQ(warnings.count(), 2u);
    EXPECT_TRUE(warnings.contains("inline 'folder.wrl' is there, but cannot be read"));
    EXPECT_TRUE(warnings.contains("inline 'none.wrl' cannot be found"));
}

TEST_F(ReferencesTest, ToPicturesThatCannotBeReadLeaveTheImageOfTheNode)
{
    auto warnings = support::expectErrors();
    writeFile("bad.png", "no picture");
    const auto root = open<SoSeparator>(
        writeFile("main.ky", std::string(io::kAscii)
                                 + "Texture2 { filename \"none.png\" image 1 2 3 0xff0000 0xff }\n"
                                   "Texture2 { filename \"bad.png\" image 3 1 1 1 2 3 }\n"));
    ASSERT_TRUE(root);
    for (const auto& [child, width] : {std::pair(0, 1), {1, 3}}) {
        auto* texture = static_cast<SoTexture2*>(root->getChild(child));
        EXPECT_EQ(texture->getPicture().getWidth(), width);
        EXPECT_EQ(texture->getPicture().getWidth(), width);
    }
    EXPECT_EQ(warnings.count(), 2u); // once each
    EXPECT_TRUE(warnings.contains("'none.png' cannot be found; the image in the node stands"));
    EXPECT_TRUE(warnings.contains("bad.png"));
}

TEST_F(ReferencesTest, ToTypesOfTheLanguageByUrnStandForThem)
{
    const auto root = io::read(std::string(io::kVrml97) + R"(
EXTERNPROTO Ball [ field SFFloat radius ] [ "urn:web3d:vrml97:node:Sphere" "none.wrl" ]
EXTERNPROTO Shape [ field SFNode geometry ] "urn:web3d:vrml97:node:Shape"
PROTO Round [ ] { Shape { geometry Ball { radius 3 } } }
Shape { geometry Ball { radius 2 } } Round { })");
    ASSERT_TRUE(root);
    auto* top = static_cast<SoVRMLGroup*>((*root->getChildren())[0]);
    auto* shape = static_cast<SoVRMLShape*>(top->getChild(0));
    ASSERT_EQ(shape->getTypeId(), SoVRMLShape::getClassTypeId());
    ASSERT_EQ(shape->geometry.getValue()->getTypeId(), SoVRMLSphere::getClassTypeId());
    EXPECT_EQ(static_cast<SoVRMLSphere*>(shape->geometry.getValue())->radius.getValue(), 2);
    const std::string once = io::write(root.get());
    const auto again = io::read(once);
    ASSERT_TRUE(again) << once;
    EXPECT_EQ(io::write(again.get()), once);
}
