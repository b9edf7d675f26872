#include "CgmWriter.h"

#include "../ByteWriter.h"
#include "../FlatShapes.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace kalmyr::detail {

namespace {

constexpr double kUnitsPerMillimetre = 100;
constexpr float kMillimetresPerUnit = 0.01f;
constexpr std::size_t kShortLength = 30;
constexpr std::uint16_t kLongForm = 31;
/// Longer elements would have to be partitioned, which some readers misread.
constexpr std::size_t kMaxLength = 32767;
constexpr std::size_t kMaxTitle = 200;

struct ElementId {
    std::uint16_t elementClass;
    std::uint16_t id;
};
constexpr ElementId kBeginMetafile{0, 1};
constexpr ElementId kEndMetafile{0, 2};
constexpr ElementId kBeginPicture{0, 3};
constexpr ElementId kBeginPictureBody{0, 4};
constexpr ElementId kEndPicture{0, 5};
constexpr ElementId kMetafileVersion{1, 1};
constexpr ElementId kMetafileDescription{1, 2};
constexpr ElementId kVdcType{1, 3};
constexpr ElementId kIntegerPrecision{1, 4};
constexpr ElementId kRealPrecision{1, 5};
constexpr ElementId kIndexPrecision{1, 6};
constexpr ElementId kColourPrecision{1, 7};
constexpr ElementId kColourValueExtent{1, 10};
constexpr ElementId kElementList{1, 11};
constexpr ElementId kDefaultsReplacement{1, 12};
constexpr ElementId kScalingMode{2, 1};
constexpr ElementId kColourSelectionMode{2, 2};
constexpr ElementId kLineWidthMode{2, 3};
constexpr ElementId kEdgeWidthMode{2, 5};
constexpr ElementId kVdcExtent{2, 6};
constexpr ElementId kBackgroundColour{2, 7};
constexpr ElementId kVdcIntegerPrecision{3, 1};
constexpr ElementId kClipRectangle{3, 5};
constexpr ElementId kClipIndicator{3, 6};
constexpr ElementId kPolyline{4, 1};
constexpr ElementId kPolygon{4, 7};
constexpr ElementId kLineType{5, 2};
constexpr ElementId kLineWidth{5, 3};
constexpr ElementId kLineColour{5, 4};
constexpr ElementId kInteriorStyle{5, 22};
constexpr ElementId kFillColour{5, 23};
constexpr ElementId kEdgeType{5, 27};
constexpr ElementId kEdgeWidth{5, 28};
constexpr ElementId kEdgeColour{5, 29};
constexpr ElementId kEdgeVisibility{5, 30};

class CgmWriter final : public FlatPainter {
public:
    CgmWriter(const VectorDrawing& drawing, ByteWriter& bytes)
        : m_drawing(drawing),
          m_bytes(bytes),
          m_wide(toUnits(std::max(drawing.pageWidth, drawing.pageHeight), kUnitsPerMillimetre)
                 > std::numeric_limits<std::int16_t>::max())
    {
    }

    void write()
    {
        writeHead();
        paintFlat(m_drawing, kUnitsPerMillimetre, true, *this);
        begin(kEndPicture, 0);
        begin(kEndMetafile, 0);
    }

    void fill(std::span<const GridPoint> outline, PackedColor color) override
    {
        if (m_fillColor != color) {
            writeColor(kFillColour, color);
            writeColor(kEdgeColour, color);
        }
        m_fillColor = color;
        writePoints(kPolygon, outline);
    }

    void stroke(std::span<const GridPoint> line, float millimetres, PackedColor color) override
    {
        const std::int32_t width = std::max(1, toUnits(millimetres, kUnitsPerMillimetre));
        if (m_lineWidth != width) {
            begin(kLineWidth, pointSize() / 2);
            writeCoordinate(width);
        }
        m_lineWidth = width;
        if (m_lineColor != color)
            writeColor(kLineColour, color);
        m_lineColor = color;
        // Parts of a long line share a point.
        const std::size_t most = kMaxLength / pointSize();
        for (std::size_t first = 0; first + 1 < line.size(); first += most - 1)
            writePoints(kPolyline, line.subspan(first, std::min(most, line.size() - first)));
    }

private:
    std::size_t pointSize() const { return m_wide ? 8 : 4; }

    /// Parameters of `length` bytes follow; odd ones take a zero behind them.
    void begin(ElementId element, std::size_t length)
    {
        const auto word = static_cast<std::uint16_t>(element.elementClass << 12 | element.id << 5);
        if (length <= kShortLength) {
            m_bytes.big(static_cast<std::uint16_t>(word | length));
        } else {
            m_bytes.big(static_cast<std::uint16_t>(word | kLongForm));
            m_bytes.big(static_cast<std::uint16_t>(length));
        }
    }

    void writeWords(ElementId element, std::initializer_list<int> words)
    {
        begin(element, words.size() * 2);
        for (const int word : words)
            m_bytes.big(static_cast<std::int16_t>(word));
    }

    void writeString(ElementId element, std::string_view text)
    {
        begin(element, text.size() + 1);
        m_bytes.big(static_cast<std::uint8_t>(text.size()));
        m_bytes.write(text);
        if (text.size() % 2 == 0)
            m_bytes.big(std::uint8_t(0));
    }

    void writeComponents(PackedColor color)
    {
        m_bytes.big(redOf(color));
        m_bytes.big(greenOf(color));
        m_bytes.big(blueOf(color));
    }

    void writeColor(ElementId element, PackedColor color)
    {
        begin(element, 3);
        writeComponents(color);
        m_bytes.big(std::uint8_t(0));
    }

    void writeCoordinate(std::int32_t value)
    {
        if (m_wide)
            m_bytes.big(value);
        else
            m_bytes.big(static_cast<std::int16_t>(std::clamp(value, -32767, 32767)));
    }

    void writePoints(ElementId element, std::span<const GridPoint> points)
    {
        begin(element, points.size() * pointSize());
        for (const GridPoint& point : points) {
            writeCoordinate(point.x);
            writeCoordinate(point.y);
        }
    }

    void writeRectangle(ElementId element, float x, float y, float width, float height)
    {
        const auto units = [](float value) { return toUnits(value, kUnitsPerMillimetre); };
        const GridPoint corners[] = {{units(x), units(y)}, {units(x + width), units(y + height)}};
        writePoints(element, corners);
    }

    void writeHead()
    {
        const std::string title = plainTitle(m_drawing, kMaxTitle);
        writeString(kBeginMetafile, title);
        writeWords(kMetafileVersion, {1});
        writeString(kMetafileDescription, "Kalmyr");
        writeWords(kElementList, {1, -1, 1}); // The drawing set with its control elements.
        writeWords(kVdcType, {0});
        writeWords(kIntegerPrecision, {16});
        writeWords(kRealPrecision, {0, 9, 23});
        writeWords(kIndexPrecision, {16});
        writeWords(kColourPrecision, {8});
        begin(kColourValueExtent, 6);
        writeComponents(0);
        writeComponents(0xffffff);
        if (m_wide) { // Only so does it hold for the extent, too.
            begin(kDefaultsReplacement, 4);
            writeWords(kVdcIntegerPrecision, {32});
        }
        writeString(kBeginPicture, title);
        begin(kScalingMode, 6);
        m_bytes.big(std::int16_t(1));
        m_bytes.big(kMillimetresPerUnit);
        writeWords(kColourSelectionMode, {1});
        writeWords(kLineWidthMode, {0});
        writeWords(kEdgeWidthMode, {0});
        writeRectangle(kVdcExtent, 0, 0, m_drawing.pageWidth, m_drawing.pageHeight);
        writeColor(kBackgroundColour, 0xffffff);
        begin(kBeginPictureBody, 0);
        writeRectangle(kClipRectangle, m_drawing.x, m_drawing.y, m_drawing.width, m_drawing.height);
        writeWords(kClipIndicator, {1});
        writeWords(kInteriorStyle, {1});
        // Edges in the colour of the interior, as thin as can be, hide the seams that antialiasing
        // leaves between polygons.
        writeWords(kEdgeVisibility, {1});
        writeWords(kEdgeType, {1});
        begin(kEdgeWidth, pointSize() / 2);
        writeCoordinate(0);
        writeWords(kLineType, {1});
    }

    const VectorDrawing& m_drawing;
    ByteWriter& m_bytes;
    bool m_wide; // Coordinates of 32 bits.
    std::optional<PackedColor> m_fillColor;
    std::optional<PackedColor> m_lineColor;
    std::optional<std::int32_t> m_lineWidth;
};

} // namespace

void writeCgm(const VectorDrawing& drawing, ByteWriter& bytes)
{
    CgmWriter(drawing, bytes).write();
}

} // namespace kalmyr::detail
