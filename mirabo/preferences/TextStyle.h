#pragma once

#include <QColor>
#include <QFont>
#include <QString>

#include <utility>
#include <vector>

class QPalette;

namespace mirabo {

class StyleTable;

/// How one kind of text in a list or the tree is drawn.
struct TextStyle {
    QFont font;
    QColor color;
    bool show = true; ///< tree only: whether the text is shown at all
};

/// The colour in which a text of that colour is painted on the base of a palette: black is no
/// colour of its own and follows the palette's text; others keep their hue and are lightened on a
/// dark base.
QColor shownColor(const QColor& color, const QPalette& palette);

/// Contrast of two colours, from 1 to 21, as WCAG 2.1 defines it.
double contrastOf(const QColor& a, const QColor& b);

/// A colour as it can be read on a background: on a dark one lightened until the contrast is 4.5.
QColor readableOn(const QColor& background, const QColor& color);

/// Height of a row in pixels in which the texts of all the styles that are shown fit, at least
/// `least`.
int rowHeightFor(const StyleTable& styles, int least);

/// Styles by element name, in the order in which the user sees them.
class StyleTable {
public:
    using Entry = std::pair<QString, TextStyle>;

    StyleTable() = default;
    explicit StyleTable(std::vector<Entry> entries) : m_entries(std::move(entries)) {}

    /// The style of an element; a default style for an unknown one.
    const TextStyle& operator[](const QString& element) const;
    void set(const QString& element, const TextStyle& style);

    std::vector<Entry>& entries() { return m_entries; }
    const std::vector<Entry>& entries() const { return m_entries; }

private:
    std::vector<Entry> m_entries;
};

} // namespace mirabo
