#pragma once

#include "../VectorDrawing.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kalmyr::detail {

/// A colour as the page descriptions write it, in steps of 1/255.
struct PageColor {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    static PageColor of(const VectorVertex& vertex);
    static PageColor of(const SbColor& color);
    bool isGrey() const { return red == green && green == blue; }
    friend bool operator==(const PageColor&, const PageColor&) = default;
};

struct PagePlace {
    std::int32_t x = 0; ///< micrometres
    std::int32_t y = 0;
    friend bool operator==(const PagePlace&, const PagePlace&) = default;
};

/// The marks on a page as text, in the operators of PDF; the prolog of the PostScript output
/// defines the same names. Remembers the graphics state and writes its changes only.
class PageContent {
public:
    using Sink = std::function<void(std::string_view)>;

    /// `sink` gets the text in large pieces. `twoColors`: strokes have a colour of their own, as
    /// in PDF.
    PageContent(Sink sink, bool twoColors);

    /// A number with at most `decimals` decimals, and a space. Its magnitude is below 1e12.
    void number(double value, int decimals = 3);
    /// Ends a line.
    void op(std::string_view name);
    void text(std::string_view text) { m_text += text; }

    void moveTo(float x, float y);
    void lineTo(float x, float y);
    void rectangle(float x, float y, float width, float height);
    void closedPath(const std::vector<PagePlace>& places);

    void setFill(PageColor color);
    void setStroke(PageColor color);
    void setLineWidth(float width);
    void setRoundCaps(bool on);
    void save();
    void restore();

    void flush();

private:
    struct State {
        PageColor fill, stroke;
        float width = 1;
        bool roundCaps = false;
        bool hasFill = false;
        bool hasStroke = false;
        bool hasWidth = false;
    };
    void setColor(PageColor color, std::string_view grey, std::string_view rgb);

    Sink m_sink;
    std::string m_text;
    State m_state;
    std::vector<State> m_saved;
    bool m_twoColors;
};

/// Appends the shortest decimal form with at most `decimals` decimals, 0 to 9.
void appendNumber(std::string& text, double value, int decimals);

} // namespace kalmyr::detail
