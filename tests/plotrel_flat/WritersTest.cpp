#include "ByteWriter.h"
#include "Canvas.h"
#include "cgm/CgmWriter.h"
#include "Drawings.h"
#include "emf/EmfWriter.h"
#include "hpgl/HpglWriter.h"
#include "Readers.h"

#include <kalmyr/base/SoContract.h>

#include <support/ErrorGuard.h>

#include <gtest/gtest.h>

#include <set>

using namespace flat;
using namespace kalmyr::detail;

namespace {

constexpr double kPixels = 8;

struct Format {
    const char* name;
    std::string (*write)(const VectorDrawing& drawing);
    Page (*read)(const std::string& bytes);
    double unit; ///< of its coordinates, millimetres
};

std::string cgmOf(const VectorDrawing& drawing)
{
    ByteWriter bytes(nullptr);
    writeCgm(drawing, bytes);
    return bytes.take();
}

std::string emfOf(const VectorDrawing& drawing)
{
    ByteWriter bytes(nullptr);
    writeEmf(drawing, bytes);
    return bytes.take();
}

std::string hpglOf(const VectorDrawing& drawing)
{
    ByteWriter bytes(nullptr);
    writeHpgl(drawing, {}, bytes);
    return bytes.take();
}

std::string pensOf(const VectorDrawing& drawing, std::vector<SoHPGLVectorOutput::Pen> pens)
{
    ByteWriter bytes(nullptr);
    writeHpgl(drawing, {false, std::move(pens)}, bytes);
    return bytes.take();
}

std::size_t countContours(const Page& page)
{
    std::size_t count = 0;
    for (const Mark& mark : page.marks)
        count += mark.contours.size();
    return count;
}

} // namespace

class Writers : public testing::TestWithParam<Format> {};

TEST_P(Writers, PaintWhatWasDrawn)
{
    const VectorDrawing drawing = mixedDrawing(100, 75, 60, -5);
    const Page page = GetParam().read(GetParam().write(drawing));
    EXPECT_NEAR(page.width, 100, GetParam().unit);
    EXPECT_NEAR(page.height, 75, GetParam().unit);
    const Difference difference = compare(paintDrawing(drawing, kPixels), paintPage(page, kPixels));
    EXPECT_LE(difference.mean, 1.0);
    EXPECT_LE(difference.share, 0.01);
    EXPECT_LE(compare(paintDrawing(drawing, kPixels), paintPage(page, kPixels), 2).share, 0.0005);
}

TEST_P(Writers, PaintLargePages)
{
    const VectorDrawing drawing = mixedDrawing(1200, 900, 60, -5);
    const Page page = GetParam().read(GetParam().write(drawing));
    EXPECT_NEAR(page.width, 1200, GetParam().unit);
    EXPECT_LE(compare(paintDrawing(drawing, 0.7), paintPage(page, 0.7)).share, 0.01);
}

TEST_P(Writers, EmptyDrawingIsAValidFile)
{
    const Page page = GetParam().read(GetParam().write(emptyDrawing()));
    EXPECT_TRUE(page.marks.empty());
    EXPECT_NEAR(page.width, 100, GetParam().unit);
}

TEST_P(Writers, JoinNeighboursOfOneColor)
{
    VectorDrawing drawing = emptyDrawing();
    // A fan round a middle, with a ring of quads round it that closes.
    for (int i = 0; i < 12; ++i) {
        const auto at = [](int k, double radius) {
            return Place{50 + radius * std::cos(k * 0.5235987756),
                         37 + radius * std::sin(k * 0.5235987756)};
        };
        addPolygon(drawing, {{50, 37}, at(i, 10), at((i + 1) % 12, 10)}, {1, 0, 0});
        addPolygon(drawing, {at(i, 10), at(i, 20), at((i + 1) % 12, 20), at((i + 1) % 12, 10)},
                   {1, 0, 0});
    }
    const Page page = GetParam().read(GetParam().write(drawing));
    EXPECT_EQ(countContours(page), 1u);
    EXPECT_LE(compare(paintDrawing(drawing, kPixels), paintPage(page, kPixels)).share, 0.002);
}

TEST_P(Writers, OverlapsOfOneColorStayFilled)
{
    VectorDrawing drawing = emptyDrawing();
    // The second shares an edge with the first and lies in it; the third crosses both.
    addRectangle(drawing, 20, 20, 30, 30, {0, 0, 1});
    addPolygon(drawing, {{20, 20}, {50, 20}, {35, 40}}, {0, 0, 1});
    addRectangle(drawing, 30, 25, 40, 10, {0, 0, 1});
    // A fan that goes round more than once.
    for (int i = 0; i < 20; ++i)
        addPolygon(drawing,
                   {{70, 50},
                    {70 + 9 * std::cos(i * 0.5), 50 + 9 * std::sin(i * 0.5)},
                    {70 + 9 * std::cos(i * 0.5 + 0.5), 50 + 9 * std::sin(i * 0.5 + 0.5)}},
                   {0, 0, 1});
    const Page page = GetParam().read(GetParam().write(drawing));
    EXPECT_LE(compare(paintDrawing(drawing, kPixels), paintPage(page, kPixels)).share, 0.002);
}

TEST_P(Writers, KeepLongLinesAndManyColors)
{
    VectorDrawing drawing = emptyDrawing();
    drawing.add(VectorPrimitive::LINE).width = 0.5f;
    for (int i = 0; i < 50000; ++i) {
        const double angle = i * 0.0005;
        drawing.addVertex(vertex(static_cast<float>(50 + angle * std::cos(angle)),
                                 static_cast<float>(37 + angle * std::sin(angle)), {0, 0, 0}));
    }
    for (int i = 0; i < 2000; ++i) {
        const double x = 10 + i % 50 * 1.5;
        addRectangle(drawing, x, 10 + i / 50 * 0.5, 1.5, 0.5, {i / 2000.0, (i % 50) / 50.0, 0.5});
    }
    const Page page = GetParam().read(GetParam().write(drawing));
    const Difference difference = compare(paintDrawing(drawing, kPixels), paintPage(page, kPixels));
    EXPECT_LE(difference.share, 0.002);
    EXPECT_LE(difference.mean, 1.0);
}

TEST_P(Writers, NothingReachesOutOfTheDrawing)
{
    VectorDrawing drawing = emptyDrawing();
    addLine(drawing, {{drawing.x, 10}, {drawing.x, 60}}, 5, {0, 0, 0});
    addPoint(drawing, {40, drawing.y}, 10, {1, 0, 0});
    const Canvas canvas = paintPage(GetParam().read(GetParam().write(drawing)), kPixels);
    EXPECT_EQ(canvas.colorAt(drawing.x - 1, 30)[0], 1);
    EXPECT_EQ(canvas.colorAt(drawing.x + 1, 30)[0], 0);
    EXPECT_EQ(canvas.colorAt(40, drawing.y - 1)[1], 1);
    EXPECT_EQ(canvas.colorAt(40, drawing.y + 1)[1], 0);
}

INSTANTIATE_TEST_SUITE_P(All, Writers,
                         testing::Values(Format{"Cgm", cgmOf, readCgm, 0.01},
                                         Format{"Emf", emfOf, readEmf, 0.01},
                                         Format{"Hpgl", hpglOf, readHpgl, 0.025}),
                         [](const auto& info) { return info.param.name; });

TEST(EmfWriter, GroupsPolygonsAndReusesObjects)
{
    VectorDrawing drawing = emptyDrawing();
    // Apart from each other, 100 of each of 3 colours, the colours one after another three times.
    for (int i = 0; i < 900; ++i)
        addRectangle(drawing, 10 + i % 30 * 2.5, 10 + i / 30 * 1.5, 1, 1,
                     {i / 100 % 3 * 0.5, 0, 0});
    auto counts = countEmfRecords(emfOf(drawing));
    EXPECT_EQ(counts[91], 9);
    EXPECT_EQ(counts[39], 3); // Brushes,
    EXPECT_EQ(counts[38], 3); // pens.
}

TEST(HpglWriter, TakesEachPenOnceAndTheNearest)
{
    VectorDrawing drawing = emptyDrawing();
    addGradient(drawing);
    for (int i = 0; i < 30; ++i) {
        const double x = 10 + i * 2;
        addLine(drawing, {{x, 10}, {x, 20}}, i % 2 == 0 ? 0.2f : 1, {0.1, 0, 0});
        addRectangle(drawing, x, 30, 1, 5, {0.9, 0.1, 0.2});
        addRectangle(drawing, x, 40, 1, 5, {0.95, 0.9, 0.92}); // Nearest to the paper.
    }
    const std::string text = pensOf(drawing, {{SbColor(0, 0, 0), 0.25f},
                                              {SbColor(1, 0, 0), 0.5f},
                                              {SbColor(0, 0, 1), 0.5f},
                                              {SbColor(0, 0, 0), 0.9f}});
    for (const char* taken : {"SP1;", "SP2;", "SP4;"}) {
        const std::size_t first = text.find(taken);
        ASSERT_NE(first, std::string::npos) << taken;
        EXPECT_EQ(text.find(taken, first + 1), std::string::npos) << taken;
    }
    EXPECT_EQ(text.find("SP3;"), std::string::npos);
    const Page page = readHpgl(text);
    EXPECT_EQ(page.marks.size(), 60u);
    std::set<double> widths;
    for (const Mark& mark : page.marks)
        if (!mark.filled) {
            EXPECT_EQ(mark.color, (Color{0, 0, 0}));
            widths.insert(mark.width);
        }
    EXPECT_EQ(widths, (std::set<double>{0.25, 0.9}));
}

TEST(HpglWriter, ManyColorsBecomeAPalette)
{
    VectorDrawing drawing = emptyDrawing();
    for (int i = 0; i < 1000; ++i) {
        const double grey = i / 999.0;
        addRectangle(drawing, 10 + i % 40 * 2, 10 + i / 40 * 2, 2, 2, {grey, grey * 0.8, 1 - grey});
    }
    const Page page = readHpgl(hpglOf(drawing));
    std::set<Color> colors;
    for (const Mark& mark : page.marks)
        colors.insert(mark.color);
    EXPECT_LE(colors.size(), 255u);
    EXPECT_LE(compare(paintDrawing(drawing, kPixels), paintPage(page, kPixels)).mean, 1.5);
}

TEST(HpglOutput, RefusesTablesThatAreNone)
{
    SoHPGLVectorOutput output;
    EXPECT_EQ(output.getPens().size(), 8u);
    EXPECT_TRUE(output.getAbilities().overpainting);
    output.setColors(false);
    EXPECT_FALSE(output.getAbilities().overpainting);
    output.setPens({{SbColor(1, 0, 0), 0.7f}});

    const auto errors = support::expectErrors();
    const bool stopped = kalmyr::setContractsStop(false);
    output.setPens({});
    output.setPens({{SbColor(0, 0, 0), 0}});
    output.setPens(std::vector<SoHPGLVectorOutput::Pen>(256));
    kalmyr::setContractsStop(stopped);
    EXPECT_EQ(errors.count(), 3u);
    ASSERT_EQ(output.getPens().size(), 1u);
    EXPECT_EQ(output.getPens()[0].width, 0.7f);
}
