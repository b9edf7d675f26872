#include "NodesSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/elements/SoTextureElement.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/shapes/SoCube.h>

namespace {

using Bytes = std::vector<unsigned char>;
using TextureTest = nodetest::NodesTest;

/// 2 by 2: red and green above, blue and white below, in rows from bottom to top.
const Bytes kPixels{0, 0, 255, 255, 255, 255, 255, 0, 0, 0, 255, 0};

void put(Bytes& to, std::uint64_t value, int count, bool bigEndian = false)
{
    for (int i = 0; i < count; ++i) {
        const int shift = 8 * (bigEndian ? count - 1 - i : i);
        to.push_back(static_cast<unsigned char>(shift < 64 ? value >> shift : 0));
    }
}

Bytes bmpHeader(int width, int height, int bits, int compression, int paletteSize)
{
    Bytes b{'B', 'M'};
    put(b, 0, 8);
    put(b, static_cast<std::uint32_t>(54 + 4 * paletteSize), 4);
    put(b, 40, 4);
    put(b, static_cast<std::uint32_t>(width), 4);
    put(b, static_cast<std::uint32_t>(height), 4);
    put(b, 1, 2);
    put(b, static_cast<std::uint32_t>(bits), 2);
    put(b, static_cast<std::uint32_t>(compression), 4);
    put(b, 0, 12);
    put(b, static_cast<std::uint32_t>(paletteSize), 4);
    put(b, 0, 4);
    return b;
}

Bytes bmp24(bool topDown)
{
    Bytes b = bmpHeader(2, topDown ? -2 : 2, 24, 0, 0);
    for (int row = 0; row < 2; ++row) {
        const int from = topDown ? 1 - row : row;
        for (int x = 0; x < 2; ++x) {
            for (int k = 2; k >= 0; --k)
                b.push_back(kPixels[static_cast<std::size_t>(from * 6 + x * 3 + k)]);
        }
        b.insert(b.end(), 2, 0);
    }
    return b;
}

Bytes bmpRuns()
{
    Bytes b = bmpHeader(2, 2, 8, 1, 4);
    for (const std::uint32_t color : {0x0000ffu, 0xffffffu, 0xff0000u, 0x00ff00u})
        put(b, color, 4);
    const Bytes runs{1, 0, 1, 1, 0, 0, 1, 2, 1, 3, 0, 1};
    b.insert(b.end(), runs.begin(), runs.end());
    return b;
}

Bytes sgi(bool compressed)
{
    Bytes b;
    put(b, 474, 2, true);
    b.push_back(compressed ? 1 : 0);
    b.push_back(1);
    for (const std::uint32_t v : {3u, 2u, 2u, 3u})
        put(b, v, 2, true);
    b.resize(512);
    if (compressed) {
        for (std::uint32_t row = 0; row < 6; ++row)
            put(b, 512 + 48 + row * 4, 4, true);
        for (std::uint32_t row = 0; row < 6; ++row)
            put(b, 4, 4, true);
    }
    for (std::size_t c = 0; c < 3; ++c) {
        for (std::size_t y = 0; y < 2; ++y) {
            if (compressed)
                b.push_back(0x82);
            for (std::size_t x = 0; x < 2; ++x)
                b.push_back(kPixels[y * 6 + x * 3 + c]);
            if (compressed)
                b.push_back(0);
        }
    }
    return b;
}

Bytes gif()
{
    Bytes b{'G', 'I', 'F', '8', '9', 'a', 2, 0, 2, 0, 0x81, 0, 0};
    for (const std::uint32_t color : {0xff0000u, 0x00ff00u, 0x0000ffu, 0xffffffu})
        put(b, color, 3, true);
    // Codes of three bits, lowest first: clear, 0, 1, 2, (four bits from here) 3, end.
    const Bytes frame{',', 0, 0, 0, 0, 2, 0, 2, 0, 0, 2, 3, 0x44, 0x34, 0x05, 0, ';'};
    b.insert(b.end(), frame.begin(), frame.end());
    return b;
}

Bytes tiff()
{
    Bytes b{'I', 'I', 42, 0};
    put(b, 8, 4);
    struct Entry {
        std::uint32_t tag, type, count, value;
    };
    // Strip at 8 + 2 + 10 * 12 + 4 = 134, three shorts of bits per sample at 146.
    const std::vector<Entry> entries{
        {256, 3, 1, 2},   {257, 3, 1, 2}, {258, 3, 3, 146}, {259, 3, 1, 1},  {262, 3, 1, 2},
        {273, 4, 1, 134}, {277, 3, 1, 3}, {278, 3, 1, 2},   {279, 4, 1, 12}, {284, 3, 1, 1}};
    put(b, static_cast<std::uint32_t>(entries.size()), 2);
    for (const Entry& e : entries) {
        put(b, e.tag, 2);
        put(b, e.type, 2);
        put(b, e.count, 4);
        put(b, e.value, 4);
    }
    put(b, 0, 4);
    b.insert(b.end(), kPixels.begin() + 6, kPixels.end());
    b.insert(b.end(), kPixels.begin(), kPixels.begin() + 6);
    for (int i = 0; i < 3; ++i)
        put(b, 8, 2);
    return b;
}

Bytes png()
{
    const std::string path = ::testing::TempDir() + "kalmyr_picture.png";
    SbImage image(SbVec2i32(2, 2), 3, kPixels.data());
    SbString error;
    EXPECT_TRUE(SoImageFile::writePng(path, image, &error)) << error.getString();
    std::vector<char> bytes;
    EXPECT_TRUE(SbFileHelper::readFile(path, bytes));
    return Bytes(bytes.begin(), bytes.end());
}

struct Sample {
    const char* name;
    Bytes (*make)();
    SoImageFile::Format format;
};

class ImageFileTest : public ::testing::TestWithParam<Sample> {};

} // namespace

TEST_P(ImageFileTest, ReadsTheSamePixels)
{
    const Bytes bytes = GetParam().make();
    EXPECT_EQ(SoImageFile::detect(bytes), GetParam().format);
    SbImage image;
    SbString error;
    ASSERT_TRUE(SoImageFile::readMemory(bytes, image, &error)) << error.getString();
    EXPECT_EQ(image.getSize(), SbVec2i32(2, 2));
    ASSERT_EQ(image.getComponents(), 3);
    EXPECT_EQ(Bytes(image.getBytes(), image.getBytes() + image.getByteCount()), kPixels);
}

TEST_P(ImageFileTest, ReportsEveryTruncation)
{
    const Bytes whole = GetParam().make();
    int refused = 0;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        SbImage image;
        SbString error;
        if (SoImageFile::readMemory(part, image, &error))
            continue; // only padding or an end mark is gone
        ++refused;
        EXPECT_TRUE(image.isNull());
        EXPECT_FALSE(error.isEmpty());
    }
    EXPECT_GE(refused + 12, static_cast<int>(whole.size()));
}

TEST_P(ImageFileTest, SurvivesDamage)
{
    const Bytes whole = GetParam().make();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int flip : {0x01, 0x80, 0xff}) {
            Bytes damaged = whole;
            damaged[at] = static_cast<unsigned char>(damaged[at] ^ flip);
            SbImage image;
            SbString error;
            if (!SoImageFile::readMemory(damaged, image, &error)) {
                EXPECT_FALSE(error.isEmpty());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, ImageFileTest,
    ::testing::Values(Sample{"Bmp", [] { return bmp24(false); }, SoImageFile::BMP},
                      Sample{"BmpTopDown", [] { return bmp24(true); }, SoImageFile::BMP},
                      Sample{"BmpRuns", bmpRuns, SoImageFile::BMP},
                      Sample{"Rgb", [] { return sgi(false); }, SoImageFile::RGB},
                      Sample{"RgbRuns", [] { return sgi(true); }, SoImageFile::RGB},
                      Sample{"Gif", gif, SoImageFile::GIF}, Sample{"Tiff", tiff, SoImageFile::TIFF},
                      Sample{"Png", png, SoImageFile::PNG}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ImageFile, RefusesSizesBeyondTheLimitsBeforeTakingMemory)
{
    Bytes huge = bmpHeader(40000, 2, 24, 0, 0);
    SbImage image;
    SbString error;
    EXPECT_FALSE(SoImageFile::readMemory(huge, image, &error));
    EXPECT_TRUE(error.contains("too large"));
    EXPECT_FALSE(SoImageFile::read("/no/such/picture.png", image, &error));
    EXPECT_FALSE(error.isEmpty());
}

TEST_F(TextureTest, LoadsItsFileBesideTheSceneAndComplainsOnce)
{
    png();
    const SoRef<SoTexture2> texture(new SoTexture2);
    texture->setDirectory(::testing::TempDir());
    texture->filename.setValue("kalmyr_picture.png");
    EXPECT_EQ(texture->getPicture().getSize(), SbVec2i32(2, 2));
    const SoRef<SoNode> copy(texture->copy());
    EXPECT_EQ(static_cast<SoTexture2*>(copy.get())->getPicture().getSize(), SbVec2i32(2, 2));

    auto errors = support::expectErrors();
    texture->filename.setValue("missing.png");
    EXPECT_TRUE(texture->getPicture().isNull());
    EXPECT_TRUE(texture->getPicture().isNull());
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(errors.contains("missing.png"));
    texture->filename.setValue("");
    texture->image.setValue(SbVec2i32(1, 1), 1, kPixels.data());
    EXPECT_EQ(texture->getPicture().getSize(), SbVec2i32(1, 1));
}
