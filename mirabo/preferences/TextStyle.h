#pragma once

#include <QColor>
#include <QFont>
#include <QString>

#include <utility>
#include <vector>

namespace mirabo {

/// How one kind of text in a list or the tree is drawn.
struct TextStyle {
    QFont font;
    QColor color;
    bool show = true; ///< tree only: whether the text is shown at all
};

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
