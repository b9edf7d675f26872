#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <cstring>
#include <limits>

using BinaryTest = io::IoTest;

namespace {

std::string binary(const std::vector<SoNode*>& roots, bool compressed = false)
{
    SoOutput out;
    out.setBinary(true);
    out.setCompression(compressed);
    out.setBuffer();
    SoWriteAction write(&out);
    for (SoNode* root : roots)
        write.apply(root);
    out.closeFile();
    return std::string(out.getText());
}

SoRef<SoSeparator> lattice(int count)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* points = new SoCoordinate3;
    points->setName("Points");
    std::vector<SbVec3f> values(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i].setValue(float(i) / 3, -float(i), 1e-30f * float(i));
    points->point.setValues(0, values);
    root->addChild(points);
    root->addChild(points);
    return root;
}

} // namespace

TEST_F(BinaryTest, KeepsEveryBitOfLongListsInFewBytes)
{
    const SoRef<SoSeparator> root = lattice(10000);
    auto* points = static_cast<SoCoordinate3*>(root->getChild(0));
    points->point.set1Value(5, SbVec3f(std::numeric_limits<float>::infinity(), -0.0f, 1e-45f));
    const std::string bytes = binary({root.get()});
    EXPECT_LT(bytes.size(), 10000u * 12 + 400);
    for (const std::string& form : {bytes, binary({root.get()}, true)}) {
        const auto again = io::read(form);
        ASSERT_TRUE(again);
        const auto* read = static_cast<SoCoordinate3*>((*again->getChildren())[0]);
        ASSERT_EQ(read->point.getNum(), 10000);
        EXPECT_EQ(std::memcmp(read->point.getValues(), points->point.getValues(), 120000), 0);
        EXPECT_EQ((*again->getChildren())[1], read);
        EXPECT_EQ(io::write(again.get()), io::write(root.get()));
    }
}

TEST_F(BinaryTest, HoldsSeveralScenesOneBehindTheOther)
{
    const SoRef<SoSeparator> a = lattice(20), b = lattice(9), c = lattice(2);
    const auto all = io::read(binary({a.get(), b.get(), c.get()}));
    ASSERT_TRUE(all);
    ASSERT_EQ(all->getChildren()->getLength(), 3);
    EXPECT_EQ(io::write((*all->getChildren())[1]), io::write(b.get()));
}

TEST_F(BinaryTest, RefusesWhatIsCutOrDamaged)
{
    auto errors = support::expectErrors();
    const std::string bytes = binary({lattice(50).get()});
    ASSERT_TRUE(io::read(bytes));
    for (std::size_t n = 30; n < bytes.size() - 8; ++n)
        EXPECT_FALSE(io::read(std::string_view(bytes).substr(0, n))) << n;
    EXPECT_TRUE(errors.contains("the file ends early at byte 30"));
    const std::size_t mark = bytes.find("\x04\x03\x02\x01");
    ASSERT_EQ(mark % 8, 0u);
    std::string odd = bytes;
    odd[mark + 4] = 9;
    EXPECT_FALSE(io::read(odd));
    EXPECT_TRUE(errors.contains("expected version 1"));
    odd = bytes;
    std::memset(odd.data() + mark + 8, 0xff, 16); // sizes beyond all bounds
    EXPECT_FALSE(io::read(odd));
    odd = bytes;
    odd[odd.find("@0") + 1] = '7';
    EXPECT_FALSE(io::read(odd));
    EXPECT_TRUE(errors.contains("expected the number of a block that fits the field"));
}

TEST_F(BinaryTest, KeepsEnginesAndWhatFollowsThem)
{
    // Shared outputs, engines behind engines and in fields, with inputs of their own that follow
    // nodes, global fields and time.
    const auto root = io::read(io::kAscii + std::string(R"(
Separator {
  DEF From Translation { translation 1 2 3 }
  DEF A Translation { } DEF B Translation { } DEF Size Cube { } DEF Turn Rotor { }
  DEF Holder Held {
    fields [ SFEngine one, MFEngine many, SFEngine none ]
    one ENGINE Twice Calculator { expression "oA = 2 * A" }
    many [ Twice, NULL, ENGINE Sum Calculator { a 5 expression "oa = a + b" }, ENGINE Watch ElapsedTime { speed 2 },
           ENGINE Lone Calculator { expression "oA = A" } ]
    none NULL
  }
}
ENGINE Half Calculator { expression "oA = A / 2" }
GLOBAL SFFloat binaryTestLength 7
ROUTE From.translation TO Twice.A
ROUTE From.translation TO Lone.A
ROUTE Twice.oA TO Half.A
ROUTE Twice.oA TO A.translation
ROUTE Half.oA TO B.translation
ROUTE global.binaryTestLength TO Sum.b
ROUTE Sum.oa TO Size.width
ROUTE Watch.timeOut TO Size.depth
ROUTE global.realTime TO Turn.speed
)"));
    ASSERT_TRUE(root);
    const std::string text = io::write(root.get());
    for (const char* line : {"TO Twice.A", "TO Lone.A", "TO Half.A", "TO Sum.b", "Sum.oa TO",
                             "Watch.timeOut TO", "global.realTime TO Turn.speed"})
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    const auto again = io::read(binary({root.get()}));
    ASSERT_TRUE(again);
    EXPECT_EQ(io::write(again.get()), text);
    const auto field = [&](int child, const char* name) {
        return (*again->getChildren())[child]->getField(SbName(name));
    };
    const auto value = [&](int child, const char* name) {
        SbString shown;
        field(child, name)->get(shown);
        return shown;
    };
    field(0, "translation")->set("2 4 6");
    EXPECT_EQ(value(1, "translation"), "4 8 12");
    EXPECT_EQ(value(2, "translation"), "2 4 6");
    SoGlobalField::find(SbName("binaryTestLength"))->set("9");
    EXPECT_EQ(value(3, "width"), "14");
    // One engine is in both fields, and feeds what the file says.
    auto* one = static_cast<SoSFEngine*>(field(5, "one"));
    auto* many = static_cast<SoMFEngine*>(field(5, "many"));
    ASSERT_EQ(many->getNum(), 5);
    EXPECT_EQ((*many)[0], one->getValue());
    EXPECT_EQ((*many)[1], nullptr);
    EXPECT_EQ(field(1, "translation")->getConnectedField()->getContainer(), one->getValue());
    EXPECT_EQ(field(3, "depth")->getConnectedField()->getContainer(), (*many)[3]);
    SoGlobalField::remove(SbName("binaryTestLength"));
}
