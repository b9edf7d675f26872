#include "PostScriptWriter.h"

#include "../page/Deflate.h"
#include "../page/PageImage.h"
#include "../page/PagePainter.h"
#include "../page/PageTime.h"
#include "../pdf/PdfText.h"
#include "Ascii85.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace kalmyr::detail {

namespace {

constexpr double kPointsPerMillimetre = 72 / 25.4;

/// The names of the painter's operators.
constexpr std::string_view kProlog = R"(%%BeginProlog
/KalmyrDict 64 dict def
KalmyrDict begin
/q {gsave} bind def
/Q {grestore} bind def
/m {moveto} bind def
/l {lineto} bind def
/h {closepath} bind def
/re {4 2 roll moveto 1 index 0 rlineto 0 exch rlineto neg 0 rlineto closepath} bind def
/f {fill} bind def
/S {stroke} bind def
/B {gsave fill grestore stroke} bind def
/W {clip} bind def
/n {newpath} bind def
/g {setgray} bind def
/rg {setrgbcolor} bind def
/w {setlinewidth} bind def
/J {setlinecap} bind def
/j {setlinejoin} bind def
end
%%EndProlog
)";

/// A string of a structure comment, cut to what fits a line of 255 letters.
std::string dscText(std::string_view utf8)
{
    constexpr std::size_t kMost = 240;
    std::string text = "(";
    for (const char one : utf8) {
        const std::string escaped = pdfLiteral({&one, 1});
        if (text.size() + escaped.size() > kMost)
            break;
        text.append(escaped, 1, escaped.size() - 2);
    }
    return text + ")";
}

class PostScriptPainter final : public PagePainter {
public:
    PostScriptPainter(ByteWriter& bytes, bool level2)
        : PagePainter([&bytes](std::string_view text) { bytes.write(text); }, false, !level2),
          m_level2(level2)
    {
    }

protected:
    void paintGradient(const VectorDrawing& drawing) override
    {
        if (m_level2) {
            paintBands(drawing);
            return;
        }
        content().op("<< /ShadingType 2 /ColorSpace /DeviceRGB /Extend [true true]");
        content().text("/Coords [");
        for (const float value : {drawing.x, drawing.y + drawing.height, drawing.x, drawing.y})
            content().number(value, 4);
        content().op("]");
        content().op("/Function " + gradientFunction(drawing.background));
        content().op(">> shfill");
    }

    void paintMesh(const PageMesh::Packed& mesh) override
    {
        content().op("<< " + meshDictionary(mesh) + "\n/DataSource");
        stream(mesh.bytes);
        content().op(">> shfill");
    }

    void paintClearMeshes(const std::vector<PageMesh::Packed>& meshes) override
    {
        for (const PageMesh::Packed& mesh : meshes)
            paintMesh(mesh);
    }

    void paintImage(const VectorDrawing& drawing, std::int32_t image) override
    {
        const VectorImage& picture = drawing.images[image];
        const SbImage& pixels = picture.pixels;
        if (pixels.isNull() || !(picture.width > 0) || !(picture.height > 0))
            return;
        const std::string name = "I" + std::to_string(image);
        const PageImage rows(pixels, true);
        if (m_images.insert(image).second) {
            content().op("/" + name);
            stream(rows.colors);
            content().op("def");
        }
        const std::string width = std::to_string(pixels.getWidth()),
                          height = std::to_string(pixels.getHeight());
        content().number(picture.x, 4);
        content().number(picture.y, 4);
        content().text("translate ");
        content().number(picture.width, 4);
        content().number(picture.height, 4);
        content().op("scale");
        content().op(name + " 0 setfileposition /DeviceRGB setcolorspace");
        content().op("<< /ImageType 1 /BitsPerComponent 8 /Decode [0 1 0 1 0 1] /Width " + width
                     + " /Height " + height);
        content().op("/ImageMatrix [" + width + " 0 0 -" + height + " 0 " + height
                     + "] /DataSource " + name + " >> image");
    }

    void setOpacity(std::uint8_t) override {}

private:
    /// Packed bytes in the file, as an object on the stack. All of them are read at once, for the
    /// dictionary that they are part of goes on behind them.
    void stream(std::string_view bytes)
    {
        content().op("currentfile /ASCII85Decode filter /FlateDecode filter "
                     "/ReusableStreamDecode filter");
        content().text(encodeAscii85(deflateBytes(bytes)));
    }

    void paintBands(const VectorDrawing& drawing)
    {
        constexpr int kBands = 256;
        const auto& stops = drawing.background;
        std::size_t next = 0;
        for (int band = 0; band < kBands; ++band) {
            const float share = (band + 0.5f) / kBands;
            while (next < stops.size() && stops[next].share <= share)
                ++next;
            const VectorBackgroundStop &below = stops[std::min(next, stops.size() - 1)],
                                       &above = stops[next > 0 ? next - 1 : 0];
            const float height = below.share - above.share;
            const float part = height > 0 ? (share - above.share) / height : 0;
            content().setFill(PageColor::of(above.color + (below.color - above.color) * part));
            // Each reaches down to the lower side: there are no seams.
            content().rectangle(drawing.x, drawing.y, drawing.width,
                                drawing.height * (1 - float(band) / kBands));
            content().op("f");
        }
    }

    std::set<int> m_images; ///< defined in the file
    bool m_level2;
};

} // namespace

void writePostScript(const VectorDrawing& drawing, const PostScriptOptions& options,
                     ByteWriter& bytes)
{
    const auto line = [&bytes](std::string_view name, std::initializer_list<double> values,
                               int decimals) {
        std::string text(name);
        for (const double value : values) {
            text += ' ';
            appendNumber(text, value, decimals);
        }
        bytes.write(text + "\n");
    };
    const double left = drawing.x * kPointsPerMillimetre, low = drawing.y * kPointsPerMillimetre;
    const double right = left + drawing.width * kPointsPerMillimetre,
                 high = low + drawing.height * kPointsPerMillimetre;

    bytes.write("%!PS-Adobe-3.0\n");
    line("%%BoundingBox:", {std::floor(left), std::floor(low), std::ceil(right), std::ceil(high)},
         0);
    line("%%HiResBoundingBox:", {left, low, right, high}, 4);
    if (!drawing.title.empty())
        bytes.write("%%Title: " + dscText(drawing.title) + "\n");
    bytes.write("%%Creator: Kalmyr\n%%CreationDate: (" + pdfDate(options.created)
                + ")\n%%Pages: 1\n%%LanguageLevel: " + (options.level2 ? "2" : "3")
                + "\n%%DocumentData: Clean7Bit\n%%EndComments\n");
    bytes.write(kProlog);
    bytes.write("%%BeginSetup\n");
    line("<< /PageSize [",
         {drawing.pageWidth * kPointsPerMillimetre, drawing.pageHeight * kPointsPerMillimetre}, 4);
    bytes.write("] >> setpagedevice\n%%EndSetup\n%%Page: 1 1\n%%BeginPageSetup\n"
                "KalmyrDict begin /pagesave save def\nfalse setstrokeadjust\n");
    line("", {kPointsPerMillimetre, kPointsPerMillimetre}, 9);
    bytes.write("scale\n%%EndPageSetup\n");
    PostScriptPainter(bytes, options.level2).paint(drawing);
    bytes.write("%%PageTrailer\npagesave restore end showpage\n%%Trailer\n%%EOF\n");
}

} // namespace kalmyr::detail
