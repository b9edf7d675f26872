#include "postscript/PostScriptWriter.h"
#include "Drawings.h"
#include "Readers.h"
#include "ReferencePainter.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace support;
using namespace kalmyr::detail;

namespace {

constexpr double kPixels = 5;

std::string postScriptOf(const VectorDrawing& drawing, bool level2 = false)
{
    ByteWriter bytes(nullptr);
    writePostScript(drawing, {SbTime(1e9), level2}, bytes);
    return bytes.take();
}

void expectGood(const VectorDrawing& drawing, bool level2 = false)
{
    SKIP_WITHOUT("gs");
    const TempFolder folder;
    const std::string file = folder.write("a.ps", postScriptOf(drawing, level2));
    const Picture reference = ReferencePainter(drawing, kPixels).paint();
    expectSamePicture(ghostscriptPicture(file, reference, kPixels), reference, 6);
    // The stack is as it was, and nothing is left in the dictionaries.
    EXPECT_EQ(runInstalled("gs -q -dSAFER -dNOPAUSE -sDEVICE=nullpage " + file
                           + " -c 'count = countdictstack = quit'")
                  .output,
              "0\n3\n");
}

/// Without what level 2 lacks.
VectorDrawing plainSampler()
{
    VectorDrawing drawing = sampler();
    std::erase_if(drawing.primitives,
                  [](const VectorPrimitive& one) { return one.shaded || one.image >= 0; });
    return drawing;
}

} // namespace

TEST(PostScriptWriter, LooksLikeTheReference)
{
    expectGood(sampler());
}

TEST(PostScriptWriter, WritesForLevel2)
{
    expectGood(plainSampler(), true);
    const std::string text = postScriptOf(plainSampler(), true);
    EXPECT_NE(text.find("%%LanguageLevel: 2\n"), std::string::npos);
    for (const char* name : {"shfill", "FlateDecode", "ReusableStreamDecode"})
        EXPECT_EQ(text.find(name), std::string::npos) << name;
}

TEST(PostScriptWriter, MixesTransparentPicturesWithWhite)
{
    VectorDrawing drawing = emptyPage();
    addImage(drawing, 10, 10, 80, 40, true);
    polygon(drawing, {red(10, 10), red(90, 10), red(90, 50), red(10, 50)}).image = 0;
    expectGood(drawing);
}

TEST(PostScriptWriter, KeepsToTheStructureComments)
{
    VectorDrawing drawing = sampler();
    drawing.title = "(a\\b) \xc3\xa4 " + std::string(300, 'x');
    // Bytes of all kinds in the pictures and meshes.
    for (int i = 0; i < 3000; ++i) {
        const float x = 6 + 0.029f * static_cast<float>(i),
                    y = 6 + static_cast<float>(i * 7 % 480) / 10;
        shaded(drawing, red(x, y), green(x + 0.3f, y), blue(x, y + 0.7f));
    }
    std::istringstream lines(postScriptOf(drawing));
    std::string line, comments;
    std::getline(lines, line);
    EXPECT_EQ(line, "%!PS-Adobe-3.0");
    while (std::getline(lines, line)) {
        EXPECT_LT(line.size(), 255U);
        if (line[0] == '%')
            comments += line.substr(0, line.find(':')) + "\n";
        if (line.find("%%BoundingBox") == 0) {
            EXPECT_EQ(line, "%%BoundingBox: 14 14 270 156");
        }
        if (line.find("%%Title") == 0) {
            EXPECT_EQ(line.find("%%Title: (\\(a\\\\b\\) \\303\\244 xxx"), 0U);
            EXPECT_EQ(line.substr(line.size() - 2), "x)");
        }
        EXPECT_TRUE(std::all_of(line.begin(), line.end(),
                                [](char one) { return one >= ' ' && one <= '~'; }));
    }
    EXPECT_EQ(comments,
              "%%BoundingBox\n%%HiResBoundingBox\n%%Title\n%%Creator\n%%CreationDate\n%%Pages\n"
              "%%LanguageLevel\n%%DocumentData\n%%EndComments\n%%BeginProlog\n%%EndProlog\n"
              "%%BeginSetup\n%%EndSetup\n%%Page\n%%BeginPageSetup\n%%EndPageSetup\n"
              "%%PageTrailer\n%%Trailer\n%%EOF\n");
}
