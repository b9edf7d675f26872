#include "HpglWriter.h"

#include "../ByteWriter.h"
#include "../FlatShapes.h"
#include "ColorPalette.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <optional>

namespace kalmyr::detail {

namespace {

constexpr double kUnitsPerMillimetre = 40;
constexpr std::size_t kMaxPens = 255; // Beside pen 0, which is the paper's.
constexpr float kFillWidth = 0.1f;    // Of the strokes that devices may fill with.
constexpr int kBarePaper = -1;

/// Sees which colours a drawing has.
class ColorCounter final : public FlatPainter {
public:
    explicit ColorCounter(ColorPalette& palette) : m_palette(palette) {}
    void fill(std::span<const GridPoint> outline, PackedColor color) override
    {
        double area = 0;
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const GridPoint& next = outline[(i + 1) % outline.size()];
            area += double(outline[i].x) * next.y - double(next.x) * outline[i].y;
        }
        m_palette.add(color, area / 2 + 1);
    }
    void stroke(std::span<const GridPoint> line, float millimetres, PackedColor color) override
    {
        double length = 0;
        for (std::size_t i = 1; i < line.size(); ++i)
            length += std::hypot(line[i].x - line[i - 1].x, line[i].y - line[i - 1].y);
        m_palette.add(color, length * millimetres * kUnitsPerMillimetre + 1);
    }

private:
    ColorPalette& m_palette;
};

void writePoint(ByteWriter& bytes, const GridPoint& point)
{
    bytes.integer(point.x);
    bytes.write(",");
    bytes.integer(point.y);
}

/// Pen up to the first point, `middle`, pen down through the others.
void writeWay(ByteWriter& bytes, std::span<const GridPoint> points, std::string_view middle)
{
    bytes.write("PU");
    writePoint(bytes, points[0]);
    bytes.write(middle);
    for (std::size_t i = 1; i < points.size(); ++i) {
        bytes.write(i == 1 ? "PD" : ",");
        writePoint(bytes, points[i]);
    }
    bytes.write(";");
}

void writeOutline(ByteWriter& bytes, std::span<const GridPoint> outline)
{
    writeWay(bytes, outline, ";PM0;");
    bytes.write("PM2;FP;\n");
}

void writeLine(ByteWriter& bytes, std::span<const GridPoint> line)
{
    writeWay(bytes, line, ";");
    bytes.write("\n");
}

void writeCommand(ByteWriter& bytes, std::string_view name, std::initializer_list<double> values)
{
    bytes.write(name);
    const char* comma = "";
    for (const double value : values) {
        bytes.write(comma);
        bytes.number(value);
        comma = ",";
    }
    bytes.write(";");
}

/// In the order of the drawing, with a pen for each colour.
class ColorPlotter final : public FlatPainter {
public:
    ColorPlotter(const ColorPalette& palette, ByteWriter& bytes)
        : m_palette(palette), m_bytes(bytes)
    {
    }

    void fill(std::span<const GridPoint> outline, PackedColor color) override
    {
        take(color, kFillWidth);
        writeOutline(m_bytes, outline);
    }
    void stroke(std::span<const GridPoint> line, float millimetres, PackedColor color) override
    {
        take(color, millimetres);
        writeLine(m_bytes, line);
    }

private:
    void take(PackedColor color, float width)
    {
        const std::size_t pen = m_palette.indexOf(color) + 1;
        if (m_pen != pen)
            writeCommand(m_bytes, "SP", {static_cast<double>(pen)});
        if (m_width != width)
            writeCommand(m_bytes, "PW", {width});
        m_pen = pen;
        m_width = width;
    }

    const ColorPalette& m_palette;
    ByteWriter& m_bytes;
    std::optional<std::size_t> m_pen;
    std::optional<float> m_width;
};

/// One pen after the other, each with all that it draws: inks do not cover each other, so that the
/// order does not show.
class PenPlotter final : public FlatPainter {
public:
    explicit PenPlotter(const std::vector<SoHPGLVectorOutput::Pen>& pens) : m_pens(pens)
    {
        for (std::size_t i = 0; i < pens.size(); ++i)
            m_parts.push_back(std::make_unique<ByteWriter>(nullptr));
    }

    void fill(std::span<const GridPoint> outline, PackedColor color) override
    {
        if (const int pen = penFor(color, std::nullopt); pen != kBarePaper)
            writeOutline(*m_parts[static_cast<std::size_t>(pen)], outline);
    }
    void stroke(std::span<const GridPoint> line, float millimetres, PackedColor color) override
    {
        if (const int pen = penFor(color, millimetres); pen != kBarePaper)
            writeLine(*m_parts[static_cast<std::size_t>(pen)], line);
    }

    void write(ByteWriter& bytes)
    {
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            const std::string part = m_parts[i]->take();
            if (part.empty())
                continue;
            writeCommand(bytes, "SP", {static_cast<double>(i + 1)});
            bytes.write("\n");
            bytes.write(part);
        }
    }

private:
    static int distance(PackedColor a, PackedColor b)
    {
        const int red = redOf(a) - redOf(b);
        const int green = greenOf(a) - greenOf(b);
        const int blue = blueOf(a) - blueOf(b);
        return red * red + green * green + blue * blue;
    }

    /// The pen nearest in colour, of several the one nearest in width. What is nearer to white
    /// needs none.
    int penFor(PackedColor color, std::optional<float> width)
    {
        int best = kBarePaper;
        int least = distance(color, 0xffffff);
        float leastWidth = 0;
        for (std::size_t i = 0; i < m_pens.size(); ++i) {
            const SbColor& ink = m_pens[i].color;
            const int by = distance(color, packColor(ink[0], ink[1], ink[2]));
            const float byWidth = width ? std::abs(m_pens[i].width - *width) : 0;
            if (by < least || (by == least && best != kBarePaper && byWidth < leastWidth)) {
                best = static_cast<int>(i);
                least = by;
                leastWidth = byWidth;
            }
        }
        return best;
    }

    const std::vector<SoHPGLVectorOutput::Pen>& m_pens;
    std::vector<std::unique_ptr<ByteWriter>> m_parts;
};

void writeHead(const VectorDrawing& drawing, ByteWriter& bytes)
{
    const auto units = [](double value) { return double(toUnits(value, kUnitsPerMillimetre)); };
    bytes.write("IN;");
    writeCommand(bytes, "PS", {units(drawing.pageWidth), units(drawing.pageHeight)});
    writeCommand(bytes, "IW",
                 {units(drawing.x), units(drawing.y), units(double(drawing.x) + drawing.width),
                  units(double(drawing.y) + drawing.height)});
    bytes.write("\n");
}

void writeColor(std::size_t pen, PackedColor color, ByteWriter& bytes)
{
    writeCommand(bytes, "PC",
                 {static_cast<double>(pen), double(redOf(color)), double(greenOf(color)),
                  double(blueOf(color))});
}

/// A power of two, with pen 0.
double paletteSize(std::size_t pens)
{
    return static_cast<double>(std::max<std::size_t>(2, std::bit_ceil(pens + 1)));
}

void plotInColors(const VectorDrawing& drawing, ByteWriter& bytes)
{
    ColorPalette palette;
    ColorCounter counter(palette);
    paintFlat(drawing, kUnitsPerMillimetre, true, counter);
    palette.choose(kMaxPens);
    // White covers what lies below.
    bytes.write("TR0;");
    writeCommand(bytes, "NP", {paletteSize(palette.colors().size())});
    for (std::size_t i = 0; i < palette.colors().size(); ++i)
        writeColor(i + 1, palette.colors()[i], bytes);
    bytes.write("\nWU0;LA1,1,2,4;FT1;\n");
    ColorPlotter plotter(palette, bytes);
    paintFlat(drawing, kUnitsPerMillimetre, true, plotter);
}

void plotWithPens(const VectorDrawing& drawing, const std::vector<SoHPGLVectorOutput::Pen>& pens,
                  ByteWriter& bytes)
{
    writeCommand(bytes, "NP", {paletteSize(pens.size())});
    for (std::size_t i = 0; i < pens.size(); ++i) {
        const SbColor& ink = pens[i].color;
        writeColor(i + 1, packColor(ink[0], ink[1], ink[2]), bytes);
    }
    bytes.write("\nWU0;");
    for (std::size_t i = 0; i < pens.size(); ++i)
        writeCommand(bytes, "PW", {pens[i].width, static_cast<double>(i + 1)});
    bytes.write("LA1,1,2,4;FT1;\n");
    PenPlotter plotter(pens);
    paintFlat(drawing, kUnitsPerMillimetre, false, plotter);
    plotter.write(bytes);
}

} // namespace

void writeHpgl(const VectorDrawing& drawing, const HpglOptions& options, ByteWriter& bytes)
{
    writeHead(drawing, bytes);
    if (options.colors || options.pens.empty())
        plotInColors(drawing, bytes);
    else
        plotWithPens(drawing, options.pens, bytes);
    bytes.write("PU;SP0;PG;\n");
}

} // namespace kalmyr::detail
