#include "PdfWriter.h"

#include "../page/Deflate.h"
#include "../page/PageImage.h"
#include "../page/PagePainter.h"
#include "../page/PageTime.h"
#include "PdfFile.h"
#include "PdfText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

namespace kalmyr::detail {

namespace {

constexpr double kPointsPerMillimetre = 72 / 25.4;
/// Pages beyond this many units need larger units.
constexpr double kMostUnits = 14400;

std::string numbers(std::initializer_list<double> values, int decimals = 4)
{
    std::string text = "[";
    for (const double value : values) {
        appendNumber(text, value, decimals);
        text += ' ';
    }
    text.back() = ']';
    return text;
}

std::string reference(int number)
{
    return std::to_string(number) + " 0 R";
}

/// Paints into a content stream; what that refers to goes into the file at once.
class PdfPainter final : public PagePainter {
public:
    PdfPainter(PdfFile& file, Deflater& packed)
        : PagePainter([&packed](std::string_view text) { packed.add(text); }, true, true),
          m_file(file)
    {
    }

    /// The resource dictionary's entries.
    std::string resources() const
    {
        std::string text;
        const auto category = [&text](const char* name, const std::string& entries) {
            if (!entries.empty())
                text += std::string(" /") + name + " <<" + entries + " >>\n";
        };
        std::string states, images;
        for (const int opacity : m_opacities) {
            states += " /G" + std::to_string(opacity) + " << /ca ";
            appendNumber(states, opacity / 255.0, 4);
            states += " /CA ";
            appendNumber(states, opacity / 255.0, 4);
            states += " >>\n";
        }
        for (const auto& [image, number] : m_images)
            images += " /I" + std::to_string(image) + " " + reference(number) + "\n";
        images += m_groups;
        category("ExtGState", states);
        category("XObject", images);
        category("Shading", m_shadings);
        return text;
    }
    bool hasTransparency() const { return m_hasMask || !m_opacities.empty(); }

protected:
    void paintGradient(const VectorDrawing& drawing) override
    {
        const int number = m_file.object(
            "<< /ShadingType 2 /ColorSpace /DeviceRGB /Coords "
            + numbers({drawing.x, drawing.y + drawing.height, drawing.x, drawing.y})
            + "\n/Function " + gradientFunction(drawing.background) + "\n/Extend [true true] >>");
        shade(number);
    }

    void paintMesh(const PageMesh::Packed& mesh) override
    {
        shade(m_file.stream(meshDictionary(mesh), mesh.bytes));
    }

    // Readers differ in what opacity does to a mesh itself: one ignores it, others show the sides
    // that triangles share. A group is painted opaque and mixed with the page as a whole.
    void paintClearMeshes(const std::vector<PageMesh::Packed>& meshes) override
    {
        std::array<double, 4> box = meshes[0].bounds;
        std::string text, shadings;
        for (const PageMesh::Packed& mesh : meshes) {
            for (int i = 0; i < 2; ++i) {
                box[i] = std::min(box[i], mesh.bounds[i]);
                box[i + 2] = std::max(box[i + 2], mesh.bounds[i + 2]);
            }
            const std::string number =
                std::to_string(m_file.stream(meshDictionary(mesh), mesh.bytes));
            text += "/S" + number + " sh\n";
            shadings += " /S" + number + " " + number + " 0 R";
        }
        const std::string number = std::to_string(m_file.stream(
            "/Type /XObject /Subtype /Form /BBox " + numbers({box[0], box[1], box[2], box[3]}, 8)
                + "\n/Group << /S /Transparency /CS /DeviceRGB /I true >>\n"
                  "/Resources << /Shading <<"
                + shadings + " >> >>",
            text));
        m_groups += " /F" + number + " " + number + " 0 R\n";
        content().op("/F" + number + " Do");
    }

    void paintImage(const VectorDrawing& drawing, std::int32_t image) override
    {
        const VectorImage& picture = drawing.images[image];
        if (picture.pixels.isNull() || !(picture.width > 0) || !(picture.height > 0))
            return;
        if (!m_images.count(image))
            m_images[image] = writeImage(picture.pixels);
        for (const float value : {picture.width, 0.0f, 0.0f, picture.height, picture.x, picture.y})
            content().number(value, 4);
        content().text("cm /I" + std::to_string(image) + " ");
        content().op("Do");
    }

    void setOpacity(std::uint8_t opacity) override
    {
        m_opacities.insert(opacity);
        content().op("/G" + std::to_string(opacity) + " gs");
    }

private:
    void shade(int number)
    {
        const std::string name = "/S" + std::to_string(number);
        m_shadings += " " + name + " " + reference(number) + "\n";
        content().op(name + " sh");
    }

    int writeImage(const SbImage& image)
    {
        const PageImage rows(image);
        std::string dictionary = "/Type /XObject /Subtype /Image /Width "
                                 + std::to_string(image.getWidth()) + " /Height "
                                 + std::to_string(image.getHeight()) + " /BitsPerComponent 8";
        std::string colors = dictionary + " /ColorSpace /DeviceRGB";
        if (!rows.alpha.empty()) {
            m_hasMask = true;
            colors +=
                " /SMask "
                + reference(m_file.stream(dictionary + " /ColorSpace /DeviceGray", rows.alpha));
        }
        return m_file.stream(colors, rows.colors);
    }

    PdfFile& m_file;
    std::string m_shadings;
    std::string m_groups;
    std::map<int, int> m_images; ///< from the drawing's index to the object
    std::set<int> m_opacities;
    bool m_hasMask = false;
};

/// The texts, invisible, as wide as the drawing has them.
std::string textContent(const VectorDrawing& drawing)
{
    std::string content;
    for (const VectorPrimitive& one : drawing.primitives) {
        if (one.kind != VectorPrimitive::TEXT)
            continue;
        const VectorText& text = drawing.texts[one.first];
        const std::vector<PdfTextPiece> pieces = pdfTextPieces(text.text);
        double width = 0;
        for (const PdfTextPiece& piece : pieces)
            for (const char code : piece.codes)
                width += helveticaWidth(static_cast<unsigned char>(code)) * text.size / 1000;
        const double direction = std::hypot(text.dx, text.dy);
        if (!(width > 0) || !(direction > 0))
            continue;
        content += content.empty() ? "3 Tr\n/F1 " : "/F1 ";
        appendNumber(content, text.size, 4);
        content += " Tf ";
        appendNumber(content, text.length > 0 ? std::min(100 * text.length / width, 1e4) : 100, 3);
        content += " Tz\n";
        const double x = text.dx / direction, y = text.dy / direction;
        for (const double value : {x, y, -y, x, double(text.x), double(text.y)}) {
            appendNumber(content, value, 5);
            content += ' ';
        }
        content += "Tm\n";
        for (const PdfTextPiece& piece : pieces) {
            const std::string shown = pdfLiteral(piece.codes) + " Tj\n";
            if (piece.actualText.empty())
                content += shown;
            else
                content +=
                    "/Span << /ActualText " + piece.actualText + " >> BDC\n" + shown + "EMC\n";
        }
    }
    return content.empty() ? content : "BT\n" + content + "ET\n";
}

/// The view of a model. The format's camera looks along its z axis, and its x axis points to the
/// left of the picture: two axes are turned.
std::string viewDictionary(const PdfModel& model)
{
    std::string text = "<< /Type /3DView /XN "
                       + pdfTextString(model.name.empty() ? "Default view" : model.name)
                       + " /IN (default)\n/MS /M /C2W [";
    for (std::size_t i = 0; i < model.camera.size(); ++i) {
        const bool turned = i < 3 || (i >= 6 && i < 9);
        appendNumber(text, turned ? -model.camera[i] : model.camera[i], 6);
        text += ' ';
    }
    text += "]\n/CO ";
    appendNumber(text, model.orbitDistance, 6);
    text += "\n/P << ";
    if (model.perspective) {
        text += "/Subtype /P /PS /H /FOV ";
        appendNumber(text, std::clamp(model.fieldOfView * 180 / M_PI, 0.01, 179.99), 4);
    } else {
        text += "/Subtype /O /OB /H /OS ";
        appendNumber(text, model.height > 0 ? 1 / model.height : 1, 9);
    }
    const PageColor color = PageColor::of(model.background);
    text += " >>\n/BG << /Type /3DBG /Subtype /SC /CS /DeviceRGB /C "
            + numbers({color.red / 255.0, color.green / 255.0, color.blue / 255.0}) + " >> >>";
    return text;
}

/// 32 hexadecimal digits that differ for documents that do.
std::string documentId(std::string_view content, const std::string& info)
{
    std::uint64_t first = 0xcbf29ce484222325, second = 0x9e3779b97f4a7c15;
    const auto mix = [&](std::string_view bytes) {
        for (const char one : bytes) {
            first = (first ^ static_cast<unsigned char>(one)) * 0x100000001b3;
            second = (second + static_cast<unsigned char>(one)) * 0xd6e8feb86659fd93;
            second ^= second >> 32;
        }
    };
    mix(info);
    mix(content);
    std::string text;
    for (const std::uint64_t part : {first, second})
        for (int shift = 60; shift >= 0; shift -= 4)
            text += "0123456789abcdef"[part >> shift & 15];
    return text;
}

/// Writes the objects of a document. What each returns are entries of the page's dictionary.
class PdfDocument {
public:
    PdfDocument(const VectorDrawing& drawing, const PdfOptions& options, double unit,
                ByteWriter& bytes)
        : m_drawing(drawing),
          m_options(options),
          m_unit(unit),
          m_scale(kPointsPerMillimetre / unit),
          m_file(bytes, minorVersion())
    {
    }

    void write()
    {
        const int catalog = m_file.reserve(), pages = m_file.reserve();
        m_page = m_file.reserve();
        const std::string info = information();
        const std::string contents = hasModel() ? posterAndModel() : drawingAndText();
        m_file.object(m_page, "<< /Type /Page /Parent " + reference(pages) + "\n/MediaBox "
                                  + numbers({0, 0, m_drawing.pageWidth * m_scale,
                                             m_drawing.pageHeight * m_scale})
                                  + "\n" + contents + userUnit() + ">>");
        m_file.object(pages, "<< /Type /Pages /Kids [" + reference(m_page) + "] /Count 1 >>");
        m_file.object(catalog, "<< /Type /Catalog /Pages " + reference(pages) + " >>");
        m_file.finish(catalog, m_file.object(info), documentId(m_packed, info));
    }

private:
    bool hasModel() const { return !m_options.model.u3d.empty(); }

    int minorVersion() const
    {
        if (hasModel())
            return m_options.model.perspective ? 6 : 7;
        return m_unit > 1 ? 6 : 4;
    }

    std::string information() const
    {
        std::string info =
            "<< /Producer (Kalmyr) /CreationDate (" + pdfDate(m_options.created) + ")";
        if (!m_drawing.title.empty())
            info += "\n/Title " + pdfTextString(m_drawing.title);
        return info + " >>";
    }

    std::string userUnit() const
    {
        return m_unit > 1 ? "/UserUnit " + std::to_string(static_cast<int>(m_unit)) + "\n" : "";
    }

    std::string toMillimetres() const
    {
        const std::string matrix = numbers({m_scale, 0, 0, m_scale, 0, 0}, 9);
        return matrix.substr(1, matrix.size() - 2) + " cm\n";
    }

    /// Fills m_packed, and returns the resources that it uses.
    std::string paint(std::string_view text)
    {
        Deflater content;
        content.add(toMillimetres());
        PdfPainter painter(m_file, content);
        painter.paint(m_drawing);
        content.add(text);
        m_packed = content.finish();
        if (painter.hasTransparency())
            m_group = "/Group << /S /Transparency /CS /DeviceRGB >>\n";
        return painter.resources();
    }

    std::string fontResource(const std::string& text)
    {
        return text.empty() ? ""
                            : " /Font << /F1 "
                                  + reference(m_file.object(
                                      "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica "
                                      "/Encoding /WinAnsiEncoding >>"))
                                  + " >>\n";
    }

    std::string drawingAndText()
    {
        const std::string text = textContent(m_drawing);
        const std::string resources = paint(text) + fontResource(text);
        const int content = m_file.reserve();
        m_file.packedStream(content, "", m_packed);
        return "/Resources <<" + resources + " >>\n/Contents " + reference(content) + "\n"
               + m_group;
    }

    /// The drawing is the appearance of an annotation, and the page itself has the texts only.
    std::string posterAndModel()
    {
        const std::string resources = paint("");
        const double right = m_drawing.x + m_drawing.width, high = m_drawing.y + m_drawing.height;
        const std::string rectangle = numbers(
            {m_drawing.x * m_scale, m_drawing.y * m_scale, right * m_scale, high * m_scale});
        const int poster = m_file.reserve();
        m_file.packedStream(poster,
                            "/Type /XObject /Subtype /Form /BBox " + rectangle + "\n" + m_group
                                + "/Resources <<" + resources + " >>",
                            m_packed);
        const std::string view = reference(m_file.object(viewDictionary(m_options.model)));
        const int model =
            m_file.stream("/Type /3D /Subtype /U3D /VA [" + view + "] /DV 0", m_options.model.u3d);
        const int annotation = m_file.object(
            "<< /Type /Annot /Subtype /3D /Rect " + rectangle + " /P " + reference(m_page)
            + "\n/F 4 /NM (model) /Contents (A model in three dimensions)\n/AP << /N "
            + reference(poster) + " >> /3DD " + reference(model) + " /3DV " + view
            + "\n/3DA << /A /XA /D /PI /TB true /NP false >> >>");
        const std::string text = textContent(m_drawing);
        const std::string font = fontResource(text);
        const int content = m_file.stream("", toMillimetres() + text);
        return "/Resources <<" + font + " >>\n/Contents " + reference(content) + "\n/Annots ["
               + reference(annotation) + "]\n" + m_group;
    }

    const VectorDrawing& m_drawing;
    const PdfOptions& m_options;
    double m_unit;  ///< of the page, in points
    double m_scale; ///< units in a millimetre
    PdfFile m_file;
    int m_page = 0;
    std::string m_packed; ///< content of the drawing
    std::string m_group;  ///< entry of a page or form with transparency
};

} // namespace

void writePdf(const VectorDrawing& drawing, const PdfOptions& options, ByteWriter& bytes)
{
    const double points = std::max(drawing.pageWidth, drawing.pageHeight) * kPointsPerMillimetre;
    const double unit = std::max(1.0, std::ceil(points / kMostUnits));
    PdfDocument(drawing, options, unit, bytes).write();
}

} // namespace kalmyr::detail
