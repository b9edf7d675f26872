#pragma once

#include <QString>
#include <QStringList>

#include <vector>

class QWidget;

namespace mirabo {

/// What the user looks for in the pages of a dialog: words that all have to stand on a page, in its
/// name or in the texts of its controls, as parts of words and in either case.
class PageSearch {
public:
    /// The empty text is found on every page.
    explicit PageSearch(const QString& text = QString());

    bool isEmpty() const { return m_words.isEmpty(); }
    bool matches(const QString& name, const QWidget& page) const;
    /// Marks the controls of a page whose texts have one of the words, and no others.
    void mark(QWidget& page) const;

private:
    bool hasWord(const QString& text) const;

    QStringList m_words;
};

} // namespace mirabo
