#include "Readers.h"

#include <charconv>
#include <optional>
#include <stdexcept>
#include <utility>

namespace flat {

namespace {

void require(bool holds, const std::string& what)
{
    if (!holds)
        throw std::runtime_error("HPGL: " + what);
}

class HpglReader {
public:
    explicit HpglReader(const std::string& text) : m_text(text) {}

    Page read()
    {
        while (m_at < m_text.size()) {
            if (m_text[m_at] == '\n') {
                ++m_at;
                continue;
            }
            require(!m_ended, "something behind the end");
            require(m_at + 2 < m_text.size(), "a command is cut off");
            const std::string name = m_text.substr(m_at, 2);
            m_at += 2;
            run(name, numbers());
        }
        require(m_ended, "no end");
        return m_page;
    }

private:
    std::vector<double> numbers()
    {
        std::vector<double> result;
        while (true) {
            require(m_at < m_text.size(), "no end of a command");
            if (m_text[m_at] == ';' && result.empty())
                break;
            double value = 0;
            const auto end = std::from_chars(m_text.data() + m_at, m_text.data() + m_text.size(),
                                             value, std::chars_format::fixed);
            require(end.ec == std::errc(), "no number where one should be");
            m_at = static_cast<std::size_t>(end.ptr - m_text.data());
            result.push_back(value);
            if (m_text[m_at] == ';')
                break;
            require(m_text[m_at] == ',', "no comma");
            ++m_at;
        }
        ++m_at;
        return result;
    }

    static std::vector<Place> places(const std::vector<double>& values)
    {
        require(values.size() % 2 == 0, "half a point");
        std::vector<Place> result;
        for (std::size_t i = 0; i < values.size(); i += 2)
            result.push_back({values[i] / 40, values[i + 1] / 40});
        return result;
    }

    const Color& color() const
    {
        require(m_colors.count(m_pen) == 1, "a pen without a colour");
        return m_colors.at(m_pen);
    }

    void run(const std::string& name, const std::vector<double>& values)
    {
        const std::vector<Place> points =
            name == "PU" || name == "PD" ? places(values) : std::vector<Place>();
        if (name != "PD")
            flushLine();
        if (name == "IN") {
            require(!m_started, "a second start");
            m_started = true;
        } else if (name == "PS") {
            require(values.size() == 2, "page");
            m_page.width = values[0] / 40;
            m_page.height = values[1] / 40;
        } else if (name == "IW") {
            require(values.size() == 4, "window");
            m_page.clip = {values[0] / 40, values[1] / 40, values[2] / 40, values[3] / 40};
        } else if (name == "NP") {
            const auto count = static_cast<int>(values.at(0));
            require(count >= 2 && count <= 256 && (count & (count - 1)) == 0,
                    "size of the palette");
            m_penCount = count;
        } else if (name == "PC") {
            require(values.size() == 4 && values[0] > 0 && values[0] < m_penCount, "pen colour");
            m_colors[static_cast<int>(values[0])] = {values[1] / 255, values[2] / 255,
                                                     values[3] / 255};
        } else if (name == "WU") {
            require(values.at(0) == 0 && m_width == 0, "widths are to be in millimetres");
        } else if (name == "PW") {
            require(values.at(0) > 0, "pen width");
            if (values.size() == 2)
                m_widths[static_cast<int>(values[1])] = values[0];
            else
                m_width = values[0];
        } else if (name == "SP") {
            m_pen = static_cast<int>(values.at(0));
            require(m_pen >= 0 && m_pen < m_penCount, "pen number");
            if (m_widths.count(m_pen) == 1)
                m_width = m_widths[m_pen];
        } else if (name == "PU") {
            if (!points.empty())
                m_position = points.back();
        } else if (name == "PM") {
            const double mode = values.at(0);
            require((mode == 0 && !m_polygon) || (mode == 2 && m_polygon), "polygon mode");
            if (mode == 0)
                m_polygon = Contour{m_position};
            else
                m_outline = *std::exchange(m_polygon, std::nullopt);
        } else if (name == "PD") {
            Contour& way = m_polygon ? *m_polygon : m_line;
            if (way.empty())
                way.push_back(m_position);
            way.insert(way.end(), points.begin(), points.end());
            m_position = way.back();
        } else if (name == "FP") {
            require(m_outline.size() >= 3, "nothing to fill");
            m_page.marks.push_back({{m_outline}, true, true, 0, color()});
        } else if (name == "PG") {
            require(m_pen == 0, "a pen is still out");
            m_ended = true;
        } else {
            require(name == "TR" || name == "FT" || name == "LA", "unexpected command " + name);
        }
        require(m_started, "no start");
    }

    void flushLine()
    {
        if (m_line.size() > 1) {
            require(m_width > 0, "no width");
            m_page.marks.push_back({{m_line}, false, true, m_width, color()});
        }
        m_line.clear();
    }

    const std::string& m_text;
    std::size_t m_at = 0;
    bool m_started = false, m_ended = false;
    int m_pen = 0, m_penCount = 0;
    double m_width = 0;
    std::map<int, Color> m_colors;
    std::map<int, double> m_widths;
    Place m_position;
    Contour m_line;
    Contour m_outline;
    std::optional<Contour> m_polygon;
    Page m_page;
};

} // namespace

Page readHpgl(const std::string& text)
{
    return HpglReader(text).read();
}

} // namespace flat
