#include "EmfWriter.h"

#include "../ByteWriter.h"
#include "../FlatShapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

namespace kalmyr::detail {

namespace {

constexpr double kUnitsPerMillimetre = 100;
constexpr std::int32_t kPixelsPerMillimetre = 5; // Of the reference device: 1600 by 1200, 320 mm.
constexpr std::uint32_t kHeaderSize = 108;
constexpr std::size_t kMaxGroupPoints = 8000;
constexpr std::size_t kMaxTitle = 200;

enum RecordType : std::uint32_t {
    HEADER = 1,
    POLYPOLYLINE = 7,
    POLYPOLYGON = 8,
    SETWINDOWEXT = 9,
    SETWINDOWORG = 10,
    SETVIEWPORTEXT = 11,
    SETVIEWPORTORG = 12,
    END_OF_FILE = 14,
    SETMAPMODE = 17,
    SETBKMODE = 18,
    SETPOLYFILLMODE = 19,
    INTERSECTCLIPRECT = 30,
    SELECTOBJECT = 37,
    CREATEPEN = 38,
    CREATEBRUSH = 39,
    DELETEOBJECT = 40,
    POLYPOLYLINE16 = 90,
    POLYPOLYGON16 = 91,
    EXTCREATEPEN = 95
};
constexpr std::uint32_t kAnisotropic = 8;
constexpr std::uint32_t kTransparent = 1;
constexpr std::uint32_t kWinding = 2;
constexpr std::uint32_t kGeometricFlatRound = 0x10000 | 0x200; // Pen: flat caps, round joins.

std::uint32_t colorRef(PackedColor color)
{
    return redOf(color) | std::uint32_t(greenOf(color)) << 8 | std::uint32_t(blueOf(color)) << 16;
}

class EmfWriter final : public FlatPainter {
public:
    explicit EmfWriter(const VectorDrawing& drawing)
        : m_drawing(drawing),
          m_pageHeight(toUnits(drawing.pageHeight, kUnitsPerMillimetre)),
          m_wide(toUnits(std::max(drawing.pageWidth, drawing.pageHeight), kUnitsPerMillimetre)
                 > std::numeric_limits<std::int16_t>::max())
    {
    }

    void write(ByteWriter& bytes)
    {
        writeHead();
        paintFlat(m_drawing, kUnitsPerMillimetre, true, *this);
        flush();
        words(END_OF_FILE, {0, 16, 20});
        const std::string body = m_body.take();
        writeHeader(bytes, body.size());
        bytes.write(body);
    }

    void fill(std::span<const GridPoint> outline, PackedColor color) override
    {
        collect({Object::BRUSH, color, 0}, outline);
    }

    void stroke(std::span<const GridPoint> line, float millimetres, PackedColor color) override
    {
        const Object pen{Object::LINE_PEN, color,
                         std::max(1, toUnits(millimetres, kUnitsPerMillimetre))};
        for (std::size_t first = 0; first + 1 < line.size(); first += kMaxGroupPoints - 1)
            collect(pen, line.subspan(first, std::min(kMaxGroupPoints, line.size() - first)));
    }

private:
    /// An entry of the table of objects.
    struct Object {
        enum Kind { BRUSH, EDGE_PEN, LINE_PEN };
        Kind kind = BRUSH;
        PackedColor color = 0;
        std::int32_t width = 0;
        auto key() const { return std::tie(kind, color, width); }
        bool operator<(const Object& other) const { return key() < other.key(); }
        bool operator==(const Object& other) const { return key() == other.key(); }
    };

    // --- Groups of outlines or lines that look the same ---

    void collect(const Object& look, std::span<const GridPoint> points)
    {
        if (!(look == m_look) || m_points.size() + points.size() > kMaxGroupPoints)
            flush();
        m_look = look;
        m_counts.push_back(static_cast<std::uint32_t>(points.size()));
        m_points.insert(m_points.end(), points.begin(), points.end());
    }

    void flush()
    {
        if (m_counts.empty())
            return;
        if (m_look.kind == Object::BRUSH) {
            select(m_look);
            // Edges in the same colour hide the seams that antialiasing leaves between polygons.
            select({Object::EDGE_PEN, m_look.color, 0});
            writeGroup(m_wide ? POLYPOLYGON : POLYPOLYGON16);
        } else {
            select(m_look);
            writeGroup(m_wide ? POLYPOLYLINE : POLYPOLYLINE16);
        }
        m_counts.clear();
        m_points.clear();
    }

    void writeGroup(RecordType type)
    {
        const std::size_t pointSize = m_wide ? 8 : 4;
        begin(type, 24 + m_counts.size() * 4 + m_points.size() * pointSize);
        auto [left, right] =
            std::minmax_element(m_points.begin(), m_points.end(),
                                [](const GridPoint& a, const GridPoint& b) { return a.x < b.x; });
        auto [low, high] =
            std::minmax_element(m_points.begin(), m_points.end(),
                                [](const GridPoint& a, const GridPoint& b) { return a.y < b.y; });
        for (const std::int32_t side :
             {left->x, m_pageHeight - high->y, right->x, m_pageHeight - low->y})
            m_body.little(side);
        m_body.little(static_cast<std::uint32_t>(m_counts.size()));
        m_body.little(static_cast<std::uint32_t>(m_points.size()));
        for (const std::uint32_t count : m_counts)
            m_body.little(count);
        for (const GridPoint& point : m_points) {
            writeCoordinate(point.x);
            writeCoordinate(m_pageHeight - point.y);
        }
    }

    void writeCoordinate(std::int32_t value)
    {
        if (m_wide)
            m_body.little(value);
        else
            m_body.little(static_cast<std::int16_t>(std::clamp(value, -32767, 32767)));
    }

    // --- Pens and brushes ---

    /// Selects an object, which is made when the table does not have it; then the one that came
    /// into the table first, of those not in use, goes out of it.
    void select(const Object& object)
    {
        std::uint32_t& selected = m_selected[object.kind == Object::BRUSH ? 0 : 1];
        const auto known = m_handles.find(object);
        if (known != m_handles.end()) {
            if (selected != known->second)
                words(SELECTOBJECT, {known->second});
            selected = known->second;
            return;
        }
        std::uint32_t handle = static_cast<std::uint32_t>(m_table.size()) + 1;
        if (m_table.size() < kTableSize) {
            m_table.push_back(object);
        } else {
            do
                m_next = m_next % kTableSize + 1;
            while (m_next == m_selected[0] || m_next == m_selected[1]);
            handle = m_next;
            words(DELETEOBJECT, {handle});
            m_handles.erase(m_table[handle - 1]);
            m_table[handle - 1] = object;
        }
        create(handle, object);
        m_handles[object] = handle;
        words(SELECTOBJECT, {handle});
        selected = handle;
    }

    void create(std::uint32_t handle, const Object& object)
    {
        const std::uint32_t color = colorRef(object.color);
        const auto width = static_cast<std::uint32_t>(object.width);
        if (object.kind == Object::BRUSH)
            words(CREATEBRUSH, {handle, 0, color, 0});
        else if (object.kind == Object::EDGE_PEN)
            words(CREATEPEN, {handle, 0, width, 0, color});
        else
            words(EXTCREATEPEN, {handle, 0, 0, 0, 0, kGeometricFlatRound, width, 0, color, 0, 0});
    }

    // --- Records ---

    void begin(RecordType type, std::size_t length)
    {
        ++m_records;
        m_body.little(static_cast<std::uint32_t>(type));
        m_body.little(static_cast<std::uint32_t>(length + 8));
    }

    void words(RecordType type, std::initializer_list<std::uint32_t> values)
    {
        begin(type, values.size() * 4);
        for (const std::uint32_t value : values)
            m_body.little(value);
    }

    static std::int32_t pixels(float millimetres)
    {
        return std::max(1,
                        static_cast<std::int32_t>(std::ceil(millimetres * kPixelsPerMillimetre)));
    }

    /// A hundredth of a millimetre a unit, whatever the size of a pixel.
    void writeHead()
    {
        const auto units = [](std::int32_t devicePixels) {
            return static_cast<std::uint32_t>(devicePixels) * 100 / kPixelsPerMillimetre;
        };
        const std::int32_t width = pixels(m_drawing.pageWidth);
        const std::int32_t height = pixels(m_drawing.pageHeight);
        words(SETMAPMODE, {kAnisotropic});
        words(SETWINDOWORG, {0, 0});
        words(SETWINDOWEXT, {units(width), units(height)});
        words(SETVIEWPORTORG, {0, 0});
        words(SETVIEWPORTEXT,
              {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)});
        words(SETBKMODE, {kTransparent});
        words(SETPOLYFILLMODE, {kWinding}); // All outlines run the same way.
        begin(INTERSECTCLIPRECT, 16);
        m_body.little(toUnits(m_drawing.x, kUnitsPerMillimetre));
        m_body.little(m_pageHeight
                      - toUnits(double(m_drawing.y) + m_drawing.height, kUnitsPerMillimetre));
        m_body.little(toUnits(double(m_drawing.x) + m_drawing.width, kUnitsPerMillimetre));
        m_body.little(m_pageHeight - toUnits(m_drawing.y, kUnitsPerMillimetre));
    }

    void writeHeader(ByteWriter& bytes, std::size_t bodySize) const
    {
        // Program, zero, picture, two zeros.
        const std::string zero(1, '\0');
        const std::string description =
            "Kalmyr" + zero + plainTitle(m_drawing, kMaxTitle) + zero + zero;
        const std::uint32_t size =
            kHeaderSize + static_cast<std::uint32_t>((description.size() * 2 + 3) / 4 * 4);
        const auto word = [&](std::int64_t value) {
            bytes.little(static_cast<std::uint32_t>(value));
        };
        word(HEADER);
        word(size);
        for (const int side :
             {0, 0, pixels(m_drawing.pageWidth) - 1, pixels(m_drawing.pageHeight) - 1})
            word(side);
        for (const std::int32_t side : {0, 0, toUnits(m_drawing.pageWidth, 100), m_pageHeight})
            word(side);
        bytes.write(" EMF");
        word(0x00010000);
        word(static_cast<std::int64_t>(size + bodySize));
        word(m_records + 1);
        bytes.little(static_cast<std::uint16_t>(m_table.size() + 1));
        bytes.little(std::uint16_t(0));
        word(static_cast<std::int64_t>(description.size()));
        word(kHeaderSize);
        for (const int value : {0, 1600, 1200, 320, 240, 0, 0, 0, 320000, 240000})
            word(value);
        for (const char c : description)
            bytes.little(static_cast<std::uint16_t>(static_cast<unsigned char>(c)));
        if (description.size() % 2 == 1)
            bytes.little(std::uint16_t(0));
    }

    static constexpr std::size_t kTableSize = 256;

    const VectorDrawing& m_drawing;
    std::int32_t m_pageHeight;
    bool m_wide; // Coordinates of 32 bits.
    ByteWriter m_body{nullptr};
    std::uint32_t m_records = 0;
    Object m_look; // Of the group that is being collected.
    std::vector<std::uint32_t> m_counts;
    std::vector<GridPoint> m_points;
    std::vector<Object> m_table; // By handle, which begins at 1.
    std::map<Object, std::uint32_t> m_handles;
    std::array<std::uint32_t, 2> m_selected{}; // Handles of brush and pen; 0: none of ours.
    std::uint32_t m_next = 0;
};

} // namespace

void writeEmf(const VectorDrawing& drawing, ByteWriter& bytes)
{
    EmfWriter(drawing).write(bytes);
}

} // namespace kalmyr::detail
