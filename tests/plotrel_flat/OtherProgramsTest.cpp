// Opens the files in programs of others and compares their pictures.
#include "ByteWriter.h"
#include "Canvas.h"
#include "cgm/CgmWriter.h"
#include "Drawings.h"
#include "emf/EmfWriter.h"
#include "Flattening.h"
#include "hpgl/HpglWriter.h"

#include <support/Program.h>

#include <gtest/gtest.h>

using namespace flat;
using namespace kalmyr::detail;

namespace {

bool hasProgram(const std::string& name)
{
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

#define SKIP_WITHOUT(program)                                                                      \
    if (!hasProgram(program))                                                                      \
    GTEST_SKIP() << program " is not installed"

/// Differences away from edges, where the best of the places near (column, row) is that of the
/// page.
Difference bestDifference(const Canvas& picture, const Canvas& page, int column, int row, int reach)
{
    Difference best{256, 1, 255};
    for (int x = column - reach; x <= column + reach; ++x)
        for (int y = row - reach; y <= row + reach; ++y) {
            if (x < 0 || y < 0 || x + page.width() > picture.width()
                || y + page.height() > picture.height())
                continue;
            const Difference one =
                compare(picture.part(x, y, page.width(), page.height()), page, 2);
            if (one.mean < best.mean)
                best = one;
        }
    return best;
}

/// Shaded and transparent things, as they come to these formats.
VectorDrawing flattenedDrawing(float width, float height)
{
    VectorDrawing drawing = emptyDrawing(width, height);
    addGradient(drawing);
    Dice dice(21);
    for (int i = 0; i < 12; ++i)
        addRandomPolygon(drawing, dice, dice.next(5, 20), i % 3 == 0 ? 0.5f : 1);
    mixTransparency(drawing);
    divideShading(drawing, 16.0f / 255);
    return drawing;
}

std::string officePicture(const support::TempFolder& folder, const std::string& name,
                          const std::string& bytes)
{
    const std::string file = folder.write(name, bytes);
    const std::string command = "soffice -env:UserInstallation=file://" + folder.folder()
                                + "/profile --headless --convert-to png --outdir " + folder.folder()
                                + " " + file + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return file.substr(0, file.rfind('.')) + ".png";
}

void checkPlot(const VectorDrawing& drawing)
{
    const support::TempFolder folder;
    ByteWriter bytes(nullptr);
    writeHpgl(drawing, {}, bytes);
    const std::string file = folder.write("a.hpgl", bytes.take());
    const std::string picture = folder.path("a.png");
    // 10 pixels a millimetre.
    ASSERT_EQ(std::system(("hp2xx -q -t -d 254 -m png -f " + picture + " " + file).c_str()), 0);
    const Canvas plot = Canvas::load(picture);
    const Canvas meant = paintDrawing(drawing, 10);
    // The picture is wider than the page by the width of the widest pen.
    ASSERT_LE(plot.width(), meant.width() + 30);
    const Difference difference = bestDifference(plot, meant, (plot.width() - meant.width()) / 2,
                                                 (plot.height() - meant.height()) / 2, 3);
    EXPECT_LE(difference.mean, 1.5);
    EXPECT_LE(difference.share, 0.004);
}

} // namespace

TEST(Hp2xx, PaintsWhatWasDrawn)
{
    SKIP_WITHOUT("hp2xx");
    checkPlot(mixedDrawing(60, 45, 40, 2));
    checkPlot(flattenedDrawing(60, 45));
}

TEST(Hp2xx, PaintsLargePages)
{
    SKIP_WITHOUT("hp2xx");
    const support::TempFolder folder;
    ByteWriter bytes(nullptr);
    VectorDrawing drawing = emptyDrawing(1200, 900);
    addRectangle(drawing, 300, 300, 600, 300, {1, 0, 0});
    writeHpgl(drawing, {}, bytes);
    const std::string file = folder.write("a.hpgl", bytes.take());
    const std::string picture = folder.path("a.png");
    ASSERT_EQ(std::system(("hp2xx -q -t -d 25 -m png -f " + picture + " " + file).c_str()), 0);
    const Canvas plot = Canvas::load(picture);
    EXPECT_NEAR(plot.width(), 1200 / 25.4 * 25, 3);
    EXPECT_NEAR(plot.height(), 900 / 25.4 * 25, 3);
    EXPECT_EQ(plot.at(plot.width() / 2, plot.height() / 2), (Color{1, 0, 0}));
    EXPECT_EQ(plot.at(plot.width() / 8, plot.height() / 2), (Color{1, 1, 1}));
}

TEST(Office, PaintsEmf)
{
    SKIP_WITHOUT("soffice");
    for (const VectorDrawing& drawing :
         {mixedDrawing(180, 135, 60, 2), flattenedDrawing(180, 135)}) {
        const support::TempFolder folder;
        ByteWriter bytes(nullptr);
        writeEmf(drawing, bytes);
        const Canvas sheet = Canvas::load(officePicture(folder, "a.emf", bytes.take()));
        // In the middle of a sheet, 96 pixels an inch.
        const Canvas meant = paintDrawing(drawing, 96 / 25.4);
        const Difference difference =
            bestDifference(sheet, meant, (sheet.width() - meant.width()) / 2,
                           (sheet.height() - meant.height()) / 2, 2);
        EXPECT_LE(difference.mean, 1.5);
        EXPECT_LE(difference.share, 0.004);
    }
}

TEST(Office, PaintsCgm)
{
    SKIP_WITHOUT("soffice");
    // As wide as a slide, which it fills; with coordinates of 16 and of 32 bits.
    for (const VectorDrawing& drawing : {mixedDrawing(160, 90, 60, 2), flattenedDrawing(160, 90),
                                         mixedDrawing(800, 450, 60, 10)}) {
        const support::TempFolder folder;
        ByteWriter bytes(nullptr);
        writeCgm(drawing, bytes);
        const Canvas slide = Canvas::load(officePicture(folder, "a.cgm", bytes.take()));
        const Canvas meant = paintDrawing(drawing, slide.width() / drawing.pageWidth - 1e-3);
        const Difference difference = bestDifference(slide, meant, 1, 1, 2);
        EXPECT_LE(difference.mean, 1.5);
        EXPECT_LE(difference.share, 0.004);
    }
}
