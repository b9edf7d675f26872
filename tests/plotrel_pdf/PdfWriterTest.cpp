#include "pdf/PdfWriter.h"
#include "Drawings.h"
#include "PdfFileCheck.h"
#include "Readers.h"
#include "ReferencePainter.h"

#include <gtest/gtest.h>

#include <random>

using namespace support;
using namespace kalmyr::detail;

namespace {

constexpr double kPixels = 5;

std::string pdfOf(const VectorDrawing& drawing, const PdfOptions& options = {})
{
    ByteWriter bytes(nullptr);
    writePdf(drawing, options, bytes);
    return bytes.take();
}

/// Checks the structure, and what qpdf and the two readers make of a drawing.
void expectGood(const VectorDrawing& drawing, const PdfOptions& options = {})
{
    const TempFolder folder;
    const std::string file = folder.write("a.pdf", pdfOf(drawing, options));
    PdfFileCheck(folder.read("a.pdf"));
    if (hasProgram("qpdf")) {
        const Outcome outcome = runInstalled("qpdf --check " + file);
        EXPECT_EQ(outcome.status, 0) << outcome.output;
    }
    const Picture reference = ReferencePainter(drawing, kPixels).paint();
    if (hasProgram("pdftoppm")) {
        SCOPED_TRACE("poppler");
        expectSamePicture(popplerPicture(file, reference), reference, 6);
    }
    if (hasProgram("gs")) {
        SCOPED_TRACE("ghostscript");
        expectSamePicture(ghostscriptPicture(file, reference, kPixels), reference, 6);
    }
}

/// Polygons above each other, most of them transparent.
VectorDrawing layers(unsigned seed)
{
    std::mt19937 random(seed);
    const auto number = [&random](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    VectorDrawing drawing = emptyPage();
    addImage(drawing, 10, 10, 60, 40, true);
    for (int i = 0; i < 24; ++i) {
        const float x = number(6, 70), y = number(6, 30), u = number(15, 24), v = number(15, 24);
        const auto vertex = [&](float px, float py) {
            return VectorVertex{px, py, number(0, 1), number(0, 1), number(0, 1)};
        };
        VectorPrimitive& one =
            polygon(drawing, {vertex(x, y), vertex(x + u, y + v / 2), vertex(x + u / 3, y + v)});
        one.shaded = i % 3 == 0;
        one.opacity = i % 4 == 0 ? 1 : number(0.2f, 0.9f);
        if (i % 6 == 5)
            one.image = 0;
    }
    return drawing;
}

} // namespace

TEST(PdfWriter, LooksLikeTheReference)
{
    expectGood(sampler());
}

TEST(PdfWriter, MixesTransparentLayersInTheirOrder)
{
    expectGood(layers(1));
    expectGood(layers(2));
}

TEST(PdfWriter, HasNoSeamsBetweenNeighbours)
{
    SKIP_WITHOUT("pdftoppm");
    // Abutting triangles of slightly different greys: the white paper must not show between them.
    for (const bool clear : {false, true}) {
        VectorDrawing drawing = emptyPage();
        for (int i = 0; i < 1600; ++i) {
            const float x = 10 + static_cast<float>(i % 40), y = 10 + static_cast<float>(i / 40);
            const float grey = 0.2f + 0.05f * static_cast<float>(i % 3);
            const auto at = [grey](float px, float py) {
                return VectorVertex{px + 0.2f * py, py, grey, grey, grey};
            };
            polygon(drawing, {at(x, y), at(x + 1, y), at(x + 1, y + 1)}).opacity = clear ? 0.7f : 1;
            polygon(drawing, {at(x, y), at(x + 1, y + 1), at(x, y + 1)}).opacity = clear ? 0.7f : 1;
        }
        // A large face of two: paths.
        polygon(drawing, {red(75, 10), red(94, 11), red(84, 50)});
        polygon(drawing, {{84, 50, 0.9f, 0, 0}, {75, 10, 0.9f, 0, 0}, {73, 48, 0.9f, 0, 0}});
        const TempFolder folder;
        const std::string file = folder.write("a.pdf", pdfOf(drawing));
        Picture size;
        size.width = 300;
        size.height = 180;
        const Picture picture = popplerPicture(file, size);
        int lightest = 0, most = 0;
        for (int y = 36; y < 144; ++y) {
            for (int x = 66; x < 150; ++x)
                lightest = std::max(lightest, picture.at(x, y)[0]);
            for (int x = 240; x < 250; ++x)
                most = std::max(most, picture.at(x, y)[1]);
        }
        EXPECT_LE(lightest, clear ? 132 : 80);
        EXPECT_LE(most, 28);
    }
}

TEST(PdfWriter, WritesTextThatCanBeFound)
{
    VectorDrawing drawing = emptyPage();
    addText(drawing, "Plain (words) \\ here", 10, 45, 40);
    addText(drawing, "H\xc3\xa4user \xe2\x82\xac 5", 10, 35, 40);
    addText(drawing, "one \xd0\x9f\xd1\x80\xd0\xb8 two \xf0\x9d\x84\x9e", 10, 25, 30);
    addText(drawing, "bro\xffken", 10, 15, 30);
    drawing.title = "\xc3\x9c"
                    "ber (a\\b \xd0\x9f";
    const TempFolder folder;
    const std::string file = folder.write("a.pdf", pdfOf(drawing, {SbTime(1e9), {}}));
    const std::string bytes = folder.read("a.pdf");
    const PdfFileCheck check(bytes);
    EXPECT_TRUE(check.has("/Title <FEFF00DC00620065007200200028")) << check.text();
    EXPECT_TRUE(check.has("(D:20010909014640Z)"));
    SKIP_WITHOUT("pdftotext");
    const std::string text = runInstalled("pdftotext -layout " + file + " -").output;
    for (const char* line :
         {"Plain (words) \\ here", "H\xc3\xa4user \xe2\x82\xac 5",
          "one \xd0\x9f\xd1\x80\xd0\xb8 two \xf0\x9d\x84\x9e", "bro\xef\xbf\xbdken"})
        EXPECT_NE(text.find(line), std::string::npos) << line << " in " << text;
    // As wide as told: 40 mm from 10 mm on, in points.
    const std::string boxes = runInstalled("pdftotext -bbox " + file + " -").output;
    EXPECT_NE(boxes.find("xMin=\"28.34"), std::string::npos) << boxes;
    EXPECT_NE(boxes.find("xMax=\"141.73"), std::string::npos) << boxes;
    const std::string info = runInstalled("pdfinfo " + file).output;
    EXPECT_NE(info.find("\xc3\x9c"
                        "ber (a\\b \xd0\x9f\n"),
              std::string::npos)
        << info;
    EXPECT_NE(info.find("283.465 x 170.079 pts"), std::string::npos) << info;
    EXPECT_NE(info.find("Producer:        Kalmyr"), std::string::npos) << info;
}

TEST(PdfWriter, HidesAModelBehindTheDrawing)
{
    PdfOptions options;
    options.model.u3d = std::string("U3D\0 stands for itself here", 27);
    options.model.name = "Front";
    options.model.camera = {0, 1, 0, 0, 0, 1, 1, 0, 0, 40, 2, 3};
    options.model.orbitDistance = 40;
    options.model.fieldOfView = M_PI / 4;
    expectGood(sampler(), options);
    const std::string bytes = pdfOf(sampler(), options);
    const PdfFileCheck check(bytes);
    EXPECT_EQ(bytes.substr(0, 8), "%PDF-1.6");
    EXPECT_TRUE(check.has("/Subtype /3D /Rect [14.1732 14.1732 269.2913 155.9055]"));
    EXPECT_TRUE(check.has("/XN (Front)"));
    // Right and back are turned to left and forward.
    EXPECT_TRUE(check.has("/C2W [0 -1 0 0 0 1 -1 0 0 40 2 3 ]")) << check.text();
    EXPECT_TRUE(check.has("/CO 40\n/P << /Subtype /P /PS /H /FOV 45 >>"));

    options.model.perspective = false;
    options.model.height = 8;
    const std::string parallel = pdfOf(sampler(), options);
    EXPECT_TRUE(PdfFileCheck(parallel).has("/P << /Subtype /O /OB /H /OS .125 >>"));
}

TEST(PdfWriter, WritesPagesOfAnySize)
{
    VectorDrawing drawing = sampler();
    drawing.pageWidth = 10000;
    drawing.pageHeight = 6000;
    const std::string bytes = pdfOf(drawing);
    const PdfFileCheck check(bytes);
    EXPECT_TRUE(check.has("/MediaBox [0 0 14173.2283 8503.937]")) << check.text();
    EXPECT_TRUE(check.has("/UserUnit 2"));
    const std::string bare = pdfOf(emptyPage());
    EXPECT_FALSE(PdfFileCheck(bare).has("/Title"));
}
