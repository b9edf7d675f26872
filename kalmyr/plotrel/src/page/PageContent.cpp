#include "PageContent.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kPieceSize = 1 << 16;

std::uint8_t toByte(float value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255));
}

} // namespace

void appendNumber(std::string& text, double value, int decimals)
{
    static constexpr std::array<long long, 10> kPowers{
        1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
    const long long scaled = std::llround(value * static_cast<double>(kPowers[decimals]));
    unsigned long long rest = static_cast<unsigned long long>(scaled < 0 ? -scaled : scaled);
    std::array<char, 32> digits;
    char* begin = digits.data() + digits.size();
    char* const end = begin;
    for (; decimals > 0 && rest % 10 == 0; --decimals)
        rest /= 10;
    if (decimals > 0) {
        for (; decimals > 0; --decimals, rest /= 10)
            *--begin = static_cast<char>('0' + rest % 10);
        *--begin = '.';
    }
    if (rest > 0 || begin == end)
        do {
            *--begin = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest > 0);
    if (scaled < 0)
        *--begin = '-';
    text.append(begin, end);
}

PageColor PageColor::of(const VectorVertex& vertex)
{
    return {toByte(vertex.red), toByte(vertex.green), toByte(vertex.blue)};
}

PageColor PageColor::of(const SbColor& color)
{
    return {toByte(color[0]), toByte(color[1]), toByte(color[2])};
}

PageContent::PageContent(Sink sink, bool twoColors)
    : m_sink(std::move(sink)), m_twoColors(twoColors)
{
}

void PageContent::number(double value, int decimals)
{
    appendNumber(m_text, value, decimals);
    m_text += ' ';
}

void PageContent::op(std::string_view name)
{
    m_text += name;
    m_text += '\n';
    if (m_text.size() >= kPieceSize)
        flush();
}

void PageContent::flush()
{
    m_sink(m_text);
    m_text.clear();
}

void PageContent::moveTo(float x, float y)
{
    number(x);
    number(y);
    m_text += "m ";
}

void PageContent::lineTo(float x, float y)
{
    number(x);
    number(y);
    op("l");
}

void PageContent::rectangle(float x, float y, float width, float height)
{
    number(x);
    number(y);
    number(width);
    number(height);
    op("re");
}

void PageContent::closedPath(const std::vector<PagePlace>& places)
{
    for (std::size_t i = 0; i < places.size(); ++i) {
        number(places[i].x * 1e-3);
        number(places[i].y * 1e-3);
        if (i == 0)
            m_text += "m ";
        else
            op("l");
    }
    op("h");
}

void PageContent::setColor(PageColor color, std::string_view grey, std::string_view rgb)
{
    number(color.red / 255.0);
    if (color.isGrey()) {
        op(grey);
        return;
    }
    number(color.green / 255.0);
    number(color.blue / 255.0);
    op(rgb);
}

void PageContent::setFill(PageColor color)
{
    if (m_state.hasFill && m_state.fill == color)
        return;
    m_state.fill = color;
    m_state.hasFill = true;
    setColor(color, "g", "rg");
}

void PageContent::setStroke(PageColor color)
{
    if (!m_twoColors) {
        setFill(color);
        return;
    }
    if (m_state.hasStroke && m_state.stroke == color)
        return;
    m_state.stroke = color;
    m_state.hasStroke = true;
    setColor(color, "G", "RG");
}

void PageContent::setLineWidth(float width)
{
    if (m_state.hasWidth && m_state.width == width)
        return;
    m_state.width = width;
    m_state.hasWidth = true;
    number(width);
    op("w");
}

void PageContent::setRoundCaps(bool on)
{
    if (m_state.roundCaps == on)
        return;
    m_state.roundCaps = on;
    op(on ? "1 J" : "0 J");
}

void PageContent::save()
{
    m_saved.push_back(m_state);
    op("q");
}

void PageContent::restore()
{
    m_state = m_saved.back();
    m_saved.pop_back();
    op("Q");
}

} // namespace kalmyr::detail
