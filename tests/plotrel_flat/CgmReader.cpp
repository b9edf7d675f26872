#include "Readers.h"

#include <bit>
#include <cstdint>
#include <stdexcept>

namespace flat {

namespace {

void require(bool holds, const std::string& what)
{
    if (!holds)
        throw std::runtime_error("CGM: " + what);
}

class CgmReader {
public:
    explicit CgmReader(const std::string& bytes) : m_bytes(bytes) {}

    Page read()
    {
        readElements(m_bytes.size());
        require(m_stage == 5, "ends before END METAFILE");
        return m_page;
    }

private:
    std::uint64_t big(int size)
    {
        std::uint64_t value = 0;
        for (int i = 0; i < size; ++i) {
            require(m_at < m_bytes.size(), "file ends within an element");
            value = value << 8 | static_cast<unsigned char>(m_bytes[m_at++]);
        }
        return value;
    }
    int word() { return static_cast<std::int16_t>(big(2)); }
    double coordinate()
    {
        const double value = m_wide ? static_cast<std::int32_t>(big(4)) : word();
        return value * m_unit;
    }
    Place place()
    {
        const double x = coordinate();
        return {x, coordinate()};
    }
    Color color()
    {
        Color result;
        for (double& value : result)
            value = static_cast<double>(big(1)) / 255;
        return result;
    }
    std::size_t placeSize() const { return m_wide ? 8 : 4; }

    Contour places(std::size_t length)
    {
        require(length % placeSize() == 0, "no whole number of points");
        Contour result;
        for (std::size_t i = 0; i < length / placeSize(); ++i)
            result.push_back(place());
        return result;
    }

    void readElements(std::size_t end)
    {
        while (m_at < end) {
            require(m_stage < 5, "something behind END METAFILE");
            require(m_at % 2 == 0, "an element at an odd byte");
            const auto head = static_cast<unsigned>(big(2));
            std::size_t length = head & 31;
            if (length == 31) {
                length = big(2);
                require(length < 32768, "a partitioned element");
                require(length > 30, "a long form without need");
            }
            const std::size_t begin = m_at;
            require(begin + length <= end, "an element longer than what holds it");
            readElement(head >> 12, head >> 5 & 127, length);
            require(m_at == begin + length, "parameters of another length in "
                                                + std::to_string(head >> 12) + ","
                                                + std::to_string(head >> 5 & 127));
            if (length % 2 == 1)
                require(big(1) == 0, "padding that is not zero");
        }
    }

    void readElement(unsigned group, unsigned id, std::size_t length)
    {
        const unsigned key = group * 1000 + id;
        if (group == 1)
            require(m_stage == 1, "a descriptor in the wrong place");
        if (group == 2)
            require(m_stage == 2, "a picture descriptor in the wrong place");
        if (group >= 4)
            require(m_stage == 3, "a drawing element outside of the picture");
        switch (key) {
        case 1: // Strings: their length stands in front.
            advance(0, 1);
            skipString(length);
            break;
        case 3:
            require(m_version && m_elementList, "no version or element list");
            advance(1, 2);
            skipString(length);
            break;
        case 4:
            require(m_page.width > 0, "no extent");
            advance(2, 3);
            break;
        case 5:
            advance(3, 4);
            break;
        case 2:
            advance(4, 5);
            break;
        case 1001:
            require(word() == 1, "version");
            m_version = true;
            break;
        case 1002:
            skipString(length);
            break;
        case 1003:
            require(word() == 0, "coordinates are to be whole");
            break;
        case 1004:
        case 1006:
            require(word() == 16, "precision");
            break;
        case 1005:
            require(word() == 0 && word() == 9 && word() == 23, "real precision");
            break;
        case 1007:
            require(word() == 8, "colour precision");
            break;
        case 1010:
            require(color() == Color{0, 0, 0} && color() == Color{1, 1, 1}, "colour extent");
            break;
        case 1011:
            require(word() == 1 && word() == -1 && word() == 1, "element list");
            m_elementList = true;
            break;
        case 1012:
            m_inDefaults = true;
            readElements(m_at + length);
            m_inDefaults = false;
            break;
        case 3001:
            require(m_inDefaults && word() == 32, "VDC precision");
            m_wide = true;
            break;
        case 2001:
            require(word() == 1, "scaling is to be metric");
            m_unit = std::bit_cast<float>(static_cast<std::uint32_t>(big(4)));
            break;
        case 2002:
            require(word() == 1, "colours are to be direct");
            break;
        case 2003:
        case 2005:
            require(word() == 0, "widths are to be absolute");
            break;
        case 2006: {
            require(m_unit > 0, "extent before scaling");
            const Contour corners = places(length);
            require(corners.size() == 2 && corners[0].x == 0 && corners[0].y == 0, "extent");
            m_page.width = corners[1].x;
            m_page.height = corners[1].y;
            break;
        }
        case 2007:
            require(color() == Color{1, 1, 1}, "background");
            break;
        case 3005: {
            const Contour corners = places(length);
            require(corners.size() == 2, "clip rectangle");
            m_page.clip = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
            break;
        }
        case 3006:
            require(word() == 1, "clipping is to be on");
            break;
        case 5002:
            require(word() == 1, "lines are to be solid");
            break;
        case 5003:
            m_lineWidth = coordinate();
            require(m_lineWidth > 0, "line width");
            break;
        case 5004:
            m_lineColor = color();
            break;
        case 5022:
            require(word() == 1, "interiors are to be solid");
            m_solid = true;
            break;
        case 5023:
            m_fillColor = color();
            m_edgesFit = false;
            break;
        case 5027:
            require(word() == 1, "edges are to be solid");
            break;
        case 5028:
            require(coordinate() == 0, "edges are to be thin");
            m_thinEdges = true;
            break;
        case 5029:
            require(color() == m_fillColor, "edges of another colour");
            m_edgesFit = true;
            break;
        case 5030:
            require(word() == 1, "edges are to be on");
            break;
        case 4001: {
            const Contour line = places(length);
            require(line.size() >= 2 && m_lineWidth > 0, "polyline");
            m_page.marks.push_back({{line}, false, true, m_lineWidth, m_lineColor});
            break;
        }
        case 4007: {
            const Contour outline = places(length);
            require(outline.size() >= 3 && m_solid && m_thinEdges && m_edgesFit, "polygon");
            m_page.marks.push_back({{outline}, true, true, 0, m_fillColor});
            break;
        }
        default:
            require(false, "unexpected element " + std::to_string(key));
        }
    }

    void skipString(std::size_t length)
    {
        const std::size_t size = big(1);
        require(size == length - 1 && size < 255, "length of a string");
        m_at += size;
    }

    void advance(int from, int to)
    {
        require(m_stage == from, "a delimiter in the wrong place");
        m_stage = to;
    }

    const std::string& m_bytes;
    std::size_t m_at = 0;
    int m_stage = 0; // 1 metafile, 2 picture, 3 body, 4 behind the picture, 5 end.
    bool m_wide = false, m_inDefaults = false, m_version = false, m_elementList = false;
    bool m_solid = false, m_thinEdges = false, m_edgesFit = false;
    float m_unit = 0;
    double m_lineWidth = 0;
    Color m_lineColor{};
    Color m_fillColor{};
    Page m_page;
};

} // namespace

Page readCgm(const std::string& bytes)
{
    return CgmReader(bytes).read();
}

} // namespace flat
