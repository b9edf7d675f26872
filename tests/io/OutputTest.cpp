#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <cstdlib>

namespace fs = std::filesystem;

using OutputTest = io::IoTest;

TEST_F(OutputTest, GrowsTheCallersMemoryAndEndsItInAZero)
{
    SoOutput out;
    void* block = std::malloc(32);
    out.setBuffer(block, 32, std::realloc);
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += std::to_string(i) + ' ';
    EXPECT_TRUE(out.write(text));
    std::size_t count = 0;
    ASSERT_TRUE(out.getBuffer(block, count));
    EXPECT_STREQ(static_cast<char*>(block),
                 (SoOutput::getDefaultASCIIHeader() + "\n\n" + text).getString());
    EXPECT_EQ(count, text.size() + SoOutput::getDefaultASCIIHeader().getLength() + 2);
    std::free(block);

    auto errors = support::expectErrors();
    char fixed[16];
    out.setBuffer(fixed, sizeof fixed);
    EXPECT_FALSE(out.write("0123456789"));
    EXPECT_FALSE(out.write("more")); // one error for one fault
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_FALSE(out.getBuffer(block, count));
}

TEST_F(OutputTest, WritesHeadersAsChosen)
{
    SoOutput out;
    out.setHeaderString("#VRML V2.0 utf8");
    out.setBuffer();
    out.write("a");
    EXPECT_EQ(out.getText(), "#VRML V2.0 utf8\n\na");
    out.write("b");
    EXPECT_EQ(out.getText(), "#VRML V2.0 utf8\n\nab");
    out.resetHeader();
    out.setBinary(true);
    EXPECT_EQ(out.getHeaderString(), SoOutput::getDefaultBinaryHeader());
}

TEST_F(OutputTest, ReplacesAFileOnlyWhenItIsComplete)
{
    const std::string path = writeFile("scene.ky", "old");
    fs::permissions(path, fs::perms(0640));
    {
        SoOutput out;
        ASSERT_TRUE(out.openFile(path));
        out.write("new");
        EXPECT_EQ(io::readFile(path), "old");
        EXPECT_TRUE(out.closeFile());
    }
    EXPECT_EQ(io::readFile(path), "#Kalmyr V1.0 ascii\n\nnew");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder()), fs::directory_iterator()), 1);
    const std::string link = folder() + "/link.ky";
    fs::create_symlink(path, link);
    SoOutput out;
    ASSERT_TRUE(out.openFile(link));
    out.write("linked");
    EXPECT_TRUE(out.closeFile());
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(io::readFile(path).ends_with("linked"));
}

TEST_F(OutputTest, TellsWhatCouldNotBeWritten)
{
    auto errors = support::expectErrors();
    SoOutput out;
    EXPECT_FALSE(out.openFile(folder() + "/no/such/folder.ky"));
    EXPECT_TRUE(errors.contains("folder.ky: cannot be created: "));
    EXPECT_FALSE(out.openFile(folder()));
    errors.clear();
    // A device that is always full: the fault may show only when the file is closed.
    if (!fs::exists("/dev/full"))
        GTEST_SKIP();
    ASSERT_TRUE(out.openFile("/dev/full"));
    out.write("text");
    EXPECT_FALSE(out.closeFile());
    EXPECT_TRUE(errors.contains("/dev/full: cannot be written: "));
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(OutputTest, CompressesFilesThatAreReadBack)
{
    SoRef<SoSeparator> root(new SoSeparator);
    for (int i = 0; i < 200; ++i) {
        auto* cube = new SoCube;
        cube->width = static_cast<float>(i);
        root->addChild(cube);
    }
    const std::string path = folder() + "/scene.kyz";
    SoOutput out;
    out.setCompression(true, 9);
    ASSERT_TRUE(out.openFile(path));
    SoWriteAction(&out).apply(root.get());
    ASSERT_TRUE(out.closeFile());
    EXPECT_LT(fs::file_size(path) * 5, io::write(root.get()).size());
    SoInput in;
    ASSERT_TRUE(in.openFile(path));
    EXPECT_TRUE(in.isCompressed());
    const SoRef<SoNode> back(SoDB::readAll(&in));
    ASSERT_TRUE(back);
    EXPECT_EQ(io::write(back.get()), io::write(root.get()));
}
