#include "Readers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>

namespace flat {

namespace {

void require(bool holds, const std::string& what)
{
    if (!holds)
        throw std::runtime_error("EMF: " + what);
}

struct Object {
    bool isBrush = false;
    Color color{};
    double width = 0; ///< logical units; 0: one pixel
};

class EmfReader {
public:
    explicit EmfReader(const std::string& bytes) : m_bytes(bytes) {}

    Page read()
    {
        readHeader();
        bool ended = false;
        while (m_at < m_bytes.size()) {
            require(!ended, "a record behind the last one");
            const std::size_t begin = m_at;
            m_end = m_bytes.size();
            const std::uint32_t type = u32();
            const std::uint32_t size = u32();
            require(size % 4 == 0 && size >= 8 && begin + size <= m_bytes.size(),
                    "size of a record");
            m_end = begin + size;
            ended = type == 14;
            readRecord(type, size);
            require(m_at == m_end, "record " + std::to_string(type) + " of another size");
            ++m_records;
        }
        require(ended, "no last record");
        require(m_records == m_recordCount, "number of records");
        require(m_highest < m_handleCount, "number of handles");
        require(m_clipped, "no clip rectangle");
        return m_page;
    }

private:
    template <class T>
    T get()
    {
        require(m_at + sizeof(T) <= m_end, "data ends");
        T value;
        std::memcpy(&value, m_bytes.data() + m_at, sizeof(T));
        m_at += sizeof(T);
        return value;
    }
    std::uint32_t u32() { return get<std::uint32_t>(); }
    std::int32_t i32() { return get<std::int32_t>(); }

    void readHeader()
    {
        m_end = m_bytes.size();
        require(m_end >= 108 && u32() == 1, "no header");
        const std::uint32_t size = u32();
        std::int32_t bounds[4];
        std::int32_t frame[4];
        for (std::int32_t& value : bounds)
            value = i32();
        for (std::int32_t& value : frame)
            value = i32();
        require(u32() == 0x464D4520 && u32() == 0x00010000, "signature");
        require(u32() == m_bytes.size(), "number of bytes");
        m_recordCount = u32();
        m_handleCount = get<std::uint16_t>();
        require(get<std::uint16_t>() == 0, "reserved");
        const std::uint32_t characters = u32();
        require(u32() == 108 && (108 + characters * 2 + 3) / 4 * 4 == size, "description");
        require(u32() == 0, "palette");
        const std::uint32_t deviceX = u32();
        const std::uint32_t deviceY = u32();
        const std::uint32_t millimetresX = u32();
        require(u32() * deviceX == millimetresX * deviceY, "pixels are to be square");
        m_pixel = double(millimetresX) / deviceX;
        require(u32() == 0 && u32() == 0 && u32() == 0, "pixel format");
        require(u32() == millimetresX * 1000, "micrometres");
        m_page.width = (frame[2] - frame[0]) / 100.0;
        m_page.height = (frame[3] - frame[1]) / 100.0;
        require(bounds[0] == 0 && std::abs((bounds[2] + 1) * m_pixel - m_page.width) <= m_pixel
                    && std::abs((bounds[3] + 1) * m_pixel - m_page.height) <= m_pixel,
                "bounds and frame differ");
        m_at = size;
        m_records = 1;
    }

    Color color()
    {
        const std::uint32_t value = u32();
        require(value < 0x1000000, "colour");
        return {(value & 255) / 255.0, (value >> 8 & 255) / 255.0, (value >> 16) / 255.0};
    }

    Place place(bool wide)
    {
        const double x = wide ? i32() : get<std::int16_t>();
        const double y = wide ? i32() : get<std::int16_t>();
        return {x * m_unitX, m_page.height - y * m_unitY};
    }

    void readPolys(bool wide, bool closed)
    {
        std::int32_t bounds[4];
        for (std::int32_t& value : bounds)
            value = i32();
        const std::uint32_t number = u32();
        const std::uint32_t total = u32();
        std::vector<std::uint32_t> counts;
        std::uint32_t sum = 0;
        for (std::uint32_t i = 0; i < number; ++i) {
            counts.push_back(u32());
            sum += counts.back();
            require(counts.back() >= (closed ? 3u : 2u), "too few points");
        }
        require(sum == total && number > 0, "number of points");
        std::vector<Contour> contours;
        for (const std::uint32_t count : counts) {
            Contour& contour = contours.emplace_back();
            for (std::uint32_t i = 0; i < count; ++i) {
                contour.push_back(place(wide));
                const double x = contour.back().x / m_unitX;
                const double y = (m_page.height - contour.back().y) / m_unitY;
                require(x > bounds[0] - 0.5 && x < bounds[2] + 0.5 && y > bounds[1] - 0.5
                            && y < bounds[3] + 0.5,
                        "a point out of its bounds");
            }
        }
        require(m_pen && (!closed || m_brush), "nothing selected");
        if (closed)
            require(m_pen->color == m_brush->color && m_pen->width == 0, "edges that differ");
        const Object& look = closed ? *m_brush : *m_pen;
        m_page.marks.push_back({contours, closed, !m_winding, look.width * m_unitX, look.color});
    }

    void create(std::uint32_t handle, const Object& object)
    {
        require(handle > 0 && m_objects.count(handle) == 0, "a handle in use");
        m_objects[handle] = object;
        m_highest = std::max(m_highest, handle);
    }

    void readRecord(std::uint32_t type, std::uint32_t size)
    {
        switch (type) {
        case 7:
        case 8:
            readPolys(true, type == 8);
            break;
        case 90:
        case 91:
            readPolys(false, type == 91);
            break;
        case 9:
            m_window[0] = i32();
            m_window[1] = i32();
            break;
        case 10:
        case 12:
            require(i32() == 0 && i32() == 0, "origin");
            break;
        case 11:
            m_unitX = i32() * m_pixel / m_window[0];
            m_unitY = i32() * m_pixel / m_window[1];
            break;
        case 14:
            require(u32() == 0 && u32() == 16 && u32() == size, "end");
            break;
        case 17:
            require(u32() == 8, "map mode");
            break;
        case 18:
            require(u32() == 1, "background mode");
            break;
        case 19:
            m_winding = u32() == 2;
            break;
        case 30: {
            const double left = i32() * m_unitX;
            const double top = m_page.height - i32() * m_unitY;
            const double right = i32() * m_unitX;
            m_page.clip = {left, m_page.height - i32() * m_unitY, right, top};
            m_clipped = true;
            break;
        }
        case 37: {
            const std::uint32_t handle = u32();
            require(m_objects.count(handle) == 1, "an unknown object is selected");
            const bool isBrush = m_objects[handle].isBrush;
            (isBrush ? m_brush : m_pen) = m_objects[handle];
            (isBrush ? m_brushHandle : m_penHandle) = handle;
            break;
        }
        case 40: {
            const std::uint32_t handle = u32();
            require(handle != m_brushHandle && handle != m_penHandle, "deleted while selected");
            require(m_objects.erase(handle) == 1, "an unknown object is deleted");
            break;
        }
        case 38: {
            const std::uint32_t handle = u32();
            require(u32() == 0, "pen style");
            const double width = u32();
            u32();
            create(handle, {false, color(), width});
            break;
        }
        case 39: {
            const std::uint32_t handle = u32();
            require(u32() == 0, "brush style");
            const Color shade = color();
            require(u32() == 0, "hatch");
            create(handle, {true, shade, 0});
            break;
        }
        case 95: {
            const std::uint32_t handle = u32();
            for (int i = 0; i < 4; ++i)
                require(u32() == 0, "a bitmap in a pen");
            require(u32() == 0x10200, "style of a pen");
            const double width = u32();
            require(u32() == 0 && width > 0, "pen");
            const Color shade = color();
            require(u32() == 0 && u32() == 0, "dashes");
            create(handle, {false, shade, width});
            break;
        }
        default:
            require(false, "unexpected record " + std::to_string(type));
        }
    }

    const std::string& m_bytes;
    std::size_t m_at = 0;
    std::size_t m_end = 0;
    std::uint32_t m_records = 0, m_recordCount = 0, m_handleCount = 0, m_highest = 0;
    std::uint32_t m_brushHandle = 0, m_penHandle = 0;
    double m_pixel = 0, m_unitX = 0, m_unitY = 0;
    std::int32_t m_window[2] = {};
    bool m_winding = false, m_clipped = false;
    std::map<std::uint32_t, Object> m_objects;
    std::optional<Object> m_brush, m_pen; // Selected.
    Page m_page;
};

} // namespace

Page readEmf(const std::string& bytes)
{
    return EmfReader(bytes).read();
}

std::map<unsigned, int> countEmfRecords(const std::string& bytes)
{
    std::map<unsigned, int> counts;
    for (std::size_t at = 0; at + 8 <= bytes.size();) {
        std::uint32_t head[2];
        std::memcpy(head, bytes.data() + at, sizeof head);
        ++counts[head[0]];
        at += std::max(head[1], 8u);
    }
    return counts;
}

} // namespace flat
