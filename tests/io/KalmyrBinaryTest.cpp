#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoChildList.h>
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
